#include "debuglines.h"
#include "loggerform.h"

#include <QTcpServer>

class TestFileLoggerBus : public QObject
{
    Q_OBJECT

private slots:
    void busIsLoggedFrameByFrame();
};

namespace {
using AdapterPtr = std::unique_ptr<AbstractCanAdapter>;

QString freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return QString::number(server.serverPort());
}

AdapterPtr joinBus(const char *name, const QString &port)
{
    AdapterPtr adapter(
        CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, QString::fromLatin1(name)));
    adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, port);
    if (adapter->open() == AbstractCanAdapter::OpenOk)
        adapter->setRunning(true);
    return adapter;
}
} // namespace

/// From the identifier that starts the log to the one that ends it, on a bus in real time.
void TestFileLoggerBus::busIsLoggedFrameByFrame()
{
    constexpr quint32 frameCount = 3000;
    constexpr quint32 startId = 0x700;
    constexpr quint32 stopId = 0x701;
    LoggerForm::forgetSettings();
    LoggerForm form;
    const QString port = freePort();
    const AdapterPtr sender = joinBus("Demo 1", port);
    const AdapterPtr receiver = joinBus("Demo 2", port);
    QVERIFY(sender->getRunning() && receiver->getRunning());
    CanScheduler scheduler(receiver.get());
    form.window->canSchedulerChanged(&scheduler);
    form.armStartByIds(QStringLiteral("0x700"));
    form.setFilter(QStringLiteral("0-0x6FF"));
    form.armStopByIds(QStringLiteral("0x701"));

    const auto send = [&sender](quint32 id) {
        CAN::CanMessage frame = received(id).message;
        return sender->write(&frame) == AbstractCanAdapter::WriteOk;
    };
    const DebugLines debug; // one a frame, as long as the log waits for an identifier
    QStringList expected;
    QVERIFY(send(5));
    QVERIFY(send(startId));
    for (quint32 i = 0; i < frameCount; ++i) {
        const quint32 id = i % startId;
        QVERIFY(send(id));
        expected += QStringLiteral("%1").arg(id, 3, 16, QLatin1Char('0'));
    }
    QVERIFY(send(stopId));
    QVERIFY(send(6));
    expected += QStringLiteral("# Stop CAN ID (0x701) detected");

    QTRY_COMPARE_WITH_TIMEOUT(form.statusText(), QStringLiteral("stopped"), 20000);
    QCOMPARE(form.countText(), QString::number(frameCount));
    QCOMPARE(form.log(), expected.join(QLatin1Char(' ')));
}

QTEST_MAIN(TestFileLoggerBus)
#include "tst_fileloggerbus.moc"
