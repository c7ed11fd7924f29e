#include "frameexamples.h"
#include "vcanbench.h"

#include <QDateTime>

using Adapter = AbstractCanAdapter;
using FrameExamples::Example;
using FrameExamples::makeMessage;

namespace {
qint64 microseconds(CanTimeStamp stamp)
{
    return qint64(stamp.seconds) * 1000000 + stamp.microseconds;
}
} // namespace

/// Frames of every kind between the adapter and programs of others.
class TestVcanFrames : public QObject
{
    Q_OBJECT

private slots:
    void candumpSeesWhatIsWritten();
    void whatCansendSendsArrives_data();
    void whatCansendSendsArrives();
    void pythonAnswers();
    void fullDuplexTestOfCanUtilsPasses();
    void recordingComesBackByCanplayer();
    void errorFrameIsHandedOnIfWanted();
    void errorFrameStaysBackOtherwise();
    void errorFramesMoveTheControllersState();
    void stampIsTheTimeOfReception();
    void systemStampCountsFromMidnight();
    void frameThatTheLinkCannotCarryIsRefused();
    void listenOnlyKeepsTheLinkQuiet();
};

void TestVcanFrames::candumpSeesWhatIsWritten()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    QVERIFY(Vcan::start(*adapter));
    Vcan::Candump dump("vcan0");
    QStringList seen;
    for (Example &example : FrameExamples::all()) {
        QCOMPARE(adapter->write(&example.message), Adapter::WriteOk);
        seen.append(dump.frame());
    }
    QCOMPARE(seen, FrameExamples::texts(FrameExamples::all()));
}

void TestVcanFrames::whatCansendSendsArrives_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    QTest::addColumn<QString>("text");
    for (const Example &example : FrameExamples::classic())
        QTest::newRow(qPrintable(example.name)) << example.message << example.text;
    const Example longest = FrameExamples::fd().back();
    QTest::newRow(qPrintable(longest.name)) << longest.message << longest.text;
}

void TestVcanFrames::whatCansendSendsArrives()
{
    QFETCH(CAN::CanMessage, message);
    QFETCH(QString, text);
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QVERIFY(Vcan::run(QStringLiteral("cansend vcan0 ") + text));
    QVERIFY(record.waitForFrames(1));
    QVERIFY(record.frames().first() == message);
}

void TestVcanFrames::pythonAnswers()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan1");
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    Vcan::Tool python(QStringLiteral("/usr/bin/python3 " VCAN_FOLDER "/python_echo.py vcan1"));
    QCOMPARE(python.line(), QStringLiteral("ready"));
    QList<CAN::CanMessage> answers;
    for (Example &example : FrameExamples::all()) {
        QCOMPARE(adapter->write(&example.message), Adapter::WriteOk);
        example.message.id ^= 1;
        answers.append(example.message);
    }
    QVERIFY(record.waitForFrames(std::size_t(answers.size())));
    QVERIFY(record.frames() == answers);
}

void TestVcanFrames::fullDuplexTestOfCanUtilsPasses()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    const auto sendBackIncremented = [&](CAN::CanRxMessage *received) {
        CAN::CanMessage answer = received->message;
        ++answer.id;
        for (int i = 0; i < answer.length; ++i)
            ++answer.data[i];
        adapter->write(&answer);
    };
    QObject::connect(adapter.get(), &Adapter::newCanMessage, adapter.get(), sendBackIncremented, Qt::DirectConnection);
    QVERIFY(Vcan::start(*adapter));
    Vcan::Tool test(QStringLiteral("canfdtest -g -l 500 vcan0"));
    QVERIFY(test.endsWithoutError());
    QVERIFY(adapter->framesReceived() >= 500);
    adapter->close();
}

void TestVcanFrames::recordingComesBackByCanplayer()
{
    QTemporaryFile file;
    QVERIFY(FrameExamples::record(file, "vcan1", FrameExamples::all()));
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan1");
    AdapterRecord received(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QVERIFY(Vcan::run(QStringLiteral("canplayer -I ") + file.fileName()));
    QVERIFY(received.waitForFrames(FrameExamples::all().size()));
    QVERIFY(received.frames() == FrameExamples::messages(FrameExamples::all()));
}

void TestVcanFrames::errorFrameIsHandedOnIfWanted()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    adapter->setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    Vcan::Candump dump("vcan0", ",0:0,#FFFFFFFF");
    QVERIFY(Vcan::run("cansend vcan0 20000088#0000000002000000"));
    QVERIFY(record.waitForFrames(1));
    CAN::CanMessage error = makeMessage(0x88, QByteArray::fromHex("0000000002000000"));
    error.errorFrame = true;
    QVERIFY(record.frames().first() == error);
    QCOMPARE(adapter->framesReceived(), quint64(1));
    QCOMPARE(dump.frame(), QStringLiteral("20000088#0000000002000000"));
}

void TestVcanFrames::errorFrameStaysBackOtherwise()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QVERIFY(Vcan::run("cansend vcan0 20000088#0000000002000000"));
    QVERIFY(Vcan::run("cansend vcan0 123#"));
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(record.frames().first().id, 0x123u);
    QCOMPARE(adapter->framesReceived(), quint64(1));
}

void TestVcanFrames::errorFramesMoveTheControllersState()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    adapter->setCanAdapterOption(Adapter::OptionLogErrorFrames, true);
    AdapterRecord record(*adapter);
    Vcan::StateRecord states(*adapter);
    QVERIFY(Vcan::start(*adapter));
    // Warning, passive, passive once more, bus off, restarted.
    for (const char *error : {"20000004#0008000000000000", "20000004#0020000000000000", "20000004#0010000000000000",
                              "20000040#0000000000000000", "20000100#0000000000000000"})
        QVERIFY(Vcan::run(QStringLiteral("cansend vcan0 ") + QLatin1String(error)));
    QVERIFY(record.waitForFrames(5));
    QCOMPARE(states.states(),
             (QList<CAN::CanState>{CAN::CanStateErrorWarning, CAN::CanStateErrorPassive, CAN::CanStateBusOff,
                                   CAN::CanStateErrorActive}));
    QVERIFY(states.entries().at(0).second == record.received().at(0).timeStamp);
    QVERIFY(states.entries().at(2).second == record.received().at(3).timeStamp);
}

void TestVcanFrames::stampIsTheTimeOfReception()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    QVERIFY(Vcan::run("cansend vcan0 123#"));
    const qint64 after = QDateTime::currentMSecsSinceEpoch() + 1;
    QVERIFY(record.waitForFrames(1));
    const qint64 stamp = microseconds(record.received().front().timeStamp);
    QVERIFY(stamp >= before * 1000 && stamp <= after * 1000);
}

void TestVcanFrames::systemStampCountsFromMidnight()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    adapter->setCanAdapterOption(Adapter::OptionSystemTimestamp, true);
    AdapterRecord record(*adapter);
    QVERIFY(Vcan::start(*adapter));
    const int before = QTime::currentTime().msecsSinceStartOfDay();
    QVERIFY(Vcan::run("cansend vcan0 123#"));
    QVERIFY(record.waitForFrames(1));
    const int after = QTime::currentTime().msecsSinceStartOfDay();
    const int stamp = record.received().front().timeStamp.toQTime().msecsSinceStartOfDay();
    QVERIFY(record.received().front().timeStamp.seconds < 24 * 60 * 60);
    QVERIFY(after < before || (stamp >= before && stamp <= after)); // midnight may pass in between
}

void TestVcanFrames::frameThatTheLinkCannotCarryIsRefused()
{
    QVERIFY(Vcan::run("ip link add vcan9 type vcan") && Vcan::run("ip link set vcan9 mtu 16 up"));
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan9");
    // CAN FD was asked for, which the link has not.
    QCOMPARE(adapter->open(), int(Adapter::OpenOtherSettings));
    adapter->setRunning(true);
    QCOMPARE(adapter->getCanAdapterOption(Adapter::OptionUseCanFd), QVariant(false));
    CAN::CanMessage message = makeMessage(1, "A");
    message.fd = true;
    QCOMPARE(adapter->write(&message), Adapter::WriteInvalidFrame);
    QCOMPARE(adapter->framesLost(), quint64(1));
    message.fd = false;
    QCOMPARE(adapter->write(&message), Adapter::WriteOk);
    adapter->close();
    QVERIFY(Vcan::run("ip link del vcan9"));
}

void TestVcanFrames::listenOnlyKeepsTheLinkQuiet()
{
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan0");
    adapter->setCanAdapterOption(Adapter::OptionListenOnly, true);
    QVERIFY(Vcan::start(*adapter));
    Vcan::Candump dump("vcan0");
    CAN::CanMessage message = makeMessage(0x111, "A");
    QCOMPARE(adapter->write(&message), Adapter::WriteListenOnly);
    QVERIFY(Vcan::run("cansend vcan0 222#"));
    QCOMPARE(dump.frame(), QStringLiteral("222#"));
}

QTEST_GUILESS_MAIN(TestVcanFrames)
#include "tst_vcanframes.moc"
