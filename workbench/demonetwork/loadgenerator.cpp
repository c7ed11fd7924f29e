#include "loadgenerator.h"

#include "canopen.h"

#include <algorithm>

namespace {
constexpr qint64 microsecondsPerSecond = 1000000;
constexpr qint64 longestBacklog = 100000; // µs
constexpr int batchesPerSecond = 1000;
constexpr quint32 firstId = 0x400;
constexpr quint32 idCount = 64;

CAN::CanMessage loadFrame(quint64 number)
{
    CAN::CanMessage message;
    message.id = firstId + static_cast<quint32>(number % idCount);
    CanOpen::append<quint64>(message, number);
    return message;
}
} // namespace

void LoadGenerator::setRate(int framesPerSecond, qint64 now)
{
    const int rate = std::clamp(framesPerSecond, 0, highestRate);
    if (rate == m_rate)
        return;
    m_rate = rate;
    m_origin = now;
    m_sinceOrigin = 0;
}

qint64 LoadGenerator::nextDue() const
{
    if (m_rate == 0)
        return Rhythm::never;
    const int batch = std::clamp(m_rate / batchesPerSecond, 1, largestBatch);
    return dueOf(m_sinceOrigin + batch);
}

std::vector<CAN::CanMessage> LoadGenerator::advanceTo(qint64 now)
{
    std::vector<CAN::CanMessage> frames;
    if (now < nextDue())
        return frames;
    if (now - dueOf(m_sinceOrigin + 1) > longestBacklog) {
        m_origin = now - longestBacklog;
        m_sinceOrigin = 0;
    }
    const qint64 due = (now - m_origin) * m_rate / microsecondsPerSecond - m_sinceOrigin;
    const qint64 count = std::min<qint64>(due, largestBatch);
    frames.reserve(static_cast<std::size_t>(count));
    for (qint64 i = 0; i < count; ++i)
        frames.push_back(loadFrame(m_nextNumber++));
    m_sinceOrigin += count;
    // The origin follows in whole seconds, which keeps the products small however long the stream runs.
    while (m_sinceOrigin >= m_rate) {
        m_sinceOrigin -= m_rate;
        m_origin += microsecondsPerSecond;
    }
    return frames;
}

std::optional<quint64> LoadGenerator::number(const CAN::CanMessage &message)
{
    const quint64 number = qFromLittleEndian<quint64>(message.data);
    return message == loadFrame(number) ? std::optional(number) : std::nullopt;
}

qint64 LoadGenerator::dueOf(qint64 frame) const
{
    return m_origin + (frame * microsecondsPerSecond + m_rate - 1) / m_rate;
}
