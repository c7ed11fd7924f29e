#include "interfaceform.h"

// What may be entered, and what the form says of it.
class TestCanInterfaceInput : public QObject
{
    Q_OBJECT

private slots:
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

void TestCanInterfaceInput::addressTakesOctetsOnly_data()
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

void TestCanInterfaceInput::addressTakesOctetsOnly()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QTEST(isAccepted(form.edit("le_ipAddress")->validator(), text), "accepted");
    QTEST(isRefused(form.edit("le_ipAddress")->validator(), text), "refused");
}

void TestCanInterfaceInput::portTakesFiveDigits_data()
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

void TestCanInterfaceInput::portTakesFiveDigits()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QTEST(isAccepted(form.edit("le_port")->validator(), text), "accepted");
}

void TestCanInterfaceInput::serialBaudrateTakesNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("lowest") << "0" << true;
    QTest::newRow("highest") << "9999999" << true;
    QTest::newRow("too high") << "10000000" << false;
    QTest::newRow("negative") << "-1" << false;
    QTest::newRow("word") << "fast" << false;
}

void TestCanInterfaceInput::serialBaudrateTakesNumbers()
{
    QFETCH(QString, text);
    const InterfaceForm form;
    QVERIFY(form.list("cb_Baudrate")->isEditable());
    QTEST(isAccepted(form.list("cb_Baudrate")->validator(), text), "accepted");
}

void TestCanInterfaceInput::emptyPortIsMarked()
{
    const InterfaceForm form;
    form.edit("le_port")->setText(QStringLiteral("1"));
    QCOMPARE(form.label("validPort")->text(), QString());
    form.edit("le_port")->clear();
    QCOMPARE(form.label("validPort")->text(), QStringLiteral("Port does not seem to be valid."));
}

void TestCanInterfaceInput::unfinishedAddressIsMarked_data()
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

void TestCanInterfaceInput::unfinishedAddressIsMarked()
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

void TestCanInterfaceInput::addressBehindAnotherPageIsNotChecked()
{
    const InterfaceForm form;
    form.pages()->setCurrentIndex(0);
    form.edit("le_ipAddress")->setText(QStringLiteral("1.2.3.4"));
    QCOMPARE(form.label("validIPAddress")->text(), QStringLiteral("IP Address does not seem to be valid."));
}

void TestCanInterfaceInput::filterModeShowsItsFields_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("page");
    QTest::newRow("no filter") << 0 << "page_9";
    QTest::newRow("identifiers") << 1 << "page_7";
    QTest::newRow("mask and code") << 2 << "page_8";
}

void TestCanInterfaceInput::filterModeShowsItsFields()
{
    QFETCH(int, mode);
    const InterfaceForm form;
    form.list("xm3cbFilterMode")->setCurrentIndex((mode + 1) % 3);
    form.list("xm3cbFilterMode")->setCurrentIndex(mode);
    QTEST(form.find<QStackedWidget>("xm3swFilter")->currentWidget()->objectName(), "page");
}

QTEST_MAIN(TestCanInterfaceInput)
#include "tst_caninterfaceinput.moc"
