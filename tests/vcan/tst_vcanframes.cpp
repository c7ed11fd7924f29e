#include "vcanbench.h"

#include <QDateTime>

using Adapter = AbstractCanAdapter;

namespace {
struct Example
{
    QString name;
    CAN::CanMessage message;
    QString text; ///< as can-utils write it
};

CAN::CanMessage makeMessage(quint32 id, const QByteArray &data, bool ext = false)
{
    CAN::CanMessage message;
    message.id = id;
    message.ext = ext;
    message.length = static_cast<quint8>(data.size());
    std::copy(data.begin(), data.end(), message.data);
    return message;
}

std::vector<Example> classicExamples()
{
    CAN::CanMessage remote = makeMessage(0x701, {});
    remote.rtr = true;
    CAN::CanMessage longRemote = makeMessage(0x1BCDEF01, QByteArray(5, '\0'), true);
    longRemote.rtr = true;
    return {
        {QStringLiteral("no data"), makeMessage(0, {}), QStringLiteral("000#")},
        {QStringLiteral("eight bytes"), makeMessage(0x7FF, QByteArray::fromHex("00017F80FEFF0000")),
         QStringLiteral("7FF#00017F80FEFF0000")},
        {QStringLiteral("extended"), makeMessage(0x1FFFFFFF, "A", true), QStringLiteral("1FFFFFFF#41")},
        {QStringLiteral("small extended"), makeMessage(0x12, "A", true), QStringLiteral("00000012#41")},
        {QStringLiteral("remote"), remote, QStringLiteral("701#R")},
        {QStringLiteral("extended remote with a length"), longRemote, QStringLiteral("1BCDEF01#R5")},
    };
}

std::vector<Example> fdExamples()
{
    // The kernel marks each of them by 4; the other bits are bit rate switch and error state indicator.
    constexpr int fdMark = 4;
    std::vector<Example> examples;
    for (int flags = 0; flags < 4; ++flags) {
        CAN::CanMessage message = makeMessage(0x123, "AB");
        message.fd = true;
        message.brs = (flags & 1) != 0;
        message.extraFlag = (flags & 2) != 0;
        examples.push_back({QStringLiteral("CAN FD, flags %1").arg(flags), message,
                            QStringLiteral("123##%1").arg(flags | fdMark) + QStringLiteral("4142")});
    }
    for (const int length : {0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}) {
        CAN::CanMessage message = makeMessage(0x1ABCDEF0, QByteArray(length, 'Z'), true);
        message.fd = true;
        examples.push_back({QStringLiteral("CAN FD, %1 bytes").arg(length), message,
                            QStringLiteral("1ABCDEF0##4") + QStringLiteral("5A").repeated(length)});
    }
    return examples;
}

std::vector<Example> allExamples()
{
    std::vector<Example> all = classicExamples();
    const std::vector<Example> fd = fdExamples();
    all.insert(all.end(), fd.begin(), fd.end());
    return all;
}

QStringList texts(const std::vector<Example> &examples)
{
    QStringList list;
    for (const Example &example : examples)
        list.append(example.text);
    return list;
}

QList<CAN::CanMessage> messages(const std::vector<Example> &examples)
{
    QList<CAN::CanMessage> list;
    for (const Example &example : examples)
        list.append(example.message);
    return list;
}

/// A file as candump writes it, with a frame each millisecond.
bool record(QTemporaryFile &file, const std::vector<Example> &examples)
{
    if (!file.open())
        return false;
    int number = 0;
    for (const Example &example : examples) {
        file.write("(1000." + QByteArray::number(1000 * ++number).rightJustified(6, '0') + ") vcan1 "
                   + example.text.toLatin1() + '\n');
    }
    return file.flush();
}

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
    for (Example &example : allExamples()) {
        QCOMPARE(adapter->write(&example.message), Adapter::WriteOk);
        seen.append(dump.frame());
    }
    QCOMPARE(seen, texts(allExamples()));
}

void TestVcanFrames::whatCansendSendsArrives_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    QTest::addColumn<QString>("text");
    for (const Example &example : classicExamples())
        QTest::newRow(qPrintable(example.name)) << example.message << example.text;
    const Example longest = fdExamples().back();
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
    for (Example &example : allExamples()) {
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
    QVERIFY(record(file, allExamples()));
    const Vcan::AdapterPtr adapter = Vcan::makeAdapter("vcan1");
    AdapterRecord received(*adapter);
    QVERIFY(Vcan::start(*adapter));
    QVERIFY(Vcan::run(QStringLiteral("canplayer -I ") + file.fileName()));
    QVERIFY(received.waitForFrames(allExamples().size()));
    QVERIFY(received.frames() == messages(allExamples()));
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
