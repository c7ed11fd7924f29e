#include "interfaceform.h"

#include <QBoxLayout>
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
    void forcedEchoIsShownOnDemand();
    void noNoticesOfWindowsAreTaken();
    void addressTakesOctetsOnly_data();
    void addressTakesOctetsOnly();
    void portTakesFiveDigits_data();
    void portTakesFiveDigits();
    void serialBaudrateTakesNumbers_data();
    void serialBaudrateTakesNumbers();
    void emptyPortIsMarked();
    void unfinishedAddressIsMarked_data();
    void unfinishedAddressIsMarked();
    void addressBehindAnotherPageIsNotChecked();
    void filterModeShowsItsFields_data();
    void filterModeShowsItsFields();
    void tabKeyWalksInReadingOrder();
    void fieldsBeginAtOneLine_data();
    void fieldsBeginAtOneLine();
    void largeFontCutsNothingOff();
    void boxesStandInTwoColumnsWhereThereIsRoom();
    void shownFormStandsInTheMiddleOfItsParent();
    void shownFormStaysInItsLayout();

private:
    static bool isAccepted(const QValidator *validator, QString text)
    {
        int position = 0;
        return validator->validate(text, position) == QValidator::Acceptable;
    }
    static bool isRefused(const QValidator *validator, QString text)
    {
        int position = 0;
        return validator->validate(text, position) == QValidator::Invalid;
    }
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

void TestCanInterfaceWidget::addressTakesOctetsOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("refused");
    QTest::newRow("lowest") << "0.0.0.0" << true << false;
    QTest::newRow("highest") << "255.255.255.255" << true << false;
    QTest::newRow("leading zeros") << "010.001.000.199" << true << false;
    QTest::newRow("unfinished") << "192.168." << false << false;
    QTest::newRow("octet too high") << "256.1.1.1" << false << true;
    QTest::newRow("four digits") << "1234.1.1.1" << false << true;
    QTest::newRow("five parts") << "1.2.3.4.5" << false << true;
    QTest::newRow("word") << "gateway" << false << true;
}

void TestCanInterfaceWidget::addressTakesOctetsOnly()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QTEST(isAccepted(form.edit("le_ipAddress")->validator(), text), "accepted");
    QTEST(isRefused(form.edit("le_ipAddress")->validator(), text), "refused");
}

void TestCanInterfaceWidget::portTakesFiveDigits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("one digit") << "1" << true;
    QTest::newRow("five digits") << "99999" << true;
    QTest::newRow("six digits") << "100000" << false;
    QTest::newRow("none") << "" << false;
    QTest::newRow("letter") << "12a" << false;
    QTest::newRow("sign") << "-1" << false;
}

void TestCanInterfaceWidget::portTakesFiveDigits()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QTEST(isAccepted(form.edit("le_port")->validator(), text), "accepted");
}

void TestCanInterfaceWidget::serialBaudrateTakesNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("lowest") << "0" << true;
    QTest::newRow("highest") << "9999999" << true;
    QTest::newRow("too high") << "10000000" << false;
    QTest::newRow("negative") << "-1" << false;
    QTest::newRow("word") << "fast" << false;
}

void TestCanInterfaceWidget::serialBaudrateTakesNumbers()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QVERIFY(form.list("cb_Baudrate")->isEditable());
    QTEST(isAccepted(form.list("cb_Baudrate")->validator(), text), "accepted");
}

void TestCanInterfaceWidget::emptyPortIsMarked()
{
    const InterfaceForm form;
    form.edit("le_port")->setText(QStringLiteral("1"));
    QCOMPARE(form.label("validPort")->text(), QString());
    form.edit("le_port")->clear();
    QCOMPARE(form.label("validPort")->text(), QStringLiteral("Port does not seem to be valid."));
}

void TestCanInterfaceWidget::unfinishedAddressIsMarked_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("marked");
    QTest::newRow("empty") << "" << true;
    QTest::newRow("three parts") << "1.2.3" << true;
    QTest::newRow("empty fourth part") << "1.2.3." << true;
    QTest::newRow("whole") << "1.2.3.4" << false;
    QTest::newRow("empty parts before the fourth") << "...4" << false;
    QTest::newRow("five parts") << "1.2.3.4." << false;
}

void TestCanInterfaceWidget::unfinishedAddressIsMarked()
{
    QFETCH(QString, text);
    QFETCH(bool, marked);
    const InterfaceForm form;
    form.pages()->setCurrentIndex(1);
    form.edit("le_ipAddress")->setText(QStringLiteral("x"));
    form.edit("le_ipAddress")->setText(text);
    QCOMPARE(form.label("validIPAddress")->text(),
             marked ? QStringLiteral("IP Address does not seem to be valid.") : QString());
}

void TestCanInterfaceWidget::addressBehindAnotherPageIsNotChecked()
{
    const InterfaceForm form;
    form.pages()->setCurrentIndex(0);
    form.edit("le_ipAddress")->setText(QStringLiteral("1.2.3.4"));
    QCOMPARE(form.label("validIPAddress")->text(), QStringLiteral("IP Address does not seem to be valid."));
}

void TestCanInterfaceWidget::filterModeShowsItsFields_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("page");
    QTest::newRow("no filter") << 0 << "page_9";
    QTest::newRow("identifiers") << 1 << "page_7";
    QTest::newRow("mask and code") << 2 << "page_8";
}

void TestCanInterfaceWidget::filterModeShowsItsFields()
{
    QFETCH(int, mode);
    const InterfaceForm form;
    form.list("xm3cbFilterMode")->setCurrentIndex((mode + 1) % 3);
    form.list("xm3cbFilterMode")->setCurrentIndex(mode);
    QTEST(form.find<QStackedWidget>("xm3swFilter")->currentWidget()->objectName(), "page");
}

void TestCanInterfaceWidget::tabKeyWalksInReadingOrder()
{
    const InterfaceForm form;
    form->show();
    form.selectType(AbstractCanAdapter::CanAdapterSystecEthernet);
    form.list("cbCanInterfaceType")->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(&*form));
    QStringList names;
    for (int i = 0; i < 30; ++i) {
        names.append(form->focusWidget()->objectName());
        QTest::keyClick(form->focusWidget(), Qt::Key_Tab);
        if (form->focusWidget() == form.list("cbCanInterfaceType"))
            break;
    }
    names.removeAll(QString());
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("cbCanInterfaceType cbCanDevice cbBitrate leDescription cbLinkedAdapter chLogErrorFrames "
                            "cbAutoBusOn cbLowSpeed cbSystemTime cbContSystemTime cbCanfdConfig sbUsdoId "
                            "cbAdvancedConfig le_ipAddress le_port sb_reconnectTimeout sb_connectTimeout "
                            "sb_disconnectTimeout rb_tcp"));
}

void TestCanInterfaceWidget::fieldsBeginAtOneLine_data()
{
    QTest::addColumn<unsigned int>("type");
    QTest::addColumn<QString>("fields");
    QTest::newRow("above") << 1U << "cbCanInterfaceType cbCanDevice cbBitrate leDescription cbLinkedAdapter sbUsdoId";
    QTest::newRow("network page") << 8U << "le_ipAddress le_port sb_reconnectTimeout sb_disconnectTimeout rb_tcp";
    QTest::newRow("serial page") << 13U
                                 << "cb_internExtern ch_HardwareFlowControl cb_Baudrate cb_Parity cb_ResetDevice";
}

void TestCanInterfaceWidget::fieldsBeginAtOneLine()
{
    QFETCH(unsigned int, type);
    QFETCH(QString, fields);
    const InterfaceForm form;
    for (const int pointSize : {10, 20}) {
        QFont font = form->font();
        font.setPointSize(pointSize);
        form->setFont(font);
        form->show();
        form.selectType(type);
        QVERIFY(QTest::qWaitForWindowExposed(&*form));
        QCoreApplication::sendPostedEvents();
        QSet<int> lines;
        for (const QString &name : fields.split(QLatin1Char(' '))) {
            const auto *field = form->findChild<QWidget *>(name);
            lines.insert(field->mapTo(&*form, QPoint(0, 0)).x());
        }
        QCOMPARE(lines.size(), 1);
    }
}

void TestCanInterfaceWidget::largeFontCutsNothingOff()
{
    const InterfaceForm form;
    QFont font = form->font();
    font.setPointSize(24);
    form->setFont(font);
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(&*form));
    for (unsigned int type = 1; type <= InterfaceForm::highestType; ++type) {
        form.selectType(type);
        QCoreApplication::sendPostedEvents();
        form->resize(form->minimumSize().expandedTo(form->minimumSizeHint()));
        QCoreApplication::sendPostedEvents();
        for (const QWidget *widget : form->findChildren<QWidget *>()) {
            const bool hasText = qobject_cast<const QCheckBox *>(widget) != nullptr
                || qobject_cast<const QRadioButton *>(widget) != nullptr
                || (qobject_cast<const QLabel *>(widget) != nullptr && !widget->hasHeightForWidth());
            if (hasText && widget->isVisible())
                QVERIFY2(widget->width() >= widget->minimumSizeHint().width(), qPrintable(widget->objectName()));
        }
    }
}

void TestCanInterfaceWidget::boxesStandInTwoColumnsWhereThereIsRoom()
{
    const InterfaceForm form;
    form->show();
    QVERIFY(QTest::qWaitForWindowExposed(&*form));
    form->resize(1000, 700);
    QTRY_COMPARE(form.box("cbListenOnly")->y(), form.box("chLogErrorFrames")->y());
    form->resize(form->minimumWidth(), 700);
    QTRY_COMPARE(form.box("cbListenOnly")->x(), form.box("chLogErrorFrames")->x());
}

void TestCanInterfaceWidget::shownFormStandsInTheMiddleOfItsParent()
{
    const InterfaceForm world; // the families
    QWidget parent;
    parent.setGeometry(100, 50, 1400, 1000);
    auto *form = new CanInterfaceWidget(&parent);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    const QPoint middle = form->geometry().center() - parent.geometry().center();
    QVERIFY2(middle.manhattanLength() <= 2, qPrintable(QStringLiteral("%1,%2").arg(middle.x()).arg(middle.y())));
}

void TestCanInterfaceWidget::shownFormStaysInItsLayout()
{
    const InterfaceForm world;
    QWidget parent;
    parent.setGeometry(300, 200, 1400, 1000);
    auto *layout = new QVBoxLayout(&parent);
    auto *form = new CanInterfaceWidget;
    layout->addWidget(form);
    parent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&parent));
    QTRY_COMPARE(form->geometry(), layout->contentsRect());
    form->on_cbCanInterfaceType_currentIndexChanged(0);
    QTRY_COMPARE(form->geometry(), layout->contentsRect());
}

QTEST_MAIN(TestCanInterfaceWidget)
#include "tst_caninterfacewidget.moc"
