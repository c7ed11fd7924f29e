#include "canopenchoices.h"
#include "markingtranslator.h"

#include <QComboBox>
#include <QtTest>

class TestCanOpenChoices : public QObject
{
    Q_OBJECT

private slots:
    void commandHasItsByte_data();
    void commandHasItsByte();
    void commandBeyondTheListHasNone_data();
    void commandBeyondTheListHasNone();
    void stateHasItsByte_data();
    void stateHasItsByte();
    void identifierStandsOnItsBase();
    void objectIsReadInHexadecimal_data();
    void objectIsReadInHexadecimal();
    void boxHasEachClassInTheOrderOfTheHash();
    void classesKeepTheirTextsInAnotherLanguage();
    void boxSpeaksTheLanguageOfTheApplication();
};

void TestCanOpenChoices::commandHasItsByte_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("byte");
    QTest::newRow("enter pre-operational") << 0 << 0x80;
    QTest::newRow("start") << 1 << 0x01;
    QTest::newRow("stop") << 2 << 0x02;
    QTest::newRow("reset communication") << 3 << 0x82;
    QTest::newRow("reset node") << 4 << 0x81;
}

void TestCanOpenChoices::commandHasItsByte()
{
    QFETCH(int, index);
    QFETCH(int, byte);
    QCOMPARE(int(CanOpenChoices::nmtCommandSpecifier(index).value_or(0xEE)), byte);
}

void TestCanOpenChoices::commandBeyondTheListHasNone_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("no entry") << -1;
    QTest::newRow("one more") << 5;
}

void TestCanOpenChoices::commandBeyondTheListHasNone()
{
    QFETCH(int, index);
    QVERIFY(!CanOpenChoices::nmtCommandSpecifier(index));
}

void TestCanOpenChoices::stateHasItsByte_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("byte");
    QTest::newRow("boot-up") << 0 << 0x00;
    QTest::newRow("stopped") << 1 << 0x04;
    QTest::newRow("operational") << 2 << 0x05;
    QTest::newRow("pre-operational") << 3 << 0x7F;
    QTest::newRow("no entry") << -1 << 0x00;
    QTest::newRow("one more") << 4 << 0x00;
}

void TestCanOpenChoices::stateHasItsByte()
{
    QFETCH(int, index);
    QFETCH(int, byte);
    QCOMPARE(int(CanOpenChoices::heartbeatState(index)), byte);
}

void TestCanOpenChoices::identifierStandsOnItsBase()
{
    QCOMPARE(CanOpenChoices::sdoIdentifier(1, 0), 0x581u);
    QCOMPARE(CanOpenChoices::sdoIdentifier(127, 1), 0x67Fu);
    QCOMPARE(CanOpenChoices::heartbeatIdentifier(5), 0x705u);
}

void TestCanOpenChoices::objectIsReadInHexadecimal_data()
{
    QTest::addColumn<QString>("index");
    QTest::addColumn<QString>("subindex");
    QTest::addColumn<int>("low");
    QTest::addColumn<int>("high");
    QTest::addColumn<uint>("sub");
    QTest::newRow("plain") << "1017"
                           << "a" << 0x17 << 0x10 << 0x0Au;
    QTest::newRow("with a prefix") << "0x1017"
                                   << "0xA" << 0x17 << 0x10 << 0x0Au;
    QTest::newRow("empty") << ""
                           << "" << 0 << 0 << 0u;
    QTest::newRow("no numbers") << "index"
                                << "1 2" << 0 << 0 << 0u;
    QTest::newRow("negative") << "-1"
                              << "-1" << 0 << 0 << 0u;
    QTest::newRow("index of three bytes") << "12345"
                                          << "1FF" << 0x45 << 0x23 << 0x1FFu;
    QTest::newRow("largest") << "FFFFFFFF"
                             << "FFFFFFFF" << 0xFF << 0xFF << 0xFFFFFFFFu;
    QTest::newRow("beyond 32 bits") << "100000000"
                                    << "100000000" << 0 << 0 << 0u;
}

void TestCanOpenChoices::objectIsReadInHexadecimal()
{
    QFETCH(QString, index);
    QFETCH(QString, subindex);
    const CanOpenChoices::ObjectAddress object(index, subindex);
    QTEST(int(object.indexLow), "low");
    QTEST(int(object.indexHigh), "high");
    QTEST(object.subindex, "sub");
}

void TestCanOpenChoices::boxHasEachClassInTheOrderOfTheHash()
{
    const QHash<unsigned char, QString> classes = CanOpenChoices::emergencyClasses();
    QComboBox box;
    CanOpenChoices::fillEmergencyBox(&box, classes);
    QCOMPARE(box.count(), 25);
    const QList<unsigned char> keys = classes.keys();
    for (int i = 0; i < box.count(); ++i) {
        QCOMPARE(box.itemData(i), QVariant(int(keys.at(i))));
        QCOMPARE(box.itemText(i), classes.value(keys.at(i)));
    }
}

void TestCanOpenChoices::classesKeepTheirTextsInAnotherLanguage()
{
    const MarkingTranslator translator;
    QCOMPARE(CanOpenChoices::emergencyClasses().value(0x30), QStringLiteral("Voltage"));
}

void TestCanOpenChoices::boxSpeaksTheLanguageOfTheApplication()
{
    const QHash<unsigned char, QString> classes = CanOpenChoices::emergencyClasses();
    const MarkingTranslator translator;
    QComboBox box;
    CanOpenChoices::fillEmergencyBox(&box, classes);
    QCOMPARE(box.itemText(box.findData(0x30)), MarkingTranslator::marked("Voltage"));
}

QTEST_MAIN(TestCanOpenChoices)
#include "tst_canopenchoices.moc"
