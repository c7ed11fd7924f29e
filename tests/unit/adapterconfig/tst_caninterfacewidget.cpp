#include "interfaceform.h"

#include <QButtonGroup>

// The form as applications know it: its controls, and what it is like when it is new.
class TestCanInterfaceWidget : public QObject
{
    Q_OBJECT

private slots:
    void windowIsAsDescribed();
    void controlHasItsText_data();
    void controlHasItsText();
    void labelNamesItsField_data();
    void labelNamesItsField();
    void helpTextsAreThere();
    void numberStaysInItsRange_data();
    void numberStaysInItsRange();
    void listOffersItsEntries_data();
    void listOffersItsEntries();
    void stopBitsHaveTheirValues();
    void pagesStandInTheirOrder();
    void editButtonsShowAWrench();
    void typesAreThoseOfTheFactory();
    void newFormHidesWhatNothingIsKnownOf();
    void newFormOffersNoCapability();
    void newFormSelectsNoProtocol();
    void newFormHasNoTimerRunning();
    void newFormShowsNoFilterField();
    void newFormListsNoLinkedAdapter();
    void forcedEchoIsShownOnDemand();
    void noNoticesOfWindowsAreTaken();
    void restoredFormSelectsItsTypeAnew();
};

void TestCanInterfaceWidget::windowIsAsDescribed()
{
    const InterfaceForm form;
    QCOMPARE(form->windowTitle(), QStringLiteral("CAN Interface Settings"));
    QCOMPARE(form->minimumWidth(), 500);
    QVERIFY(form->acceptDrops());
    QVERIFY(form.label("lblAdapterChanged")->font().bold());
    QVERIFY(form.label("lblAdapterChanged")->font().italic());
    QCOMPARE(form.label("validPort")->styleSheet(), QStringLiteral("color: rgb(255, 0, 0);"));
    QCOMPARE(form.label("validIPAddress")->styleSheet(), QStringLiteral("color: rgb(255, 0, 0);"));
}

void TestCanInterfaceWidget::controlHasItsText_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(text);
    };
    add("chLogErrorFrames", "Log error frames (EF)");
    add("cbAutoBusOn", "Auto bus on (Auto)");
    add("cbLowSpeed", "Low speed (LS)");
    add("cbContSystemTime", "Continuous system timestamp");
    add("cbSystemTime", "System time as timestamp");
    add("cbListenOnly", "Listen-Only Mode (LO)");
    add("cbForcedEcho", "Forced TX Echo");
    add("cbAdvancedConfig", "Show Advanced Configuration");
    add("cbTerminator", "Enable termination resistor");
    add("rb_tcp", "TCP");
    add("rb_udp", "UDP");
    add("ch_HardwareFlowControl", "Hardware Flow Control");
    add("cb_ResetDevice", "Reset device");
    add("cb_velmorSingleWire", "Single wire");
    add("validPort", "Port does not seem to be valid.");
    add("validIPAddress", "IP Address does not seem to be valid.");
    add("placeHolderLabel", "");
    add("lblAdapterChanged", "Adapter changed - Update current adapter or add new interface.");
    add("btnEdtClassicBitrate", "");
    add("btnEdtFDBitrate", "");
    add("le_port", "45674");
    add("xm3leFilterAMR", "0xFFFFFFFF");
    add("xm3leFilterACR", "0x00000000");
}

void TestCanInterfaceWidget::controlHasItsText()
{
    QFETCH(QString, name);
    const InterfaceForm form;
    QTEST(form->findChild<QWidget *>(name)->property("text").toString(), "text");
}

void TestCanInterfaceWidget::labelNamesItsField_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("field");
    const auto add = [](const char *text, const char *field) {
        QTest::newRow(field) << QString::fromLatin1(text) << QString::fromLatin1(field);
    };
    add("Interface Type", "cbCanInterfaceType");
    add("CAN Device", "cbCanDevice");
    add("Bitrate", "cbBitrate");
    add("Description", "leDescription");
    add("Linked adapter", "cbLinkedAdapter");
    add("Data Bitrate", "cbCanFdDataBitrate");
    add("Local USDO Node ID", "sbUsdoId");
    add("BTR Ext:", "edtBtr");
    add("IP - Address", "le_ipAddress");
    add("Port", "le_port");
    add("Reconnect timeout", "sb_reconnectTimeout");
    add("Connect timeout", "sb_connectTimeout");
    add("Disconnect timeout", "sb_disconnectTimeout");
    add("Baudrate", "cb_Baudrate");
    add("Stopbits", "cb_Stopbits");
    add("Databits", "cb_Databits");
    add("Parity", "cb_Parity");
    add("Clock_Frequency", "comboBox_peakFreq");
    add("Prescaler", "spinBox_preScaler");
    add("tseg1", "spinBox_tseg1");
    add("tseg2", "spinBox_tseg2");
    add("Sync-Sprungweite", "spinBox_synsw");
    add("Hardware filter mode", "xm3cbFilterMode");
    add("CAN ID 1 to pass", "xm3leCanId_1");
    add("CAN ID 2 to pass", "xm3leCanId_2");
    add("CAN ID 3 to pass", "xm3leCanId_3");
    add("CAN ID 4 to pass", "xm3leCanId_4");
    add("AMR", "xm3leFilterAMR");
    add("ACR", "xm3leFilterACR");
}

void TestCanInterfaceWidget::labelNamesItsField()
{
    QFETCH(QString, text);
    QFETCH(QString, field);
    const InterfaceForm form;
    const QList<QLabel *> labels = form->findChildren<QLabel *>();
    const auto label = std::find_if(labels.begin(), labels.end(), [&](const QLabel *candidate) {
        return candidate->buddy() != nullptr && candidate->buddy()->objectName() == field;
    });
    QVERIFY(label != labels.end());
    QCOMPARE((*label)->text(), text);
}

void TestCanInterfaceWidget::helpTextsAreThere()
{
    const InterfaceForm form;
    QCOMPARE(form.box("cbSystemTime")->toolTip(),
             QStringLiteral("Uses the system time as timestamp for CAN messages instead of hardware timestamps"));
    QCOMPARE(form.box("cbContSystemTime")->toolTip(),
             QStringLiteral("<html><head/><body><p>Continuous the timestamp over multiple days.</p><p>Only works if "
                            "&quot;Use system time as timestamp&quot; is activated.</p></body></html>"));
    QCOMPARE(form.box("cbContSystemTime")->whatsThis(),
             QStringLiteral("<html><head/><body><p>If this checkbox is activated, the system-time timestamp will not "
                            "start from 0 if the tool is running over midnight.</p><p>This only works if &quot;Use "
                            "system time as timestamp&quot; is activated.</p></body></html>"));
    QCOMPARE(form.box("cb_velmorSingleWire")->toolTip(),
             QStringLiteral("This option will set the velmor protocol to a half duplex behavior."));
    QCOMPARE(form.edit("edtBtr")->toolTip(), QStringLiteral("Simply enter a bitrate as hexadecimal value"));
    QCOMPARE(form.label("lblBtr")->toolTip(), QStringLiteral("Simply enter a bitrate as hexadecimal value"));
    QCOMPARE(form.edit("edtBtr")->placeholderText(), QStringLiteral("As hexadecimal value"));
}

void TestCanInterfaceWidget::numberStaysInItsRange_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, int minimum, int maximum, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(name) << minimum << maximum << QString::fromLatin1(text);
    };
    add("sbUsdoId", 1, 127, "65");
    add("sb_reconnectTimeout", 1, 999999999, "1 ms");
    add("sb_connectTimeout", 1, 999999999, "1 ms");
    add("sb_disconnectTimeout", 1, 999999999, "1 ms");
    add("spinBox_preScaler", 1, 64, "1");
    add("spinBox_tseg1", 1, 16, "1");
    add("spinBox_tseg2", 1, 8, "1");
    add("spinBox_synsw", 1, 4, "1");
}

void TestCanInterfaceWidget::numberStaysInItsRange()
{
    QFETCH(QString, name);
    const InterfaceForm form;
    const auto *spin = form->findChild<QSpinBox *>(name);
    QTEST(spin->minimum(), "minimum");
    QTEST(spin->maximum(), "maximum");
    QTEST(spin->text(), "text");
}

void TestCanInterfaceWidget::listOffersItsEntries_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("entries");
    const auto add = [](const char *name, const char *entries) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(entries);
    };
    add("cb_internExtern", "Intern|Extern");
    add("cb_Baudrate", "1200|2400|4800|9600|19200|38400|57600|115200|128000|256000");
    add("cb_Stopbits", "1|1.5|2");
    add("cb_Databits", "5|6|7|8");
    add("cb_Parity", "No parity|Even parity|Odd parity");
    add("comboBox_peakFreq", "8 MHz|20 MHz|24 MHz|30 MHz|40 MHz|60 MHz|80 MHz");
    add("xm3cbFilterMode", "No filter|CAN ID filter|Acceptance filter");
}

void TestCanInterfaceWidget::listOffersItsEntries()
{
    QFETCH(QString, name);
    QFETCH(QString, entries);
    const InterfaceForm form;
    QCOMPARE(InterfaceForm::texts(form->findChild<QComboBox *>(name)), entries.split(QLatin1Char('|')));
}

void TestCanInterfaceWidget::stopBitsHaveTheirValues()
{
    const InterfaceForm form;
    QCOMPARE(form.list("cb_Stopbits")->itemData(0), QVariant(1U));
    QCOMPARE(form.list("cb_Stopbits")->itemData(1), QVariant(3U));
    QCOMPARE(form.list("cb_Stopbits")->itemData(2), QVariant(2U));
}

void TestCanInterfaceWidget::pagesStandInTheirOrder()
{
    const InterfaceForm form;
    QStringList names;
    for (const char *stack : {"stackedWidget", "xm3swFilter"}) {
        const auto *pages = form.find<QStackedWidget>(stack);
        for (int i = 0; i < pages->count(); ++i)
            names.append(pages->widget(i)->objectName());
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("page page_2 page_3 page_4 page_5 page_6 page_9 page_7 page_8"));
}

void TestCanInterfaceWidget::editButtonsShowAWrench()
{
    const InterfaceForm form;
    const QImage wrench = QIcon(QStringLiteral(":/data/wrench.png")).pixmap(16, 16).toImage();
    QVERIFY(!wrench.isNull());
    for (const char *name : {"btnEdtClassicBitrate", "btnEdtFDBitrate"}) {
        QCOMPARE(form.find<QPushButton>(name)->icon().pixmap(16, 16).toImage(), wrench);
        QCOMPARE(form.find<QPushButton>(name)->sizeHint().boundedTo(QSize(22, 22)), QSize(22, 22));
        QCOMPARE(form.find<QPushButton>(name)->maximumSize(), QSize(22, 22));
    }
}

void TestCanInterfaceWidget::typesAreThoseOfTheFactory()
{
    const InterfaceForm form;
    QStringList expected;
    for (const auto &[name, type] : CanAdapterFactory::getImplementedAdapters())
        expected.append(QStringLiteral("%1=%2").arg(name).arg(type));
    const QComboBox *types = form.list("cbCanInterfaceType");
    QStringList found;
    for (int i = 0; i < types->count(); ++i)
        found.append(types->itemText(i) + QLatin1Char('=') + types->itemData(i).toString());
    QCOMPARE(found, expected);
    QCOMPARE(types->itemData(0).userType(), int(QMetaType::UInt));
}

void TestCanInterfaceWidget::newFormHidesWhatNothingIsKnownOf()
{
    const InterfaceForm form;
    for (const char *name : {"lblAdapterChanged", "stackedWidget", "cbCanfdConfig", "lbCanFdDataBitrate",
                             "cbCanFdDataBitrate", "cbForcedEcho", "cbTerminator"})
        QVERIFY2(!form.isShown(name), name);
    for (const char *name : {"frameLinkedAdapter", "groupBox", "cbAdvancedConfig", "lblBtr", "edtBtr"})
        QVERIFY2(form.isShown(name), name);
}

void TestCanInterfaceWidget::newFormOffersNoCapability()
{
    const InterfaceForm form;
    for (const char *name : {"cbBitrate", "cbCanFdDataBitrate", "chLogErrorFrames", "cbListenOnly", "cbLowSpeed",
                             "cbAutoBusOn", "cbTerminator", "lblBtr", "edtBtr"})
        QVERIFY2(!form.find<QWidget>(name)->isEnabled(), name);
    for (const char *name : {"chLogErrorFrames", "cbListenOnly", "cbLowSpeed", "cbAutoBusOn"})
        QVERIFY2(!form.box(name)->isChecked(), name);
    QVERIFY(!form.fdGroup()->isChecked());
    QCOMPARE(form.box("cbAutoBusOn")->property("changeable"), QVariant(true));
}

void TestCanInterfaceWidget::newFormSelectsNoProtocol()
{
    const InterfaceForm form;
    QVERIFY(!form.find<QRadioButton>("rb_tcp")->isChecked());
    QVERIFY(!form.find<QRadioButton>("rb_udp")->isChecked());
    QCOMPARE(form.find<QRadioButton>("rb_tcp")->group()->objectName(), QStringLiteral("buttonGroup"));
    QCOMPARE(form.find<QRadioButton>("rb_udp")->group(), form.find<QRadioButton>("rb_tcp")->group());
}

void TestCanInterfaceWidget::newFormHasNoTimerRunning()
{
    const InterfaceForm form;
    const auto timers = form->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 1);
    QVERIFY(!timers.first()->isActive());
}

void TestCanInterfaceWidget::newFormShowsNoFilterField()
{
    const InterfaceForm form;
    QCOMPARE(form.list("xm3cbFilterMode")->currentText(), QStringLiteral("No filter"));
    QCOMPARE(form.find<QStackedWidget>("xm3swFilter")->currentWidget()->objectName(), QStringLiteral("page_9"));
}

void TestCanInterfaceWidget::newFormListsNoLinkedAdapter()
{
    const InterfaceForm form;
    QCOMPARE(form.list("cbLinkedAdapter")->count(), 0);
    QVERIFY(!form.value(AbstractCanAdapter::OptionLinkedAdapter).isValid());
}

void TestCanInterfaceWidget::forcedEchoIsShownOnDemand()
{
    const InterfaceForm form;
    form->showForcedEcho(true);
    QVERIFY(form.isShown("cbForcedEcho"));
    form->showForcedEcho(false);
    QVERIFY(!form.isShown("cbForcedEcho"));
}

void TestCanInterfaceWidget::noNoticesOfWindowsAreTaken()
{
    const InterfaceForm form;
    long result = 7;
    QVERIFY(!form->registerDeviceChangeNotification());
    QVERIFY(!form->nativeEvent(QByteArray("xcb_generic_event_t"), nullptr, &result));
    QCOMPARE(result, 7L);
}

void TestCanInterfaceWidget::restoredFormSelectsItsTypeAnew()
{
    const InterfaceForm form;
    form.selectType(2);
    InterfaceForm::family(2)->deviceMap.insert(QStringLiteral("Third"), 0);
    QShowEvent restored;
    QSpontaneKeyEvent::setSpontaneous(&restored);
    qApp->notify(&*form, &restored);
    QCOMPARE(form.list("cbCanDevice")->count(), 3);
}

QTEST_MAIN(TestCanInterfaceWidget)
#include "tst_caninterfacewidget.moc"
