#pragma once

#include "adaptercontract.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// What one or several fakes were asked, in order, one line a call. Outlives the adapters that write into it, so
/// that a test sees what happened to one that is gone. Safe from any thread.
class CallRecord
{
public:
    void add(const QString &line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back(line.toStdString());
    }

    QStringList lines() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return toStringList(m_lines);
    }

    /// The lines so far, which are forgotten.
    QStringList take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const QStringList lines = toStringList(m_lines);
        m_lines.clear();
        return lines;
    }

private:
    static QStringList toStringList(const std::vector<std::string> &lines)
    {
        QStringList strings;
        for (const std::string &line : lines)
            strings.append(QString::fromStdString(line));
        return strings;
    }

    mutable std::mutex m_mutex;
    // Not of Qt's classes: threads that share their content do so in libQt5Core, where ThreadSanitizer is blind.
    std::vector<std::string> m_lines;
};

/// A frame as CAN people write it: "123#0102", "00000123#R", and "123##1AABB" for CAN FD, where the digit after the
/// second # adds 1 for a bit rate switch and 2 for the error state indicator.
inline QString frameText(const CAN::CanMessage &message)
{
    const QString id = QStringLiteral("%1").arg(message.id, message.ext ? 8 : 3, 16, QLatin1Char('0')).toUpper();
    if (message.rtr)
        return id + QStringLiteral("#R");
    const QString data = QString::fromLatin1(message.dataToByteArray().toHex().toUpper());
    if (!message.fd)
        return id + QLatin1Char('#') + data;
    return id + QStringLiteral("##") + QString::number(int(message.brs) + 2 * int(message.extraFlag)) + data;
}

/// An adapter without hardware, that does what its public members say and records what it was asked:
/// "setBitrate 500", "setFdBitrate 2000", "open", "setRunning true", "write 123#0102", "close", and "~" when it dies, or
/// "~ while running" when nobody closed it before.
///
/// The members are set before other threads use the adapter; writeResult may change at any time.
class FakeAdapter : public AbstractCanAdapter
{
public:
    explicit FakeAdapter(CanAdapterType type = CanAdapterDemo, const QString &device = QStringLiteral("Fake 1"),
                         QObject *parent = nullptr)
        : AbstractCanAdapter(type, device, parent)
    {
    }

    ~FakeAdapter() override
    {
        say(QLatin1String(getRunning() ? "~ while running" : "~"));
        setRunningState(false);
    }

    /// Several adapters that share one show the order among them; `prefix` tells them apart.
    std::shared_ptr<CallRecord> record = std::make_shared<CallRecord>();
    QString prefix;

    QList<AdapterOption> supportedOptions = {OptionUseCanFd,   OptionDeviceName,  OptionIpAddress, OptionPort,
                                             OptionListenOnly, OptionDescription, OptionBitrate,   OptionFdBitrate};
    int openResult = OpenOk;
    /// Whether a successful open() alone makes the adapter run, as with real ones that receive at once.
    bool runsAfterOpen = false;
    int deviceNumber = 0;
    CAN::CANBitTimingThresholds classicThresholds;
    CAN::CANBitTimingThresholds dataThresholds;
    /// What write() answers while the adapter runs.
    std::atomic<WriteResult> writeResult{WriteOk};
    /// Called within write(), on the writing thread, after the line was recorded; may block.
    std::function<void()> onWrite;
    /// Called within open(), before its result is known.
    std::function<void()> onOpen;
    /// Called within close(), while the adapter still runs.
    std::function<void()> onClose;

    QStringList calls() const { return record->lines(); }
    QStringList takeCalls() { return record->take(); }

    int open() override
    {
        say(QStringLiteral("open"));
        if (onOpen)
            onOpen();
        if (runsAfterOpen && (openResult == OpenOk || openResult == OpenOtherSettings))
            setRunningState(true);
        return openResult;
    }

    void close() override
    {
        say(QStringLiteral("close"));
        if (onClose)
            onClose();
        setRunningState(false);
    }

    void setBitrate(quint16 bitrate) override { say(QStringLiteral("setBitrate %1").arg(bitrate)); }
    void setFdBitrate(quint16 bitrate) override { say(QStringLiteral("setFdBitrate %1").arg(bitrate)); }
    int getDeviceNumber() override { return deviceNumber; }

    void setRunning(bool running) override
    {
        say(QStringLiteral("setRunning %1").arg(QLatin1String(running ? "true" : "false")));
        setRunningState(running);
    }

    QList<AdapterOption> getSupportedOptions() override { return supportedOptions; }
    CAN::CANBitTimingThresholds getThresholds(bool dataPhase) override
    {
        return dataPhase ? dataThresholds : classicThresholds;
    }

    WriteResult write(CAN::CanMessage *message) override
    {
        say(QStringLiteral("write ") + frameText(*message));
        if (onWrite)
            onWrite();
        const WriteResult result = getRunning() ? writeResult.load() : WriteNotOpen;
        if (result == WriteOk)
            countSent();
        else
            countLost();
        return result;
    }

    /// Frames, states and the end of the connection as they come from hardware, on the caller's thread.
    void receive(CAN::CanRxMessage message)
    {
        countReceived();
        emit newCanMessage(&message);
    }
    void changeState(CAN::CanState state, CanTimeStamp stamp) { emit newCanState(state, stamp); }
    void fail(const QString &reason = {})
    {
        setErrorText(reason);
        emit interfaceError();
    }

    /// Runs `call` on a thread of its own, as a receive thread would, and waits for its end.
    static void onReceiveThread(const std::function<void()> &call) { std::thread(call).join(); }

private:
    void say(const QString &line) { record->add(prefix + line); }
};
