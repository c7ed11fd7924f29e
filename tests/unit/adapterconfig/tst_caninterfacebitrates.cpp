#include "bitratelists.h"
#include "interfaceform.h"
#include "optionrecords.h"

#include <QDialog>
#include <QTimer>

#include <functional>

// The options that select a bitrate, and the buttons that make one by hand.
class TestCanInterfaceBitrates : public QObject
{
    Q_OBJECT

private slots:
    void classicTimingSelectsTheUserEntry_data();
    void classicTimingSelectsTheUserEntry();
    void dataTimingSelectsTheUserEntry_data();
    void dataTimingSelectsTheUserEntry();
    void bitrateSelectsItsEntry();
    void bitrateKeepsTheUserEntry();
    void numberSelectsNoBitrate();
    void defaultBitrateIsSelectedAtFirst();
    void buttonShowsTheLimitsOfItsPhase_data();
    void buttonShowsTheLimitsOfItsPhase();
    void buttonWithoutAdapterShowsNoLimits();
    void timingMadeByHandIsTheAdapters();
};

namespace {
using Adapter = AbstractCanAdapter;

constexpr auto plainType = Adapter::CanAdapterPcanBasic;

CAN::CANBitTimingThresholds limits(quint16 clock)
{
    return {clock, 1, 64, 2, 16, 2, 8, 4, true};
}

/// The form with a type whose timings may be made by hand, and are selected so.
void selectUserBitrates(const InterfaceForm &form)
{
    FakeFamily *family = InterfaceForm::family(plainType);
    family->classicBitTiming = family->fdBitTiming = true;
    family->create = [](const QString &device) {
        auto *adapter = new FakeAdapter(plainType, device);
        adapter->supportedOptions << Adapter::OptionClassicBusParameter;
        adapter->classicThresholds = limits(24);
        adapter->dataThresholds = limits(80);
        return adapter;
    };
    form.selectType(plainType);
    form.fdGroup()->setChecked(true);
    for (const char *list : {"cbBitrate", "cbCanFdDataBitrate"})
        form.list(list)->setCurrentText(QStringLiteral("User bitrate"));
}

/// Answers the dialog that the click brings up.
void click(QPushButton *button, const std::function<void(QDialog &)> &answer)
{
    QTimer::singleShot(0, button, [answer] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog == nullptr)
            qFatal("no dialog runs");
        answer(*dialog);
    });
    button->click();
}
} // namespace

void TestCanInterfaceBitrates::classicTimingSelectsTheUserEntry_data()
{
    QTest::addColumn<bool>("userDefined");
    QTest::addColumn<QString>("text");
    QTest::newRow("user-defined") << true << "User bitrate - odd";
    QTest::newRow("only named") << false << "250 kBit/s";
}

void TestCanInterfaceBitrates::classicTimingSelectsTheUserEntry()
{
    QFETCH(bool, userDefined);
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    CAN::CANClassicBusParameter parameter = classicTiming();
    parameter.userDefined = userDefined;
    form.setValue(Adapter::OptionClassicBusParameter, QVariant::fromValue(parameter));
    QTEST(form.list("cbBitrate")->currentText(), "text");
}

void TestCanInterfaceBitrates::dataTimingSelectsTheUserEntry_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("named") << "fast"
                           << "User bitrate - fast";
    QTest::newRow("without a name") << ""
                                    << "2000 kBit/s (0.8)";
}

void TestCanInterfaceBitrates::dataTimingSelectsTheUserEntry()
{
    QFETCH(QString, name);
    const InterfaceForm form;
    InterfaceForm::family(2)->fdBitTiming = true;
    form.selectType(2);
    CAN::CANFDBusParameter parameter = dataTiming();
    parameter.name = name;
    form.setValue(Adapter::OptionFdBusParameter, QVariant::fromValue(parameter));
    QTEST(form.list("cbCanFdDataBitrate")->currentText(), "text");
}

void TestCanInterfaceBitrates::bitrateSelectsItsEntry()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionBitrate, QVariant::fromValue(CAN::CANBitrateDesc(QStringLiteral("any name"), 125)));
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("125 kBit/s"));
}

void TestCanInterfaceBitrates::bitrateKeepsTheUserEntry()
{
    const InterfaceForm form;
    InterfaceForm::family(2)->classicBitTiming = true;
    form.selectType(2);
    CAN::CANClassicBusParameter parameter = classicTiming();
    parameter.userDefined = true;
    form.setValue(Adapter::OptionClassicBusParameter, QVariant::fromValue(parameter));
    const QVariant marker = form.value(Adapter::OptionBitrate);
    QCOMPARE(marker, QVariant(BitrateLists::UserBitrateMarker));
    form.setValue(Adapter::OptionBitrate, marker);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - odd"));
}

void TestCanInterfaceBitrates::numberSelectsNoBitrate()
{
    const InterfaceForm form;
    form.selectType(2);
    form.setValue(Adapter::OptionBitrate, 125);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("250 kBit/s"));
}

void TestCanInterfaceBitrates::defaultBitrateIsSelectedAtFirst()
{
    const InterfaceForm form;
    form->setDefaultBitrate(125);
    form.selectType(2);
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("125 kBit/s"));
}

void TestCanInterfaceBitrates::buttonShowsTheLimitsOfItsPhase_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    QTest::newRow("arbitration") << "btnEdtClassicBitrate" << limits(24).toString();
    QTest::newRow("data") << "btnEdtFDBitrate" << limits(80).toString();
}

void TestCanInterfaceBitrates::buttonShowsTheLimitsOfItsPhase()
{
    QFETCH(QString, button);
    const InterfaceForm form;
    selectUserBitrates(form);
    QString shown;
    click(form->findChild<QPushButton *>(button), [&](QDialog &dialog) {
        shown = dialog.findChild<QLabel *>(QStringLiteral("lblThresholds"))->text();
        dialog.reject();
    });
    QTEST(shown, "text");
}

void TestCanInterfaceBitrates::buttonWithoutAdapterShowsNoLimits()
{
    const InterfaceForm form;
    selectUserBitrates(form);
    InterfaceForm::family(plainType)->create = [](const QString &) { return nullptr; };
    QString shown;
    click(form.find<QPushButton>("btnEdtClassicBitrate"), [&](QDialog &dialog) {
        shown = dialog.findChild<QLabel *>(QStringLiteral("lblThresholds"))->text();
        dialog.reject();
    });
    QVERIFY(shown != limits(24).toString());
}

void TestCanInterfaceBitrates::timingMadeByHandIsTheAdapters()
{
    const InterfaceForm form;
    selectUserBitrates(form);
    click(form.find<QPushButton>("btnEdtClassicBitrate"), [](QDialog &dialog) {
        dialog.findChild<QLineEdit *>(QStringLiteral("edtName"))->setText(QStringLiteral("mine"));
        dialog.accept();
    });
    QCOMPARE(form.list("cbBitrate")->currentText(), QStringLiteral("User bitrate - mine"));
    const std::unique_ptr<Adapter> adapter(form->createAdapterFromSettings());
    const auto parameter = adapter->getCanAdapterOption(Adapter::OptionClassicBusParameter)
                               .value<CAN::CANClassicBusParameter>();
    QCOMPARE(parameter.name, QStringLiteral("mine"));
    QVERIFY(parameter.userDefined);
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionBitrate), QVariant(BitrateLists::UserBitrateMarker));
}

QTEST_MAIN(TestCanInterfaceBitrates)
#include "tst_caninterfacebitrates.moc"
