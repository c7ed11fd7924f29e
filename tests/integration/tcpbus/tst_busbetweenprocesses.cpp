#include "adaptercontracttest.h"

#include <QProcess>
#include <QTcpServer>

using Adapter = AbstractCanAdapter;

namespace {
constexpr int patience = 20000; // ms; a process starts slowly on a busy machine

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

/// Another program, and what it has printed.
class Program
{
public:
    Program(const QString &program, const QStringList &arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(program, arguments);
    }
    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

    static Program python(const char *mode, quint16 port)
    {
        return {QStringLiteral("python3"), {QStringLiteral(BUSPEER), QString::fromLatin1(mode), QString::number(port)}};
    }
    static Program owner(quint16 port, const char *mode = "")
    {
        return {QStringLiteral(BUSOWNER), {QString::number(port), QString::fromLatin1(mode)}};
    }

    /// The next line; empty if none comes.
    QString line()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(patience))
                return {};
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }

    void say(const char *line)
    {
        m_process.write(QByteArray(line) + '\n');
        m_process.waitForBytesWritten(patience);
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

    bool endsWithoutError()
    {
        m_process.closeWriteChannel();
        return (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patience))
            && m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

private:
    QProcess m_process;
};

std::unique_ptr<Adapter> makeAdapter(Adapter::CanAdapterType type, quint16 port)
{
    std::unique_ptr<Adapter> adapter(CanAdapterFactory::createCanAdapter(type, QString()));
    adapter->setCanAdapterOption(Adapter::OptionPort, QString::number(port));
    adapter->setCanAdapterOption(Adapter::OptionIpAddress, QStringLiteral("127.0.0.1"));
    adapter->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    return adapter;
}

bool start(Adapter &adapter)
{
    if (adapter.open() != Adapter::OpenOk) {
        qWarning("%s", qPrintable(adapter.errorText()));
        return false;
    }
    adapter.setRunning(true);
    return adapter.getRunning();
}

struct Example
{
    const char *name;
    CAN::CanMessage message;
    const char *line;
};

std::vector<Example> examples()
{
    CAN::CanMessage standard;
    standard.id = 0x123;
    standard.length = 2;
    standard.data[0] = 0x01;
    standard.data[1] = 0xFE;
    CAN::CanMessage extended = standard;
    extended.id = 0x1ABCDEF0;
    extended.ext = true;
    CAN::CanMessage fd = extended;
    fd.fd = fd.brs = fd.extraFlag = true;
    fd.length = 12;
    CAN::CanMessage empty;
    return {{"standard", standard, "123 - 2 01FE"},
            {"extended", extended, "1ABCDEF0 x 2 01FE"},
            {"CAN FD", fd, "1ABCDEF0 xfbs 12 01FE00000000000000000000"},
            {"empty", empty, "000 - 0 -"}};
}
} // namespace

/// The bus among programs: this one, one in another language, and another one that uses the library.
class TestBusBetweenProcesses : public QObject
{
    Q_OBJECT

private slots:
    void foreignProgramSeesTheBus_data();
    void foreignProgramSeesTheBus();
    void foreignProgramTakesPartInTheBus_data();
    void foreignProgramTakesPartInTheBus();
    void foreignProgramAnswersRequests();
    void foreignProgramCanBeTheGateway();
    void gatewayThatDiesIsAnInterfaceErrorOnce();
    void ownerInAnotherProcessCarriesTheBus();
    void whenTheOwnerDiesTheNextCarriesTheBus();
    void ownerEndsCleanlyWithClientsConnected();
    void programsThatStartTogetherMeetOnOneBus();
    void floodFromAnotherProcessLosesNothing();
};

void TestBusBetweenProcesses::foreignProgramSeesTheBus_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    QTest::addColumn<QString>("line");
    for (const Example &example : examples())
        QTest::newRow(example.name) << example.message << QString::fromLatin1(example.line);
}

void TestBusBetweenProcesses::foreignProgramSeesTheBus()
{
    QFETCH(CAN::CanMessage, message);
    QFETCH(QString, line);
    const quint16 port = freePort();
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    QVERIFY(start(*adapter));
    Program peer = Program::python("join", port);
    QCOMPARE(peer.line(), QStringLiteral("ready %1").arg(port));
    QCOMPARE(peer.line(), QStringLiteral("joined"));
    QCOMPARE(adapter->write(&message), Adapter::WriteOk);
    QCOMPARE(peer.line(), line);
    QVERIFY(peer.endsWithoutError());
}

void TestBusBetweenProcesses::foreignProgramTakesPartInTheBus_data()
{
    foreignProgramSeesTheBus_data();
}

void TestBusBetweenProcesses::foreignProgramTakesPartInTheBus()
{
    QFETCH(CAN::CanMessage, message);
    QFETCH(QString, line);
    const quint16 port = freePort();
    const auto a = makeAdapter(Adapter::CanAdapterDemo, port);
    const auto b = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord atA(*a);
    AdapterRecord atB(*b);
    QVERIFY(start(*a) && start(*b));
    Program peer = Program::python("join", port);
    peer.say(qPrintable(line));
    QVERIFY(atA.waitForFrames(1));
    QVERIFY(atB.waitForFrames(1));
    QVERIFY(atA.frames().first() == message);
    QVERIFY(atB.frames().first() == message);
    QVERIFY(peer.endsWithoutError());
    QCOMPARE(atA.errors() + atB.errors(), 0);
}

void TestBusBetweenProcesses::foreignProgramAnswersRequests()
{
    const quint16 port = freePort();
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    Program peer = Program::python("join", port);
    QVERIFY(!peer.line().isEmpty());
    QCOMPARE(peer.line(), QStringLiteral("joined"));
    CAN::CanMessage request;
    request.id = 0x701;
    request.rtr = true;
    request.length = 1;
    QCOMPARE(adapter->write(&request), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    const CAN::CanMessage answer = record.frames().first();
    QCOMPARE(answer.id, 0x701u);
    QVERIFY(!answer.rtr);
    QCOMPARE(answer.dataToByteArray(), QByteArray("PY"));
}

void TestBusBetweenProcesses::foreignProgramCanBeTheGateway()
{
    Program gateway = Program::python("host", 0);
    const quint16 port = gateway.line().section(QLatin1Char(' '), 1).toUShort();
    QVERIFY(port != 0);
    const auto adapter = makeAdapter(Adapter::CanAdapterFixedNetwork20, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    QCOMPARE(gateway.line(), QStringLiteral("joined"));
    gateway.say("0AB - 1 42");
    QVERIFY(record.waitForFrames(1));
    CAN::CanMessage message = record.frames().first();
    QCOMPARE(message.id, 0xABu);
    ++message.id;
    QCOMPARE(adapter->write(&message), Adapter::WriteOk);
    QCOMPARE(gateway.line(), QStringLiteral("0AC - 1 42"));
    adapter->close();
    QCOMPARE(gateway.line(), QStringLiteral("ended"));
    QVERIFY(gateway.endsWithoutError());
    QCOMPARE(record.errors(), 0);
}

void TestBusBetweenProcesses::gatewayThatDiesIsAnInterfaceErrorOnce()
{
    Program gateway = Program::python("host", 0);
    const quint16 port = gateway.line().section(QLatin1Char(' '), 1).toUShort();
    const auto adapter = makeAdapter(Adapter::CanAdapterFixedNetwork20, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    gateway.kill();
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!adapter->getRunning(), patience);
    QVERIFY(!adapter->errorText().isEmpty());
    adapter->close();
    QCOMPARE(record.errors(), 1);
    // Nobody listens there any more, and a client of gateways does not become one.
    QCOMPARE(adapter->open(), int(Adapter::OpenBusy));
}

void TestBusBetweenProcesses::ownerInAnotherProcessCarriesTheBus()
{
    const quint16 port = freePort();
    Program owner = Program::owner(port);
    QCOMPARE(owner.line(), QStringLiteral("ready"));
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    CAN::CanMessage message;
    message.id = 0x2A;
    QCOMPARE(adapter->write(&message), Adapter::WriteOk);
    QCOMPARE(owner.line(), QStringLiteral("2a"));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(record.frames().first().id, 0x2Bu);
}

void TestBusBetweenProcesses::whenTheOwnerDiesTheNextCarriesTheBus()
{
    const quint16 port = freePort();
    Program owner = Program::owner(port);
    QCOMPARE(owner.line(), QStringLiteral("ready"));
    const auto a = makeAdapter(Adapter::CanAdapterDemo, port);
    const auto b = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord atA(*a);
    AdapterRecord atB(*b);
    QVERIFY(start(*a) && start(*b));
    owner.kill();
    QTRY_COMPARE_WITH_TIMEOUT(atA.errors() + atB.errors(), 2, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!a->getRunning() && !b->getRunning(), patience);
    a->close();
    b->close();

    QVERIFY(start(*a) && start(*b));
    Program newcomer = Program::owner(port);
    QCOMPARE(newcomer.line(), QStringLiteral("ready"));
    CAN::CanMessage message;
    message.id = 1;
    QCOMPARE(a->write(&message), Adapter::WriteOk);
    QVERIFY(atB.waitForFrames(2));
    QVERIFY(atA.waitForFrames(1));
    QCOMPARE(atB.frames().at(0).id, 1u);
    QCOMPARE(atB.frames().at(1).id, 2u);
    QCOMPARE(atA.errors() + atB.errors(), 2);
}

void TestBusBetweenProcesses::ownerEndsCleanlyWithClientsConnected()
{
    const quint16 port = freePort();
    Program owner = Program::owner(port);
    QCOMPARE(owner.line(), QStringLiteral("ready"));
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    QVERIFY(owner.endsWithoutError());
    QTRY_COMPARE_WITH_TIMEOUT(record.errors(), 1, patience);
}

void TestBusBetweenProcesses::programsThatStartTogetherMeetOnOneBus()
{
    const quint16 port = freePort();
    std::vector<std::unique_ptr<Program>> owners;
    for (int i = 0; i < 4; ++i)
        owners.push_back(std::make_unique<Program>(QStringLiteral(BUSOWNER), QStringList{QString::number(port)}));
    for (const auto &owner : owners)
        QCOMPARE(owner->line(), QStringLiteral("ready"));

    // The largest identifier, for it has no next one that an owner could answer with.
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    QVERIFY(start(*adapter));
    CAN::CanMessage last;
    last.id = 0x7FF;
    QCOMPARE(adapter->write(&last), Adapter::WriteOk);
    for (const auto &owner : owners)
        QCOMPARE(owner->line(), QStringLiteral("7ff"));
}

void TestBusBetweenProcesses::floodFromAnotherProcessLosesNothing()
{
    constexpr int count = 20000;
    const quint16 port = freePort();
    Program owner = Program::owner(port, "quiet");
    QCOMPARE(owner.line(), QStringLiteral("ready"));
    const auto adapter = makeAdapter(Adapter::CanAdapterDemo, port);
    AdapterRecord record(*adapter);
    QVERIFY(start(*adapter));
    for (int number = 0; number < count; ++number) {
        CAN::CanMessage message;
        message.id = 0x100;
        message.length = 4;
        for (int i = 0; i < 4; ++i)
            message.data[i] = static_cast<quint8>(number >> (8 * i));
        QCOMPARE(adapter->write(&message), Adapter::WriteOk);
    }
    QVERIFY(record.waitForFrames(count));
    const QList<CAN::CanMessage> frames = record.frames();
    for (int number = 0; number < count; ++number)
        QCOMPARE(frames.at(number).data[0] | frames.at(number).data[1] << 8, number & 0xFFFF);
    QCOMPARE(adapter->framesSent(), quint64(count));
    QCOMPARE(adapter->framesReceived(), quint64(count));
    QCOMPARE(adapter->framesLost(), quint64(0));
}

QTEST_GUILESS_MAIN(TestBusBetweenProcesses)
#include "tst_busbetweenprocesses.moc"
