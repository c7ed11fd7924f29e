#include "fakeadapter.h"
#include "recordings.h"
#include "replaypanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace {
constexpr int patience = 10'000; // ms
} // namespace

class TestReplayPanel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void withoutConnectionTheHintSaysWhatToDo();
    void withoutFileTheHintSaysWhatToDo();
    void wrongIgnoreListIsNamedWhileItIsTyped();
    void startPlaysTheFile();
    void enterInAFieldStarts();
    void unreadableFileIsTold();
    void failureStaysInSight();
    void pauseAndStepSendFrameByFrame();
    void stopEndsTheReplay();
    void fieldsStandStillWhileItPlays();
    void framesGoThroughTheChosenInterface();
    void choiceStaysWhenInterfacesChange();
    void replayThroughAClosedInterfaceEnds();
    void everyControlHasAToolTip();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_panel->findChild<Widget *>(QString::fromLatin1(name));
    }
    QString hint() const { return find<QLabel>("lblReplayStatus")->text(); }
    void offer() const
    {
        m_panel->setInterfaces({{QStringLiteral("First"), m_first.get()}, {QStringLiteral("Second"), m_second.get()}});
    }
    void press(const char *button) const { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }

    Recordings m_recordings;
    std::unique_ptr<FakeAdapter> m_first;
    std::unique_ptr<FakeAdapter> m_second;
    std::unique_ptr<ReplayPanel> m_panel;
};

void TestReplayPanel::init()
{
    m_first = std::make_unique<FakeAdapter>();
    m_second = std::make_unique<FakeAdapter>();
    for (FakeAdapter *adapter : {m_first.get(), m_second.get()}) {
        adapter->setRunning(true);
        adapter->takeCalls();
    }
    m_panel = std::make_unique<ReplayPanel>();
    m_panel->show();
}

void TestReplayPanel::cleanup()
{
    m_panel.reset();
    m_first.reset();
    m_second.reset();
}

void TestReplayPanel::withoutConnectionTheHintSaysWhatToDo()
{
    m_panel->setFileName(m_recordings.log(0x123, 1, 0));
    QCOMPARE(hint(), QStringLiteral("Connect first to replay: press F5."));
    QVERIFY(!find<QPushButton>("btnReplayStart")->isEnabled());
}

void TestReplayPanel::withoutFileTheHintSaysWhatToDo()
{
    offer();
    QCOMPARE(hint(), QStringLiteral("Choose a trace or a log to play it onto the bus."));
    QVERIFY(!find<QPushButton>("btnReplayStart")->isEnabled());
}

void TestReplayPanel::wrongIgnoreListIsNamedWhileItIsTyped()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 1, 0));
    QVERIFY(find<QPushButton>("btnReplayStart")->isEnabled());
    find<QLineEdit>("edtReplayIgnored")->setText(QStringLiteral("7x"));
    QVERIFY(hint().startsWith(QStringLiteral("\"7x\" is no identifier")));
    QVERIFY(!find<QPushButton>("btnReplayStart")->isEnabled());
}

void TestReplayPanel::startPlaysTheFile()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 2, 0));
    press("btnReplayStart");
    QTRY_COMPARE_WITH_TIMEOUT(hint(), QStringLiteral("Played to the end."), patience);
    QCOMPARE(m_first->calls(), QStringList({QStringLiteral("write 123#00"), QStringLiteral("write 123#01")}));
    QVERIFY(find<QPushButton>("btnReplayStart")->isEnabled());
    QVERIFY(find<QProgressBar>("barReplay")->isHidden());
}

void TestReplayPanel::enterInAFieldStarts()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 1, 0));
    QTest::keyClick(find<QLineEdit>("edtReplayIgnored"), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(m_first->calls().size(), 1, patience);
}

void TestReplayPanel::unreadableFileIsTold()
{
    offer();
    m_panel->setFileName(m_recordings.path(QStringLiteral("missing.txt")));
    press("btnReplayStart");
    QVERIFY(hint().contains(QStringLiteral("missing.txt\" cannot be read")));
    QVERIFY(find<QPushButton>("btnReplayStart")->isEnabled());
}

void TestReplayPanel::failureStaysInSight()
{
    offer();
    QFile broken(m_recordings.path(QStringLiteral("broken.qrm")));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("this is no capture");
    broken.close();
    m_panel->setFileName(broken.fileName());
    press("btnReplayStart");
    QTRY_VERIFY_WITH_TIMEOUT(!m_panel->controller()->isRunning(), patience);
    QVERIFY2(hint().startsWith(QStringLiteral("Cannot load QRM file: ")), qPrintable(hint()));
}

void TestReplayPanel::pauseAndStepSendFrameByFrame()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 4, 0));
    QVERIFY(!find<QPushButton>("btnReplayStep")->isEnabled());
    press("btnReplayPause");
    press("btnReplayStart");
    QVERIFY(find<QPushButton>("btnReplayStep")->isEnabled());
    press("btnReplayStep");
    QTRY_COMPARE_WITH_TIMEOUT(m_first->calls().size(), 1, patience);
    press("btnReplayStep");
    QTRY_COMPARE_WITH_TIMEOUT(m_first->calls().size(), 2, patience);
    press("btnReplayPause");
    QTRY_COMPARE_WITH_TIMEOUT(hint(), QStringLiteral("Played to the end."), patience);
    QCOMPARE(m_first->calls().size(), 4);
}

void TestReplayPanel::stopEndsTheReplay()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 2, 600'000));
    press("btnReplayStart");
    QTRY_COMPARE_WITH_TIMEOUT(m_first->calls().size(), 1, patience);
    press("btnReplayStop");
    QCOMPARE(hint(), QStringLiteral("Stopped."));
    QVERIFY(find<QPushButton>("btnReplayStart")->isEnabled());
    QVERIFY(!find<QPushButton>("btnReplayStop")->isEnabled());
}

void TestReplayPanel::fieldsStandStillWhileItPlays()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 2, 600'000));
    press("btnReplayStart");
    for (const char *name : {"edtReplayFile", "edtReplayIgnored", "cbReplayInterface", "btnBrowseReplay"})
        QVERIFY2(!find<QWidget>(name)->isEnabled(), name);
    for (const char *name : {"sbReplaySpeed", "cbReplayLoop", "cbReplayFastForward", "cbReplayIgnoreGaps"})
        QVERIFY2(find<QWidget>(name)->isEnabled(), name);
    QVERIFY(!find<QProgressBar>("barReplay")->isHidden());
    press("btnReplayStop");
    QVERIFY(find<QLineEdit>("edtReplayFile")->isEnabled());
}

void TestReplayPanel::framesGoThroughTheChosenInterface()
{
    offer();
    find<QComboBox>("cbReplayInterface")->setCurrentIndex(1);
    m_panel->setFileName(m_recordings.log(0x123, 1, 0));
    press("btnReplayStart");
    QTRY_COMPARE_WITH_TIMEOUT(m_second->calls().size(), 1, patience);
    QCOMPARE(m_first->calls().size(), 0);
}

void TestReplayPanel::choiceStaysWhenInterfacesChange()
{
    offer();
    find<QComboBox>("cbReplayInterface")->setCurrentIndex(1);
    m_panel->setInterfaces({{QStringLiteral("Second"), m_second.get()}});
    QCOMPARE(find<QComboBox>("cbReplayInterface")->currentText(), QStringLiteral("Second"));
    offer();
    QCOMPARE(find<QComboBox>("cbReplayInterface")->currentText(), QStringLiteral("Second"));
}

void TestReplayPanel::replayThroughAClosedInterfaceEnds()
{
    offer();
    m_panel->setFileName(m_recordings.log(0x123, 2, 600'000));
    press("btnReplayStart");
    QVERIFY(m_panel->controller()->isRunning());
    m_panel->setInterfaces({{QStringLiteral("Second"), m_second.get()}});
    QVERIFY(!m_panel->controller()->isRunning());
    QCOMPARE(hint(), QStringLiteral("The replay has ended: its interface was closed."));
}

void TestReplayPanel::everyControlHasAToolTip()
{
    const auto check = [](const QWidget *widget) {
        QVERIFY2(!widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    };
    const auto buttons = m_panel->findChildren<QAbstractButton *>(QRegularExpression(QStringLiteral("^(btn|cb)")));
    QCOMPARE(buttons.size(), 8);
    for (const QAbstractButton *button : buttons)
        check(button);
    for (const char *name : {"edtReplayFile", "edtReplayIgnored", "cbReplayInterface", "sbReplaySpeed", "barReplay"})
        check(find<QWidget>(name));
}

QTEST_MAIN(TestReplayPanel)
#include "tst_replaypanel.moc"
