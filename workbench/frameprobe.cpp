#include "frameprobe.h"

FrameProbe::FrameProbe(AbstractCanAdapter *adapter)
    : m_connection(QObject::connect(adapter, &AbstractCanAdapter::newCanMessage,
                                    [memory = m_memory](const CAN::CanRxMessage *frame) { memory->take(*frame); }))
{
}

FrameProbe::~FrameProbe()
{
    QObject::disconnect(m_connection);
}

void FrameProbe::keep(quint32 identifier)
{
    const std::lock_guard lock(m_memory->mutex);
    m_memory->heard[identifier].keeps = true;
}

QVector<CAN::CanRxMessage> FrameProbe::kept(quint32 identifier) const
{
    return heard(identifier).kept;
}

void FrameProbe::record()
{
    const std::lock_guard lock(m_memory->mutex);
    m_memory->recording.clear();
    m_memory->records = true;
}

QVector<CAN::CanRxMessage> FrameProbe::recording() const
{
    const std::lock_guard lock(m_memory->mutex);
    return m_memory->recording;
}

quint64 FrameProbe::count(quint32 identifier) const
{
    return heard(identifier).count;
}

CAN::CanMessage FrameProbe::last(quint32 identifier) const
{
    return heard(identifier).last;
}

quint64 FrameProbe::switchedFrames() const
{
    const std::lock_guard lock(m_memory->mutex);
    return m_memory->switchedFrames;
}

FrameProbe::Heard FrameProbe::heard(quint32 identifier) const
{
    const std::lock_guard lock(m_memory->mutex);
    const auto found = m_memory->heard.find(identifier);
    return found == m_memory->heard.end() ? Heard() : found->second;
}

void FrameProbe::Memory::take(const CAN::CanRxMessage &frame)
{
    const CAN::CanMessage &message = frame.message;
    const std::lock_guard lock(mutex);
    if (message.fd && message.brs)
        ++switchedFrames;
    Heard &entry = heard[message.id];
    ++entry.count;
    entry.last = message;
    if (entry.keeps)
        entry.kept.append(frame);
    if (records)
        recording.append(frame);
}
