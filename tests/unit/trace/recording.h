#pragma once

#include "datachunkhandler.h"
#include "traceframes.h"

#include <mutex>

/// A numbered frame of a kind in which any length is legal.
inline CAN::CanRxMessage fdFrame(unsigned index)
{
    CAN::CanRxMessage frame = numberedFrame(index);
    frame.message.fd = true;
    return frame;
}

/// Appends the frames from `first` up to `end`.
inline void append(DatachunkHandler &trace, unsigned first, unsigned end)
{
    for (unsigned i = first; i < end; ++i)
        trace.appendCanMessage(fdFrame(i));
}

/// What loading the file gives.
struct Recording
{
    explicit Recording(const QString &fileName)
        : loaded(trace.loadQrmFile(fileName))
    {
    }

    /// Whether there are exactly the frames from `first` up to `end`.
    bool holds(unsigned first, unsigned end) const
    {
        const unsigned count = trace.getMessageCount();
        if (!loaded || count != end - first)
            return false;
        const QVector<CAN::CanRxMessage> frames = trace.getMessages(0, count);
        for (unsigned i = 0; i < count; ++i) {
            if (frames[static_cast<int>(i)] != fdFrame(first + i))
                return false;
        }
        return true;
    }

    DatachunkHandler trace;
    bool loaded;
};

/// The reasons with which recordings have ended, which come from another thread.
class Failures
{
public:
    explicit Failures(const DatachunkHandler &trace)
    {
        QObject::connect(
            &trace, &DatachunkHandler::recordingFailed, &m_context,
            [this](const QString &reason) {
                const std::lock_guard lock(m_mutex);
                m_reasons.append(reason);
            },
            Qt::DirectConnection);
    }

    int count() const { return reasons().size(); }
    QString first() const { return reasons().value(0); }

private:
    QStringList reasons() const
    {
        const std::lock_guard lock(m_mutex);
        return m_reasons;
    }

    QObject m_context;
    mutable std::mutex m_mutex;
    QStringList m_reasons;
};
