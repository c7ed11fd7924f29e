#pragma once

#include "adaptercontract.h"

class CanSchedulerPrivate;

/// Sends cyclic frames through one adapter, on a thread of its own and at absolute deadlines, so that a period does
/// not drift. A deadline that passed while the machine was busy is skipped, not made up for by a burst.
///
/// All functions may be called from the thread that made the object; frames leave on the scheduler's thread while the
/// scheduler is connected and the adapter runs. The frames stay when either ends and start anew when both are back.
///
/// An adapter that stops running or dies is left alone: its runningChanged(), emitted on the way down, waits for the
/// frame that is on its way, so close() takes as long as that write, and no write follows it. An adapter therefore
/// holds no lock in that signal that its write() needs. Whoever cuts the signals of a running adapter calls
/// connectToAdapter(false) first: no new frame goes to an adapter without them, but nobody can wait for the one that is
/// on its way if the adapter is then deleted.
class KESTRUNE_PLATFORM_EXPORT CanScheduler : public QObject
{
    Q_OBJECT

public:
    /// @param adapter may be null; nothing is sent then
    explicit CanScheduler(AbstractCanAdapter *adapter);
    ~CanScheduler() override;

    /// True starts the use of the adapter, false ends it: when the call returns, no frame is on its way any more.
    /// True once more changes nothing, unless somebody cut the adapter's signals in between.
    void connectToAdapter(bool connect);
    AbstractCanAdapter *canAdapter() const;

    /// Sends `message` at once and then every `periodMicroseconds` (shorter ones are raised to 100). While frames cannot
    /// leave, it is kept and sent at once as soon as they can.
    /// @return a handle for changes, never 0, not used again
    quint32 addCyclicMessage(const CAN::CanMessage &message, qint64 periodMicroseconds);
    /// New content and period; with an unchanged period the rhythm goes on, with another one the next frame leaves one
    /// new period after the last. False for an unknown handle.
    bool changeCyclicMessage(quint32 handle, const CAN::CanMessage &message, qint64 periodMicroseconds);
    /// False for an unknown handle. When the call returns, the frame is not sent again.
    bool removeCyclicMessage(quint32 handle);
    void removeAllCyclicMessages();
    int cyclicMessageCount() const;

private:
    std::unique_ptr<CanSchedulerPrivate> d;
};
