#include "bitratebench.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>

// The timings that a user makes by hand: from the dialog into the lists, and from an adapter back.
class TestUserTimings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void dialogShowsTheHeldTiming();
    void dialogShowsTheHeldDataTiming();
    void dialogOffersTheOffsetByType();
    void dialogHasNoParent();
    void limitsReachTheDialog();
    void withoutLimitsTheDialogShowsNone();
    void acceptedTimingIsHeld();
    void acceptedDataTimingIsHeld();
    void acceptedTimingNamesItsEntry();
    void acceptedDataTimingNamesItsEntry();
    void rejectedTimingChangesNothing();
    void rejectedDataTimingChangesNothing();
    void timingOfAnUnselectedEntryIsNotInUse();
    void formMayGoWhileTheDialogRuns();
    void userDefinedTimingOfAnAdapterIsSelected();
    void otherTimingOfAnAdapterIsOnlyHeld();
    void namedDataTimingOfAnAdapterIsSelected();
    void namelessDataTimingOfAnAdapterIsOnlyHeld();
    void timingWithoutEntryIsOnlyHeld();
    void timingOfTheSelectedEntryIsInUse();
    void dataTimingOfTheSelectedEntryIsInUse_data();
    void dataTimingOfTheSelectedEntryIsInUse();
    void selectedTimingSurvivesTheWayBack();

private:
    /// Answers the dialog that the next call runs.
    void answer(const std::function<void(QDialog &)> &look, QDialog::DialogCode code);
    static QString textIn(QDialog &dialog, const char *label)
    {
        return dialog.findChild<QLabel *>(QLatin1String(label))->text();
    }
    static void enterName(QDialog &dialog, const char *name)
    {
        dialog.findChild<QLineEdit *>(QStringLiteral("edtName"))->setText(QLatin1String(name));
    }
    void editClassic() { m_bench->lists.editClassicTiming({}); }
    void editData() { m_bench->lists.editDataTiming({}, BitrateBench::type); }

    std::unique_ptr<BitrateBench> m_bench;
};

namespace {
CAN::CANClassicBusParameter classicTiming(bool userDefined)
{
    return {250, 87.5, {2, 13, 2, 1, 0}, QStringLiteral("Rig"), userDefined};
}

CAN::CANFDBusParameter dataTiming(const char *name, bool userDefined)
{
    return {2000, QLatin1String(name), 80.0, {2, 15, 4, 2, 0}, 7, userDefined};
}
} // namespace

void TestUserTimings::init()
{
    m_bench = std::make_unique<BitrateBench>();
    BitrateBench::installFamily();
    m_bench->lists.updateBitrates(BitrateBench::type, false);
}

void TestUserTimings::cleanup()
{
    m_bench.reset();
}

void TestUserTimings::answer(const std::function<void(QDialog &)> &look, QDialog::DialogCode code)
{
    QTimer::singleShot(0, this, [look, code] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            qFatal("no dialog runs");
        look(*dialog);
        dialog->done(code);
    });
}

void TestUserTimings::dialogShowsTheHeldTiming()
{
    m_bench->lists.setClassicParameter(classicTiming(false));
    QString name;
    answer([&](QDialog &dialog) { name = dialog.findChild<QLineEdit *>(QStringLiteral("edtName"))->text(); },
           QDialog::Rejected);
    editClassic();
    QCOMPARE(name, QStringLiteral("Rig"));
}

void TestUserTimings::dialogShowsTheHeldDataTiming()
{
    m_bench->lists.setFdParameter(dataTiming("Rig", false));
    QString name;
    answer([&](QDialog &dialog) { name = dialog.findChild<QLineEdit *>(QStringLiteral("edtName"))->text(); },
           QDialog::Rejected);
    editData();
    QCOMPARE(name, QStringLiteral("Rig"));
}

void TestUserTimings::dialogOffersTheOffsetByType()
{
    bool offered = false;
    const auto look = [&](QDialog &dialog) {
        offered = dialog.findChild<QWidget *>(QStringLiteral("sbTDCO"))->isVisible();
    };
    answer(look, QDialog::Rejected);
    m_bench->lists.editDataTiming({}, AbstractCanAdapter::CanAdapterIxxatVci3);
    QVERIFY(offered);
    answer(look, QDialog::Rejected);
    editData();
    QVERIFY(!offered);
}

void TestUserTimings::dialogHasNoParent()
{
    bool hasParent = true;
    answer([&](QDialog &dialog) { hasParent = dialog.parent() != nullptr; }, QDialog::Rejected);
    editClassic();
    QVERIFY(!hasParent);
}

void TestUserTimings::limitsReachTheDialog()
{
    const CAN::CANBitTimingThresholds limits = {80, 1, 255, 2, 256, 2, 128, 64, true};
    QString shown;
    const auto look = [&](QDialog &dialog) { shown = textIn(dialog, "lblThresholds"); };
    answer(look, QDialog::Rejected);
    m_bench->lists.editClassicTiming(limits);
    QCOMPARE(shown, limits.toString());
    shown.clear();
    answer(look, QDialog::Rejected);
    m_bench->lists.editDataTiming(limits, BitrateBench::type);
    QCOMPARE(shown, limits.toString());
}

void TestUserTimings::withoutLimitsTheDialogShowsNone()
{
    QString shown = QStringLiteral("unseen");
    answer([&](QDialog &dialog) { shown = textIn(dialog, "lblThresholds"); }, QDialog::Rejected);
    editClassic();
    QCOMPARE(shown, QString());
}

void TestUserTimings::acceptedTimingIsHeld()
{
    m_bench->lists.setClassicParameter(classicTiming(true));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Accepted);
    editClassic();
    CAN::CANClassicBusParameter expected = classicTiming(true);
    expected.name = QStringLiteral("Truck");
    QCOMPARE(m_bench->lists.classicParameter(), expected);
}

void TestUserTimings::acceptedDataTimingIsHeld()
{
    m_bench->lists.setFdParameter(dataTiming("Rig", true));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Accepted);
    editData();
    QCOMPARE(m_bench->lists.fdParameter(), dataTiming("Truck", true));
}

void TestUserTimings::acceptedTimingNamesItsEntry()
{
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Accepted);
    editClassic();
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("User bitrate - Truck"));
}

void TestUserTimings::acceptedDataTimingNamesItsEntry()
{
    m_bench->choose(m_bench->data, QStringLiteral("User bitrate"));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Accepted);
    editData();
    QCOMPARE(m_bench->data.currentText(), QStringLiteral("User bitrate - Truck"));
}

void TestUserTimings::rejectedTimingChangesNothing()
{
    m_bench->lists.setClassicParameter(classicTiming(true));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Rejected);
    editClassic();
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(true));
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("User bitrate - Rig"));
}

void TestUserTimings::rejectedDataTimingChangesNothing()
{
    m_bench->lists.setFdParameter(dataTiming("Rig", true));
    answer([](QDialog &dialog) { enterName(dialog, "Truck"); }, QDialog::Rejected);
    editData();
    QCOMPARE(m_bench->lists.fdParameter(), dataTiming("Rig", true));
    QCOMPARE(m_bench->data.currentText(), QStringLiteral("User bitrate - Rig"));
}

void TestUserTimings::timingOfAnUnselectedEntryIsNotInUse()
{
    m_bench->lists.setClassicParameter(classicTiming(false));
    answer([](QDialog &) {}, QDialog::Accepted);
    editClassic();
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(false));
    QVERIFY(m_bench->classic.findText(QStringLiteral("User bitrate - Rig")) >= 0);
}

void TestUserTimings::formMayGoWhileTheDialogRuns()
{
    // The dialog that closes itself answers into the void: the sanitizers see what touches the lists then.
    auto list = std::make_unique<QComboBox>();
    auto lists = std::make_unique<BitrateLists>(BitrateLists::Controls{
        list.get(), list.get(), &m_bench->editClassic, &m_bench->editData, &m_bench->lblBtr, &m_bench->edtBtr});
    bool wasRun = false;
    answer(
        [&](QDialog &) {
            wasRun = true;
            list.reset();
            lists.reset();
        },
        QDialog::Accepted);
    lists->editClassicTiming({});
    QVERIFY(wasRun);
}

void TestUserTimings::userDefinedTimingOfAnAdapterIsSelected()
{
    m_bench->lists.setClassicParameter(classicTiming(true));
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("User bitrate - Rig"));
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(true));
}

void TestUserTimings::otherTimingOfAnAdapterIsOnlyHeld()
{
    m_bench->lists.setClassicParameter(classicTiming(false));
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("250 kBit/s (0.875)"));
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(false));
}

void TestUserTimings::namedDataTimingOfAnAdapterIsSelected()
{
    m_bench->lists.setFdParameter(dataTiming("Rig", false));
    QCOMPARE(m_bench->data.currentText(), QStringLiteral("User bitrate - Rig"));
}

void TestUserTimings::namelessDataTimingOfAnAdapterIsOnlyHeld()
{
    m_bench->lists.setFdParameter(dataTiming("", true));
    QCOMPARE(m_bench->data.currentText(), QStringLiteral("4000 kBit/s (0)"));
    QCOMPARE(m_bench->lists.fdParameter(), dataTiming("", true));
}

void TestUserTimings::timingWithoutEntryIsOnlyHeld()
{
    m_bench->lists.toggleCANUserBitrate(false);
    m_bench->lists.setClassicParameter(classicTiming(true));
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("250 kBit/s (0.875)"));
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(true));
}

void TestUserTimings::timingOfTheSelectedEntryIsInUse()
{
    m_bench->choose(m_bench->classic, QStringLiteral("User bitrate"));
    m_bench->lists.setClassicParameter(classicTiming(false));
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(true));
}

void TestUserTimings::dataTimingOfTheSelectedEntryIsInUse_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("named") << QByteArrayLiteral("Rig");
    QTest::newRow("nameless") << QByteArray();
}

void TestUserTimings::dataTimingOfTheSelectedEntryIsInUse()
{
    QFETCH(QByteArray, name);
    m_bench->choose(m_bench->data, QStringLiteral("User bitrate"));
    m_bench->lists.setFdParameter(dataTiming(name.constData(), false));
    QCOMPARE(m_bench->lists.fdParameter(), dataTiming(name.constData(), true));
}

void TestUserTimings::selectedTimingSurvivesTheWayBack()
{
    // As the options 41 to 44 of an adapter come back to the form, which fills the lists anew for the last two.
    m_bench->lists.setClassicParameter(classicTiming(true));
    m_bench->lists.setFdParameter(dataTiming("Rig", true));
    for (const CAN::CANBitrateDesc &bitrate : {CAN::CANBitrateDesc(QVariant(65535)), CAN::CANBitrateDesc()}) {
        m_bench->lists.updateBitrates(BitrateBench::type, false);
        m_bench->lists.setFdBitrateInUi(bitrate);
        m_bench->lists.updateBitrates(BitrateBench::type, false);
        m_bench->lists.setBitrateInUi(bitrate);
    }
    QCOMPARE(m_bench->classic.currentText(), QStringLiteral("User bitrate - Rig"));
    QCOMPARE(m_bench->data.currentText(), QStringLiteral("User bitrate - Rig"));
    QCOMPARE(m_bench->lists.classicParameter(), classicTiming(true));
    QCOMPARE(m_bench->lists.fdParameter(), dataTiming("Rig", true));
}

QTEST_MAIN(TestUserTimings)
#include "tst_usertimings.moc"
