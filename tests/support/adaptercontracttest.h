#pragma once

#include "adaptercontract.h"

#include <QPointer>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// Keeps the frames and the errors of one adapter, from whichever thread they come. At its end it closes the adapter,
/// which could still be calling it.
class AdapterRecord
{
public:
    static constexpr std::chrono::seconds patience{10};

    explicit AdapterRecord(AbstractCanAdapter &adapter)
        : m_adapter(&adapter)
    {
        QObject::connect(
            &adapter, &AbstractCanAdapter::newCanMessage, &m_context,
            [this](CAN::CanRxMessage *message) { add(*message); }, Qt::DirectConnection);
        QObject::connect(
            &adapter, &AbstractCanAdapter::interfaceError, &m_context, [this] { ++m_errors; }, Qt::DirectConnection);
    }

    ~AdapterRecord()
    {
        if (m_adapter)
            m_adapter->close();
    }

    bool waitForFrames(std::size_t count) const
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, patience, [&] { return m_frames.size() >= count; });
    }
    std::vector<CAN::CanRxMessage> received() const
    {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }
    QList<CAN::CanMessage> frames() const
    {
        QList<CAN::CanMessage> messages;
        for (const CAN::CanRxMessage &frame : received())
            messages.append(frame.message);
        return messages;
    }
    int errors() const { return m_errors; }
    /// The thread of the latest frame.
    std::thread::id thread() const { return m_thread; }

private:
    void add(const CAN::CanRxMessage &message)
    {
        m_thread = std::this_thread::get_id();
        const std::lock_guard lock(m_mutex);
        m_frames.push_back(message);
        m_changed.notify_all();
    }

    Q_DISABLE_COPY(AdapterRecord)

    QPointer<AbstractCanAdapter> m_adapter;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<CAN::CanRxMessage> m_frames;
    std::atomic<int> m_errors{0};
    std::atomic<std::thread::id> m_thread{std::thread::id()};
    QObject m_context;
};

Q_DECLARE_METATYPE(CAN::CanMessage)

/// What every family of adapters owes its users. A family's test derives from this class, says how two adapters on one
/// bus are made, and adds what is particular to the family:
///
///     class TestMyAdapter : public AdapterContractTest
///     {
///         Q_OBJECT
///         Pair makePair() override { ... }
///     private slots:
///         ...
///     };
///
/// The test's target lists this header among its sources, for the sake of moc.
class AdapterContractTest : public QObject
{
    Q_OBJECT

protected:
    using Adapter = AbstractCanAdapter;

    struct Pair
    {
        std::unique_ptr<Adapter> first;
        std::unique_ptr<Adapter> second;
    };

    /// Two closed adapters that open on the same bus, on which nobody else sends.
    virtual Pair makePair() = 0;
    virtual bool supportsFd() const { return true; }

    static CAN::CanMessage frame(quint32 id, const QByteArray &data = {})
    {
        CAN::CanMessage message;
        message.id = id;
        message.length = static_cast<quint8>(data.size());
        std::copy(data.begin(), data.end(), message.data);
        return message;
    }
    static CAN::CanMessage fdFrame(quint32 id, const QByteArray &data = {}, bool brs = false, bool esi = false)
    {
        CAN::CanMessage message = frame(id, data);
        message.fd = true;
        message.brs = brs;
        message.extraFlag = esi;
        return message;
    }
    /// A frame whose data tells it from others.
    static CAN::CanMessage numbered(quint32 id, quint32 number)
    {
        return frame(id, QByteArray::number(number).rightJustified(8, '0'));
    }

    static bool start(Adapter &adapter)
    {
        if (adapter.open() != Adapter::OpenOk)
            return false;
        adapter.setRunning(true);
        return adapter.getRunning();
    }
    static bool start(const Pair &pair) { return start(*pair.first) && start(*pair.second); }
    static void useFd(const Pair &pair)
    {
        pair.first->setCanAdapterOption(Adapter::OptionUseCanFd, true);
        pair.second->setCanAdapterOption(Adapter::OptionUseCanFd, true);
    }
    static Adapter::WriteResult write(Adapter &adapter, CAN::CanMessage message) { return adapter.write(&message); }

    /// Sends a frame back and forth: what was sent before it has arrived after that.
    static bool settle(const Pair &pair, const AdapterRecord &first, const AdapterRecord &second)
    {
        const std::size_t atFirst = first.received().size();
        const std::size_t atSecond = second.received().size();
        return write(*pair.first, frame(0x7FF)) == Adapter::WriteOk && second.waitForFrames(atSecond + 1)
            && write(*pair.second, frame(0x7FF)) == Adapter::WriteOk && first.waitForFrames(atFirst + 1);
    }

private slots:
    void collectionsOptionsAreNoneOfTheFormsOptions();
    void settingsSurviveTheirBytes();
    void freshAdapterIsClosed();
    void closedAdapterRefusesToWrite();
    void startedAdapterRunsUntilItIsClosed();
    void frameArrivesUnchanged_data();
    void frameArrivesUnchanged();
    void framesArriveInOrderAndAreCounted();
    void frameCarriesTheTimeOfItsReception();
    void framesDoNotComeOnTheCallersThread();
    void severalThreadsMayWrite();
    void unusableFrameIsRefused_data();
    void unusableFrameIsRefused();
    void classicAdapterRefusesCanFd();
    void listenOnlyAdapterReceivesAndDoesNotSend_data();
    void listenOnlyAdapterReceivesAndDoesNotSend();
    void ownFrameDoesNotComeBack();
    void ownFrameComesBackIfWanted();
    void closedAdapterReceivesNothing();
    void closingIsHarmlessAtAnyTime();
    void closingWhileFramesArriveIsSafe();
    void closingIsNoInterfaceError();
    void adapterOpensAgain();
    void countersStartAgainWithOpen();
    void runningChangeIsToldOnce();
};

inline void AdapterContractTest::collectionsOptionsAreNoneOfTheFormsOptions()
{
    const Pair pair = makePair();
    const QList<Adapter::AdapterOption> options = pair.first->getSupportedOptions();
    QVERIFY(!options.isEmpty());
    for (const Adapter::AdapterOption option :
         {Adapter::OptionAdapterId, Adapter::OptionActive, Adapter::OptionPrimary})
        QVERIFY(!options.contains(option));
    for (const Adapter::AdapterOption option : options)
        QCOMPARE(options.count(option), 1);
}

inline void AdapterContractTest::settingsSurviveTheirBytes()
{
    const Pair pair = makePair();
    pair.first->setCanAdapterOption(Adapter::OptionDescription, QStringLiteral("gearbox"));
    pair.first->setCanAdapterOption(Adapter::OptionForcedEcho, true);
    QVERIFY(pair.second->restoreValues(pair.first->getValuesAsByteArray()));
    QCOMPARE(pair.second->getCanAdapterOption(Adapter::OptionDescription).toString(), QStringLiteral("gearbox"));
    for (const Adapter::AdapterOption option : pair.first->getSupportedOptions()) {
        if (option != Adapter::OptionAdapterType && option != Adapter::OptionDeviceName)
            QCOMPARE(pair.second->getCanAdapterOption(option), pair.first->getCanAdapterOption(option));
    }
}

inline void AdapterContractTest::freshAdapterIsClosed()
{
    const Pair pair = makePair();
    QVERIFY(!pair.first->getRunning());
    QVERIFY(pair.first->errorText().isEmpty());
    QCOMPARE(pair.first->framesReceived() + pair.first->framesSent() + pair.first->framesLost(), quint64(0));
}

inline void AdapterContractTest::closedAdapterRefusesToWrite()
{
    const Pair pair = makePair();
    QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteNotOpen);
    QCOMPARE(pair.first->framesLost(), quint64(1));
    QVERIFY(start(*pair.first));
    pair.first->close();
    QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteNotOpen);
    QCOMPARE(pair.first->framesSent(), quint64(0));
}

inline void AdapterContractTest::startedAdapterRunsUntilItIsClosed()
{
    const Pair pair = makePair();
    QCOMPARE(pair.first->open(), int(Adapter::OpenOk));
    pair.first->setRunning(true);
    QVERIFY(pair.first->getRunning());
    QVERIFY(pair.first->errorText().isEmpty());
    pair.first->close();
    QVERIFY(!pair.first->getRunning());
}

inline void AdapterContractTest::frameArrivesUnchanged_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    const QByteArray eight("\x00\x01\x02\x7F\x80\xFE\xFF\x00", 8);
    QTest::newRow("no data") << frame(0);
    QTest::newRow("largest standard id, eight bytes") << frame(0x7FF, eight);
    CAN::CanMessage extended = frame(0x1FFFFFFF, eight.left(3));
    extended.ext = true;
    QTest::newRow("largest extended id") << extended;
    extended.id = 0x123;
    QTest::newRow("small extended id") << extended;
    CAN::CanMessage remote = frame(0x701);
    remote.rtr = true;
    remote.length = 1;
    QTest::newRow("remote") << remote;
    remote.ext = true;
    remote.length = 8;
    QTest::newRow("extended remote, eight bytes") << remote;
    if (!supportsFd())
        return;
    for (const int length : {0, 1, 8, 12, 16, 20, 24, 32, 48, 64})
        QTest::newRow(qPrintable(QStringLiteral("CAN FD, %1 bytes").arg(length)))
            << fdFrame(1, QByteArray(length, 'x'));
    QTest::newRow("bit rate switch") << fdFrame(0x123, eight, true);
    QTest::newRow("error state indicator") << fdFrame(0x123, eight, false, true);
    CAN::CanMessage all = fdFrame(0x1FFFFFFF, QByteArray(64, '\xFF'), true, true);
    all.ext = true;
    QTest::newRow("everything") << all;
}

inline void AdapterContractTest::frameArrivesUnchanged()
{
    QFETCH(CAN::CanMessage, message);
    const Pair pair = makePair();
    if (supportsFd())
        useFd(pair);
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    QCOMPARE(write(*pair.first, message), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    QVERIFY(record.received().front().message == message);
}

inline void AdapterContractTest::framesArriveInOrderAndAreCounted()
{
    constexpr quint32 count = 2000;
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    QList<CAN::CanMessage> sent;
    for (quint32 number = 0; number < count; ++number) {
        sent.append(numbered(0x100, number));
        QCOMPARE(write(*pair.first, sent.last()), Adapter::WriteOk);
    }
    QVERIFY(record.waitForFrames(count));
    QVERIFY(record.frames() == sent);
    QCOMPARE(pair.first->framesSent(), quint64(count));
    QCOMPARE(pair.second->framesReceived(), quint64(count));
    QCOMPARE(pair.first->framesReceived() + pair.second->framesSent(), quint64(0));
    QCOMPARE(pair.first->framesLost() + pair.second->framesLost(), quint64(0));
}

inline void AdapterContractTest::frameCarriesTheTimeOfItsReception()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    for (quint32 number = 0; number < 2; ++number) {
        QCOMPARE(write(*pair.first, numbered(1, number)), Adapter::WriteOk);
        QVERIFY(record.waitForFrames(number + 1));
    }
    const CanTimeStamp early = record.received().at(0).timeStamp;
    const CanTimeStamp late = record.received().at(1).timeStamp;
    for (const CanTimeStamp stamp : {early, late}) {
        QVERIFY(stamp.seconds > 0);
        QVERIFY(stamp.microseconds >= 0 && stamp.microseconds < 1000000);
    }
    const CanTimeStamp distance = early.timeDifference(late);
    QVERIFY(distance.seconds >= 0 && distance.microseconds >= 0 && distance.seconds < 60);
}

inline void AdapterContractTest::framesDoNotComeOnTheCallersThread()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    QVERIFY(record.thread() != std::this_thread::get_id());
}

inline void AdapterContractTest::severalThreadsMayWrite()
{
    constexpr quint32 count = 300;
    constexpr quint32 threads = 3;
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    std::vector<std::thread> writers;
    for (quint32 id = 0; id < threads; ++id) {
        writers.emplace_back([&pair, id] {
            for (quint32 number = 0; number < count; ++number)
                write(*pair.first, numbered(id, number));
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    QVERIFY(record.waitForFrames(count * threads));
    quint32 next[threads] = {};
    const QList<CAN::CanMessage> messages = record.frames();
    for (const CAN::CanMessage &message : messages) {
        QVERIFY(message.id < threads);
        QVERIFY(message == numbered(message.id, next[message.id]++));
    }
    QCOMPARE(pair.first->framesSent(), quint64(count * threads));
}

inline void AdapterContractTest::unusableFrameIsRefused_data()
{
    QTest::addColumn<CAN::CanMessage>("message");
    CAN::CanMessage message = frame(1);
    message.length = 9;
    QTest::newRow("nine classic bytes") << message;
    message.length = 255;
    QTest::newRow("255 bytes") << message;
    QTest::newRow("standard id of 12 bits") << frame(0x800);
    message = frame(0x20000000);
    message.ext = true;
    QTest::newRow("extended id of 30 bits") << message;
    message = frame(1);
    message.errorFrame = true;
    QTest::newRow("error report") << message;
    if (!supportsFd())
        return;
    QTest::newRow("a length that CAN FD does not have") << fdFrame(1, QByteArray(9, 'x'));
    message = fdFrame(1);
    message.length = 65;
    QTest::newRow("longer than CAN FD") << message;
    message = fdFrame(1);
    message.rtr = true;
    QTest::newRow("remote frame of CAN FD") << message;
}

inline void AdapterContractTest::unusableFrameIsRefused()
{
    QFETCH(CAN::CanMessage, message);
    const Pair pair = makePair();
    if (supportsFd())
        useFd(pair);
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    QCOMPARE(write(*pair.first, message), Adapter::WriteInvalidFrame);
    QCOMPARE(pair.first->framesLost(), quint64(1));
    QCOMPARE(pair.first->framesSent(), quint64(0));
    QCOMPARE(write(*pair.first, frame(0x7FF)), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(record.received().front().message.id, 0x7FFu);
}

inline void AdapterContractTest::classicAdapterRefusesCanFd()
{
    const Pair pair = makePair();
    pair.first->setCanAdapterOption(Adapter::OptionUseCanFd, false);
    QVERIFY(start(*pair.first));
    QCOMPARE(write(*pair.first, fdFrame(1)), Adapter::WriteInvalidFrame);
    QCOMPARE(pair.first->framesLost(), quint64(1));
}

inline void AdapterContractTest::listenOnlyAdapterReceivesAndDoesNotSend_data()
{
    QTest::addColumn<bool>("byOption");
    QTest::newRow("option") << true;
    QTest::newRow("member") << false;
}

inline void AdapterContractTest::listenOnlyAdapterReceivesAndDoesNotSend()
{
    QFETCH(bool, byOption);
    const Pair pair = makePair();
    if (byOption)
        pair.first->setCanAdapterOption(Adapter::OptionListenOnly, true);
    else
        pair.first->listenOnly = true;
    AdapterRecord record(*pair.first);
    QVERIFY(start(pair));
    QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteListenOnly);
    QCOMPARE(pair.first->framesLost(), quint64(1));
    QCOMPARE(write(*pair.second, frame(2)), Adapter::WriteOk);
    QVERIFY(record.waitForFrames(1));
    QCOMPARE(pair.second->framesReceived(), quint64(0));
}

inline void AdapterContractTest::ownFrameDoesNotComeBack()
{
    const Pair pair = makePair();
    AdapterRecord first(*pair.first);
    AdapterRecord second(*pair.second);
    QVERIFY(start(pair));
    QVERIFY(settle(pair, first, second));
    QCOMPARE(first.received().size(), std::size_t(1));
    QCOMPARE(second.received().size(), std::size_t(1));
}

inline void AdapterContractTest::ownFrameComesBackIfWanted()
{
    const Pair pair = makePair();
    pair.first->setCanAdapterOption(Adapter::OptionForcedEcho, true);
    AdapterRecord first(*pair.first);
    AdapterRecord second(*pair.second);
    QVERIFY(start(pair));
    for (quint32 number = 0; number < 100; ++number)
        QCOMPARE(write(*pair.first, numbered(1, number)), Adapter::WriteOk);
    QVERIFY(first.waitForFrames(100));
    QVERIFY(second.waitForFrames(100));
    QVERIFY(first.frames() == second.frames());
    QVERIFY(first.thread() != std::this_thread::get_id());
    QCOMPARE(pair.first->framesReceived(), quint64(0));
    // A frame that was refused was not sent, and so does not come back.
    QCOMPARE(write(*pair.first, frame(0x800)), Adapter::WriteInvalidFrame);
    QCOMPARE(write(*pair.first, frame(2)), Adapter::WriteOk);
    QVERIFY(first.waitForFrames(101));
    QCOMPARE(first.frames().last().id, 2u);
}

inline void AdapterContractTest::closedAdapterReceivesNothing()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    pair.second->close();
    for (quint32 number = 0; number < 100; ++number)
        QCOMPARE(write(*pair.first, numbered(1, number)), Adapter::WriteOk);
    pair.first->close();
    QVERIFY(record.received().empty());
    QCOMPARE(pair.second->framesReceived(), quint64(0));
}

inline void AdapterContractTest::closingIsHarmlessAtAnyTime()
{
    const Pair pair = makePair();
    pair.first->close();
    QCOMPARE(pair.first->open(), int(Adapter::OpenOk));
    pair.first->close();
    pair.first->close();
    QVERIFY(start(*pair.first));
    pair.first->close();
    pair.first->close();
    QVERIFY(!pair.first->getRunning());
    QVERIFY(start(*pair.first)); // and the destructor closes it
}

inline void AdapterContractTest::closingWhileFramesArriveIsSafe()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(*pair.first));
    std::atomic<bool> enough{false};
    std::thread writer([&] {
        for (quint32 number = 0; !enough; ++number)
            write(*pair.first, numbered(1, number));
    });
    bool allStarted = true;
    for (int round = 0; round < 10 && allStarted; ++round) {
        const std::size_t before = record.received().size();
        allStarted = start(*pair.second) && record.waitForFrames(before + 10);
        pair.second->close();
        const std::size_t afterwards = record.received().size();
        allStarted = allStarted && record.received().size() == afterwards;
    }
    enough = true;
    writer.join();
    QVERIFY(allStarted);
    QCOMPARE(record.errors(), 0);
}

inline void AdapterContractTest::closingIsNoInterfaceError()
{
    const Pair pair = makePair();
    AdapterRecord first(*pair.first);
    AdapterRecord second(*pair.second);
    QVERIFY(start(pair));
    QVERIFY(settle(pair, first, second));
    pair.first->close();
    pair.second->close();
    QCoreApplication::processEvents();
    QCOMPARE(first.errors() + second.errors(), 0);
}

inline void AdapterContractTest::adapterOpensAgain()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    for (std::size_t round = 1; round <= 5; ++round) {
        QVERIFY(start(pair));
        QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteOk);
        QVERIFY(record.waitForFrames(round));
        pair.first->close();
        pair.second->close();
    }
    QCOMPARE(record.errors(), 0);
}

inline void AdapterContractTest::countersStartAgainWithOpen()
{
    const Pair pair = makePair();
    AdapterRecord record(*pair.second);
    QVERIFY(start(pair));
    QCOMPARE(write(*pair.first, frame(1)), Adapter::WriteOk);
    QCOMPARE(write(*pair.first, frame(0x800)), Adapter::WriteInvalidFrame);
    QVERIFY(record.waitForFrames(1));
    pair.first->close();
    pair.second->close();
    QCOMPARE(pair.first->framesSent(), quint64(1));
    QCOMPARE(pair.first->framesLost(), quint64(1));
    QCOMPARE(pair.second->framesReceived(), quint64(1));
    QVERIFY(start(pair));
    QCOMPARE(pair.first->framesSent() + pair.first->framesLost() + pair.second->framesReceived(), quint64(0));
}

inline void AdapterContractTest::runningChangeIsToldOnce()
{
    const Pair pair = makePair();
    QSignalSpy spy(pair.first.get(), &Adapter::runningChanged);
    QVERIFY(start(*pair.first));
    pair.first->setRunning(true);
    pair.first->close();
    pair.first->close();
    QCOMPARE(spy, (QList<QVariantList>{{true}, {false}}));
}
