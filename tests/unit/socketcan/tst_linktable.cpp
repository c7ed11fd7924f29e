#include "linkmessage.h"
#include "linkwatcher.h"

#include <QtTest>

namespace {
LinkNotice notice(const char *name)
{
    return *parse(recordedMessage(name));
}

LinkNotice controllerNotice(quint32 modes)
{
    return {false, LinkMessage().withState(0).withAllowedModes(modes).link()};
}
} // namespace

/// When the list of devices counts as changed.
class TestLinkTable : public QObject
{
    Q_OBJECT

private slots:
    void newLinkIsAChange();
    void switchingALinkOnOrOffIsNone();
    void linkThatGoesIsAChangeOnce();
    void otherNameIsAChange();
    void otherFeaturesAreAChange();
    void lookAtAllLinksFindsWhatWasMissed();
};

void TestLinkTable::newLinkIsAChange()
{
    LinkTable table;
    QVERIFY(table.apply(notice("vcan_new")));
    QVERIFY(!table.apply(notice("vcan_new")));
}

void TestLinkTable::switchingALinkOnOrOffIsNone()
{
    LinkTable table;
    table.apply(notice("vcan_new"));
    QVERIFY(!table.apply(notice("vcan_up")));
    QVERIFY(!table.apply(notice("vcan_new")));
}

void TestLinkTable::linkThatGoesIsAChangeOnce()
{
    LinkTable table;
    table.apply(notice("vcan_new"));
    QVERIFY(table.apply(notice("vcan_gone")));
    QVERIFY(!table.apply(notice("vcan_gone")));
}

void TestLinkTable::otherNameIsAChange()
{
    LinkTable table;
    LinkNotice link = notice("vcan_new");
    table.apply(link);
    link.link.name = QStringLiteral("body");
    QVERIFY(table.apply(link));
}

void TestLinkTable::otherFeaturesAreAChange()
{
    LinkTable table;
    table.apply(controllerNotice(0));
    QVERIFY(table.apply(controllerNotice(CAN_CTRLMODE_FD)));
}

void TestLinkTable::lookAtAllLinksFindsWhatWasMissed()
{
    LinkTable table;
    const LinkProperties first = notice("vcan").link;
    const LinkProperties second = notice("slcan").link;
    QVERIFY(!table.reset({}));
    QVERIFY(table.reset({first, second}));
    QVERIFY(!table.reset({second, first}));
    QVERIFY(table.reset({first}));
}

QTEST_APPLESS_MAIN(TestLinkTable)
#include "tst_linktable.moc"
