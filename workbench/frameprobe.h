#pragma once

#include "adaptercontract.h"

#include <QVector>

#include <map>
#include <mutex>

/// Listens to one adapter and remembers what came in: how many frames of each identifier, the last of each, and all
/// frames of the identifiers that somebody cares about.
///
/// Frames are taken on the adapter's receive thread; everything may be asked from any thread. Disconnecting the adapter
/// ends the listening.
class FrameProbe
{
public:
    explicit FrameProbe(AbstractCanAdapter *adapter);
    ~FrameProbe();

    /// From now on all frames of this identifier are kept.
    void keep(quint32 identifier);
    QVector<CAN::CanRxMessage> kept(quint32 identifier) const;

    /// From now on every frame is recorded, behind none of an earlier recording. For moments: nothing bounds it.
    void record();
    /// What came in since record(), in that order.
    QVector<CAN::CanRxMessage> recording() const;

    quint64 count(quint32 identifier) const;
    /// The last frame of the identifier; a default record if there was none.
    CAN::CanMessage last(quint32 identifier) const;
    /// CAN FD frames with bit rate switch.
    quint64 switchedFrames() const;

private:
    Q_DISABLE_COPY(FrameProbe)

    struct Heard
    {
        quint64 count = 0;
        CAN::CanMessage last;
        bool keeps = false;
        QVector<CAN::CanRxMessage> kept;
    };

    /// Shared with the receive thread, which may be in the middle of a frame when the probe goes.
    struct Memory
    {
        std::mutex mutex;
        std::map<quint32, Heard> heard;
        quint64 switchedFrames = 0;
        bool records = false;
        QVector<CAN::CanRxMessage> recording;

        void take(const CAN::CanRxMessage &frame);
    };

    Heard heard(quint32 identifier) const;

    std::shared_ptr<Memory> m_memory = std::make_shared<Memory>();
    QMetaObject::Connection m_connection;
};
