#include "interfacename.h"

#include "fakeadapter.h"

#include <QtTest>

class TestInterfaceName : public QObject
{
    Q_OBJECT

private slots:
    void theShortestNameThatTellsIsTaken_data();
    void theShortestNameThatTellsIsTaken();
};

void TestInterfaceName::theShortestNameThatTellsIsTaken_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("shown");

    QTest::newRow("type and device") << "SocketCAN - can0"
                                     << "can0"
                                     << "can0";
    QTest::newRow("a device with its controller") << "SocketCAN - can0"
                                                  << "can0|mcp251xfd"
                                                  << "can0";
    QTest::newRow("a name of its own") << "Bench"
                                       << "can0"
                                       << "Bench";
    QTest::newRow("no device") << "CAN over TCP"
                               << ""
                               << "CAN over TCP";
    QTest::newRow("no name") << ""
                             << "can0|mcp251xfd"
                             << "can0";
}

void TestInterfaceName::theShortestNameThatTellsIsTaken()
{
    QFETCH(QString, name);
    QFETCH(QString, device);
    QFETCH(QString, shown);
    FakeAdapter adapter(AbstractCanAdapter::CanAdapterSocketCan, device);
    adapter.setCanAdapterOption(AbstractCanAdapter::OptionAdapterName, name);
    QCOMPARE(interfaceName(adapter), shown);
}

QTEST_APPLESS_MAIN(TestInterfaceName)
#include "tst_interfacename.moc"
