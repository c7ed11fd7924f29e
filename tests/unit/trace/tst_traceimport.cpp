#include "captures.h"
#include "traceimport.h"

#include <QBuffer>
#include <QtTest>

Q_DECLARE_METATYPE(ByteOrder::Order)
Q_DECLARE_METATYPE(TraceImport::Outcome)

namespace {
using Builder = CaptureBuilder;

/// A capture brought into a store, and what was told meanwhile.
class Import
{
public:
    explicit Import(const QByteArray &capture, const std::function<void(Import &)> &onProgress = {},
                    qint64 progressInterval = 100)
    {
        QByteArray bytes = capture;
        QBuffer device(&bytes);
        device.open(QIODevice::ReadOnly);
        run(device, onProgress, progressInterval);
    }
    explicit Import(QIODevice &device, const std::function<void(Import &)> &onProgress = {})
    {
        run(device, onProgress);
    }

    void run(QIODevice &device, const std::function<void(Import &)> &onProgress, qint64 progressInterval = 100)
    {
        TraceImport::Listener listener;
        listener.begins = [this] {
            store.clear();
            ++begins;
        };
        listener.progressed = [this, onProgress](double percent) {
            progress.append(percent);
            if (onProgress)
                onProgress(*this);
        };
        listener.progressInterval = progressInterval;
        listener.storageFailed = [](const TraceStore::Failure &) {};
        store.append(CAN::CanRxMessage());
        result = TraceImport(store, cancelled, listener).run(device);
    }

    /// "seconds.microseconds id [notes]" of each frame.
    QStringList frames() const
    {
        QStringList texts;
        for (unsigned i = 0; i < store.count(); ++i) {
            CAN::CanRxMessage frame;
            store.read(frame, i);
            QString text = QStringLiteral("%1.%2 %3")
                               .arg(frame.timeStamp.seconds)
                               .arg(frame.timeStamp.microseconds, 6, 10, QLatin1Char('0'))
                               .arg(frame.message.id, 0, 16);
            if (!store.notes(i).isEmpty())
                text += QLatin1Char(' ') + store.notes(i).join(QLatin1Char('|'));
            texts.append(text);
        }
        return texts;
    }

    TraceStore store{TraceStore::Limits()};
    std::atomic<bool> cancelled = false;
    TraceImport::Result result;
    QVector<double> progress;
    int begins = 0;
};

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList result;
    for (const char *text : list)
        result.append(QString::fromUtf8(text));
    return result;
}

QByteArray manyFrames(int count)
{
    const Builder make;
    QByteArray capture = make.section() + make.interface();
    for (int i = 0; i < count; ++i)
        capture += make.packet(static_cast<quint64>(i), Builder::frame(static_cast<quint32>(i)));
    return capture;
}

/// Without an end, as a device may be.
class EndlessDevice : public QIODevice
{
public:
    explicit EndlessDevice(const QByteArray &begin, char rest)
        : m_begin(begin)
        , m_rest(rest)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    qint64 bytesGiven() const { return m_given; }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        std::fill(data, data + size, m_rest);
        if (m_given < m_begin.size())
            std::copy(m_begin.begin() + m_given, m_begin.begin() + std::min<qint64>(m_begin.size(), m_given + size),
                      data);
        m_given += size;
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }
    bool isSequential() const override { return true; }

private:
    QByteArray m_begin;
    char m_rest;
    qint64 m_given = 0;
};

class FailingDevice : public QBuffer
{
public:
    explicit FailingDevice(const QByteArray &begin)
    {
        setData(begin);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const qint64 got = QBuffer::readData(data, size);
        return got > 0 ? got : -1;
    }
};
} // namespace

class TestTraceImport : public QObject
{
    Q_OBJECT

private slots:
    void capturesGiveTheirFrames_data();
    void capturesGiveTheirFrames();
    void capturesOfEitherByteOrder_data();
    void capturesOfEitherByteOrder();
    void pcapOfEachKind_data();
    void pcapOfEachKind();
    void whatIsNoCaptureIsRefused_data();
    void whatIsNoCaptureIsRefused();
    void damageKeepsWhatStandsBefore_data();
    void damageKeepsWhatStandsBefore();
    void everyTruncationKeepsTheWholeBlocks_data();
    void everyTruncationKeepsTheWholeBlocks();
    void packetsThatAreNoFramesAreCounted();
    void unknownBlocksMayBeOfAnyLength();
    void endlessBlockTakesNoMemory();
    void interfacesAreBounded();
    void notesAreBounded();
    void lateNotesBelongToTheFrameBefore();
    void commentsOnStatisticsOfOthersAreNoNotes();
    void readErrorIsTold();
    void progressGoesFromTheBeginToTheEnd();
    void progressIsToldNoMoreOftenThanWanted();
    void cancelledImportStopsEarly();
    void cancelledImportStopsWithinABlock();
    void fullStoreEndsTheImport();
    void storeIsClearedOnceAndOnlyForACapture();
};

void TestTraceImport::capturesGiveTheirFrames_data()
{
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<QStringList>("frames");

    const Builder make;
    const Builder big(ByteOrder::Big);
    const QByteArray start = make.section() + make.interface();
    const auto packet = [&make](quint32 id, quint64 ticks = 1000000, const QByteArray &options = {}) {
        return make.packet(ticks, Builder::frame(id), options);
    };
    const QByteArray end = make.option(0, {});
    const QByteArray unknownOption = make.option(2988, "anything");

    QTest::newRow("nothing but a section") << make.section() << QStringList();
    QTest::newRow("no packets") << start << QStringList();
    QTest::newRow("one frame") << start + packet(1) << texts({"1.000000 1"});
    QTest::newRow("comments") << start + packet(1, 0, make.comment("one") + make.comment("two") + end)
                              << texts({"0.000000 1 one|two"});
    QTest::newRow("comment without an end of the options")
        << start + packet(1, 0, make.comment("one")) << texts({"0.000000 1 one"});
    QTest::newRow("comment behind the end of the options")
        << start + packet(1, 0, end + make.comment("one")) << texts({"0.000000 1"});
    QTest::newRow("comment behind an option that nobody knows")
        << start + packet(1, 0, unknownOption + make.comment("one") + end) << texts({"0.000000 1 one"});
    QTest::newRow("option longer than its block")
        << start + packet(1, 0, make.u16(1) + make.u16(500)) + packet(2) << texts({"0.000000 1", "1.000000 2"});
    QTest::newRow("comment in UTF-8") << start + packet(1, 0, make.comment("Prüfstand"))
                                      << texts({"0.000000 1 Prüfstand"});
    QTest::newRow("block that nobody knows")
        << start + make.block(0xBAD, "12345678") + packet(1) << texts({"1.000000 1"});
    QTest::newRow("empty block that nobody knows")
        << start + make.block(0xBAD, {}) + packet(1) << texts({"1.000000 1"});
    QTest::newRow("interfaces with clocks of their own")
        << make.section() + make.interface(Builder::can, make.option(9, "\x09") + end)
            + make.interface(Builder::can, make.option(9, "\x81") + end)
            + make.interface(Builder::can, make.option(14, make.u64(static_cast<quint64>(-3))) + end)
            + make.packet(1500000000, Builder::frame(1)) + make.packet(3, Builder::frame(2), {}, 1)
            + make.packet(500000, Builder::frame(3), {}, 2)
        << texts({"1.500000 1", "1.500000 2", "-3.500000 3"});
    QTest::newRow("interface options of a wrong size are not believed")
        << make.section() + make.interface(Builder::can, make.option(9, "\3\3") + make.option(14, "1234")) + packet(1)
        << texts({"1.000000 1"});
    QTest::newRow("interface in the middle")
        << start + packet(1) + make.interface() + make.packet(0, Builder::frame(2), {}, 1)
        << texts({"1.000000 1", "0.000000 2"});
    QTest::newRow("interfaces of another section do not count") << start + packet(1) + make.section()
            + make.interface(Builder::can, make.option(9, QByteArray(1, '\0')))
            + packet(2, 2) << texts({"1.000000 1", "2.000000 2"});
    QTest::newRow("section of the other byte order") << start + packet(1) + big.section() + big.interface()
            + big.packet(2000000, Builder::frame(2)) << texts({"1.000000 1", "2.000000 2"});
    QTest::newRow("simple packet has the time of the frame before") << start + make.simplePacket(Builder::frame(1), 9)
            + packet(2) + make.simplePacket(Builder::frame(3), 9) << texts({"0.000000 1", "1.000000 2", "1.000000 3"});
    QTest::newRow("obsolete packet") << start + make.obsoletePacket(1000000, Builder::frame(1), make.comment("old"))
                                     << texts({"1.000000 1 old"});
    QTest::newRow("times beyond 2038") << start + packet(1, 5000000000000000) << texts({"2147483647.999999 1"});
}

void TestTraceImport::capturesGiveTheirFrames()
{
    QFETCH(QByteArray, capture);
    const Import import(capture);
    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.result.otherPackets, quint64(0));
    QTEST(import.frames(), "frames");
}

void TestTraceImport::capturesOfEitherByteOrder_data()
{
    QTest::addColumn<ByteOrder::Order>("order");
    QTest::newRow("little") << ByteOrder::Little;
    QTest::newRow("big") << ByteOrder::Big;
}

void TestTraceImport::capturesOfEitherByteOrder()
{
    QFETCH(ByteOrder::Order, order);
    const Builder make(order);
    const QByteArray options = make.option(9, "\3") + make.option(14, make.u64(10)) + make.option(0, {});

    const Import import(make.section(make.option(4, "someone")) + make.interface(Builder::can, options)
                        + make.packet(0x100000001, Builder::frame(0x123), make.comment("a note"))
                        + make.obsoletePacket(5, Builder::frame(0x124)) + make.simplePacket(Builder::frame(0x125), 9));

    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.frames(), texts({"4294977.297000 123 a note", "10.005000 124", "10.005000 125"}));
}

void TestTraceImport::pcapOfEachKind_data()
{
    QTest::addColumn<ByteOrder::Order>("order");
    QTest::addColumn<quint32>("magic");
    QTest::addColumn<quint32>("fraction");

    QTest::newRow("little, microseconds") << ByteOrder::Little << 0xA1B2C3D4U << 500000U;
    QTest::newRow("little, nanoseconds") << ByteOrder::Little << 0xA1B23C4DU << 500000999U;
    QTest::newRow("big, microseconds") << ByteOrder::Big << 0xA1B2C3D4U << 500000U;
    QTest::newRow("big, nanoseconds") << ByteOrder::Big << 0xA1B23C4DU << 500000999U;
}

void TestTraceImport::pcapOfEachKind()
{
    QFETCH(ByteOrder::Order, order);
    QFETCH(quint32, magic);
    QFETCH(quint32, fraction);
    const Builder make(order);

    const Import import(make.pcap(magic) + make.pcapPacket(7, fraction, Builder::frame(1))
                        + make.pcapPacket(static_cast<quint32>(-7), fraction, Builder::frame(2)));

    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.frames(), texts({"7.500000 1", "-7.500000 2"}));
}

void TestTraceImport::whatIsNoCaptureIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<TraceImport::Outcome>("outcome");

    const Builder make;
    const QByteArray section = make.section();
    const auto with = [](QByteArray bytes, int place, char byte) {
        bytes[place] = byte;
        return bytes;
    };
    QTest::newRow("empty") << QByteArray() << TraceImport::NoCapture;
    QTest::newRow("one byte") << QByteArray("\n") << TraceImport::NoCapture;
    QTest::newRow("text") << QByteArray(100, 'a') << TraceImport::NoCapture;
    QTest::newRow("zeros") << QByteArray(100, '\0') << TraceImport::NoCapture;
    QTest::newRow("section cut off") << section.left(27) << TraceImport::NoCapture;
    QTest::newRow("section without its byte order") << with(section, 8, 0) << TraceImport::NoCapture;
    QTest::newRow("section of another version") << make.section({}, 2) << TraceImport::NoCapture;
    QTest::newRow("section too short for itself") << with(section, 4, 24) << TraceImport::NoCapture;
    QTest::newRow("section of an odd length") << with(section, 4, 29) << TraceImport::NoCapture;
    QTest::newRow("section that says two lengths") << with(section, 24, 32) << TraceImport::NoCapture;
    QTest::newRow("section that is too long") << with(section, 7, 127) << TraceImport::NoCapture;
    QTest::newRow("pcap cut off") << make.pcap(0xA1B2C3D4U).left(23) << TraceImport::NoCapture;
    QTest::newRow("pcap of another kind") << make.pcap(0xA1B2CD34U) << TraceImport::NoCapture;
    QTest::newRow("pcap of another network") << make.pcap(0xA1B2C3D4U, Builder::ethernet) << TraceImport::NotCan;
    QTest::newRow("pcapng of another network")
        << section + make.interface(Builder::ethernet) + make.packet(0, QByteArray(60, 'e')) << TraceImport::NotCan;
    QTest::newRow("damaged before the first frame")
        << section + make.interface() + QByteArray(12, '\0') << TraceImport::Damaged;
}

void TestTraceImport::whatIsNoCaptureIsRefused()
{
    QFETCH(QByteArray, bytes);
    const Import import(bytes);
    QTEST(import.result.outcome, "outcome");
    QVERIFY(!import.result.isGood());
    QCOMPARE(import.begins, 0);
}

void TestTraceImport::damageKeepsWhatStandsBefore_data()
{
    QTest::addColumn<QByteArray>("damage");
    QTest::addColumn<TraceImport::Outcome>("outcome");

    const Builder make;
    const QByteArray whole = make.packet(0, Builder::frame(9));
    const auto with = [&whole](int place, char byte) {
        QByteArray bytes = whole + whole;
        bytes[place] = byte;
        return bytes;
    };
    const auto head = [&make](quint32 type, quint32 length) { return make.u32(type) + make.u32(length); };
    QTest::newRow("zeros") << QByteArray(64, '\0') << TraceImport::Damaged;
    QTest::newRow("length below the least") << head(6, 8) + QByteArray(64, 'x') << TraceImport::Damaged;
    QTest::newRow("length of 0") << head(6, 0) << TraceImport::Damaged;
    QTest::newRow("length not of whole words") << with(4, whole[4] + 1) << TraceImport::Damaged;
    QTest::newRow("two lengths") << with(whole.size() - 4, 'x') << TraceImport::Damaged;
    QTest::newRow("packet longer than its block") << with(20, 30) << TraceImport::Damaged;
    QTest::newRow("packet as long as can be told") << with(23, '\xff') << TraceImport::Damaged;
    QTest::newRow("block too long to be believed") << head(6, 0x01000004) << TraceImport::Damaged;
    QTest::newRow("longest block, not there") << head(6, 0x01000000) << TraceImport::CutOff;
    QTest::newRow("longest unknown block, not there") << head(0xBAD, 0xFFFFFFFC) << TraceImport::CutOff;
    QTest::newRow("unknown block with two lengths")
        << head(0xBAD, 16) + make.u32(0) + make.u32(12) << TraceImport::Damaged;
    QTest::newRow("packet without room for its head") << make.block(6, QByteArray(16, '\0')) << TraceImport::Damaged;
    QTest::newRow("simple packet without room for its head") << make.block(3, {}) << TraceImport::Damaged;
    QTest::newRow("interface without room for its head") << make.block(1, "1234") << TraceImport::Damaged;
    QTest::newRow("section of another version") << make.section({}, 3) << TraceImport::Damaged;
    QTest::newRow("section cut off") << make.section().left(20) << TraceImport::CutOff;
    QTest::newRow("section with options, cut off")
        << make.section(make.comment("note")).left(30) << TraceImport::CutOff;
}

void TestTraceImport::damageKeepsWhatStandsBefore()
{
    QFETCH(QByteArray, damage);
    const Builder make;
    const Import import(make.section() + make.interface() + make.packet(1, Builder::frame(1)) + damage);
    QTEST(import.result.outcome, "outcome");
    QVERIFY(import.result.isGood());
    QCOMPARE(import.frames(), texts({"0.000001 1"}));
}

void TestTraceImport::everyTruncationKeepsTheWholeBlocks_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QList<QByteArray>>("packets");

    const Builder make;
    QTest::newRow("pcapng") << make.section() + make.interface()
                            << QList<QByteArray>{make.packet(0, Builder::frame(0)),
                                                 make.packet(0, Builder::frame(1), make.comment("a note")),
                                                 make.obsoletePacket(0, Builder::frame(2)),
                                                 make.simplePacket(Builder::frame(3), 9)};
    QTest::newRow("pcap") << make.pcap(0xA1B2C3D4)
                          << QList<QByteArray>{make.pcapPacket(0, 0, Builder::frame(0)),
                                               make.pcapPacket(0, 0, Builder::frame(1))};
}

void TestTraceImport::everyTruncationKeepsTheWholeBlocks()
{
    QFETCH(QByteArray, head);
    QFETCH(QList<QByteArray>, packets);
    QByteArray whole = head;
    for (int i = 0; i < packets.size(); ++i) {
        for (int bytes = 0; bytes < packets[i].size(); ++bytes) {
            const Import import(whole + packets[i].left(bytes));
            QCOMPARE(import.result.outcome, bytes == 0 ? TraceImport::Complete : TraceImport::CutOff);
            QCOMPARE(import.store.count(), static_cast<unsigned>(i));
        }
        whole += packets[i];
    }
    QCOMPARE(Import(whole).store.count(), static_cast<unsigned>(packets.size()));
}

void TestTraceImport::packetsThatAreNoFramesAreCounted()
{
    const Builder make;
    const QByteArray cut = Builder::frame(7).left(8);
    const Import import(make.section() + make.interface() + make.interface(Builder::ethernet)
                        + make.packet(0, Builder::frame(1)) + make.packet(0, Builder::frame(2), {}, 1)
                        + make.packet(0, Builder::frame(3), {}, 2) + make.packet(0, cut, make.comment("lost"))
                        + make.simplePacket(cut, 9) + make.packet(0, Builder::frame(4)));
    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.result.otherPackets, quint64(4));
    QCOMPARE(import.frames(), texts({"0.000000 1", "0.000000 4"}));
}

void TestTraceImport::unknownBlocksMayBeOfAnyLength()
{
    const Builder make;
    const QByteArray large = make.block(0xBAD, QByteArray(17 << 20, 'x'));
    const Import import(make.section() + make.interface() + large + make.packet(0, Builder::frame(1)));
    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.frames(), texts({"0.000000 1"}));
}

void TestTraceImport::endlessBlockTakesNoMemory()
{
    const Builder make;
    EndlessDevice device(make.section() + make.interface() + make.u32(0xBAD) + make.u32(0xFFFFFFFC), 'x');
    const Import import(device);
    QCOMPARE(import.result.outcome, TraceImport::Damaged);
    QVERIFY(device.bytesGiven() > 0xFFFFFFFCLL);
    QFile status(QStringLiteral("/proc/self/status"));
    QVERIFY(status.open(QIODevice::ReadOnly));
    const QRegularExpression peak(QStringLiteral("VmHWM:\\s*(\\d+) kB"));
    const QString kilobytes = peak.match(QString::fromLatin1(status.readAll())).captured(1);
    QVERIFY2(kilobytes.toInt() > 0 && kilobytes.toInt() < 2000000, qPrintable(kilobytes));
}

void TestTraceImport::interfacesAreBounded()
{
    const Builder make;
    QByteArray capture = make.section();
    for (int i = 0; i < 65537; ++i)
        capture += make.interface();
    const Import import(capture + make.packet(1, Builder::frame(1), {}, 65535)
                        + make.packet(2, Builder::frame(2), {}, 65536));
    QCOMPARE(import.frames(), texts({"0.000001 1"}));
    QCOMPARE(import.result.otherPackets, quint64(1));
}

void TestTraceImport::notesAreBounded()
{
    const Builder make;
    const QByteArray packet = make.packet(0, Builder::frame(1), make.comment(QByteArray(60000, 'n')));
    QByteArray capture = make.section() + make.interface();
    for (int i = 0; i < 1000; ++i)
        capture += packet;
    const Import import(capture);
    QCOMPARE(import.result.outcome, TraceImport::Complete);
    QCOMPARE(import.store.count(), 1000u);
    QVERIFY(import.result.notesLeftOut);
    unsigned withNotes = 0;
    for (unsigned i = 0; i < 1000; ++i)
        withNotes += import.store.notes(i).isEmpty() ? 0 : 1;
    QCOMPARE(withNotes, (64U << 20) / (2 * 60000 + 96));
}

void TestTraceImport::lateNotesBelongToTheFrameBefore()
{
    const Builder make;
    const Import import(make.section(make.option(4, "Kestrune")) + make.interface()
                        + make.statistics(make.comment("too early")) + make.packet(0, Builder::frame(1))
                        + make.statistics(make.comment("a") + make.comment("b"))
                        + make.packet(0, Builder::frame(2), make.comment("c")) + make.statistics(make.comment("d")));
    QCOMPARE(import.frames(), texts({"0.000000 1 a|b", "0.000000 2 c|d"}));
}

void TestTraceImport::commentsOnStatisticsOfOthersAreNoNotes()
{
    const Builder make;
    for (const QByteArray &application : {QByteArray(), make.option(4, "Kestrunes"), make.option(4, "estrune")}) {
        const Import import(make.section(application) + make.interface() + make.packet(0, Builder::frame(1))
                            + make.statistics(make.comment("counters")));
        QCOMPARE(import.frames(), texts({"0.000000 1"}));
    }
}

void TestTraceImport::readErrorIsTold()
{
    const Builder make;
    FailingDevice device(make.section() + make.interface() + make.packet(0, Builder::frame(1)));
    const Import import(device);
    QCOMPARE(import.result.outcome, TraceImport::ReadFailed);
    QVERIFY(!import.result.isGood());
}

void TestTraceImport::progressGoesFromTheBeginToTheEnd()
{
    const Import import(manyFrames(50000), {}, 0);
    QVERIFY(import.progress.size() > 10);
    QCOMPARE(import.progress.first(), 0.0);
    QCOMPARE(import.progress.last(), 100.0);
    QVERIFY(std::is_sorted(import.progress.begin(), import.progress.end()));
}

void TestTraceImport::progressIsToldNoMoreOftenThanWanted()
{
    constexpr qint64 anHour = 3600000;
    const Import import(manyFrames(50000), {}, anHour);
    QCOMPARE(import.progress, (QVector<double>{0.0, 100.0}));
}

void TestTraceImport::cancelledImportStopsEarly()
{
    const Import import(manyFrames(50000), [](Import &running) { running.cancelled = true; });
    QCOMPARE(import.result.outcome, TraceImport::Cancelled);
    QVERIFY(!import.result.isGood());
    QVERIFY(import.result.frames < 50000);
    QCOMPARE(import.progress, QVector<double>{0.0});
}

void TestTraceImport::cancelledImportStopsWithinABlock()
{
    const Builder make;
    EndlessDevice device(make.section() + make.interface() + make.u32(0xBAD) + make.u32(0xFFFFFFFC), 'x');
    const Import import(device, [](Import &running) { running.cancelled = true; });
    QCOMPARE(import.result.outcome, TraceImport::Cancelled);
    QVERIFY(device.bytesGiven() < (4 << 20));
}

void TestTraceImport::fullStoreEndsTheImport()
{
    TraceStore::Limits limits;
    limits.frames = 5000;
    TraceStore store(limits);
    QByteArray bytes = manyFrames(50000);
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    const std::atomic<bool> cancelled = false;
    int failures = 0;
    TraceImport::Listener listener;
    listener.begins = [] {};
    listener.progressed = [](double) {};
    listener.storageFailed = [&failures](const TraceStore::Failure &) { ++failures; };

    const TraceImport::Result result = TraceImport(store, cancelled, listener).run(device);

    QCOMPARE(result.outcome, TraceImport::StorageFailed);
    QCOMPARE(failures, 1);
    QCOMPARE(store.count(), 5000u);
    QVERIFY(result.position < static_cast<quint64>(bytes.size()));
}

void TestTraceImport::storeIsClearedOnceAndOnlyForACapture()
{
    const Import refused(QByteArray(100, 'a'));
    QCOMPARE(refused.begins, 0);
    QCOMPARE(refused.store.count(), 1u);
    const Import empty(Builder().section());
    QCOMPARE(empty.begins, 1);
    QCOMPARE(empty.store.count(), 0u);
    const Import many(manyFrames(10000));
    QCOMPARE(many.begins, 1);
    QCOMPARE(many.store.count(), 10000u);
}

QTEST_APPLESS_MAIN(TestTraceImport)
#include "tst_traceimport.moc"
