#pragma once

#include "adaptercontract.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

class DemoNetwork;
class LoadGenerator;

/// Keeps a simulated CANopen network on the bus of a "Demo" adapter, in real time, until it is stopped or loses the
/// bus. A thread of its own sends what is due and what other nodes asked for.
///
/// Everything is called from the thread that made the object, but for setExtraLoad() and the counters, which any
/// thread may use.
class DemoNetworkRunner : public QObject
{
    Q_OBJECT

public:
    /// With an adapter of its own, the device "Demo 4".
    explicit DemoNetworkRunner(QObject *parent = nullptr);
    /// @param adapter not shared with anyone; null makes every start() fail
    explicit DemoNetworkRunner(std::unique_ptr<AbstractCanAdapter> adapter, QObject *parent = nullptr);
    /// Stops a running network.
    ~DemoNetworkRunner() override;

    /// Switches all nodes on, at the bus of that port (empty for the usual one); a running network is stopped first.
    /// @return false if the bus cannot be joined: errorText() says why
    bool start(const QString &port = {});
    /// Takes all nodes off the bus. When the call returns, no frame is on its way any more. Emits nothing.
    void stop();
    bool isRunning() const;
    /// Why the last start() failed or the bus was lost, in words for the user; empty if all is well.
    QString errorText() const;

    /// Adds a uniform stream of numbered frames, see LoadGenerator; 0 ends it. Stays set over stop() and start(), the
    /// numbering begins at 0 with each start().
    void setExtraLoad(int framesPerSecond);

    // Counters since the last start().
    quint64 framesSent() const;      ///< by the nodes and as extra load
    quint64 extraFramesSent() const; ///< of these, as extra load
    quint64 framesLost() const;      ///< that the adapter did not take
    quint64 requestsDropped() const; ///< that came faster than the nodes could look at them

signals:
    /// The bus was lost, and the network stopped.
    void stopped(const QString &reason);

private:
    bool open(const QString &port);
    void run();
    /// Sends until all frames are on the way or a stop is requested; gives the number of frames sent.
    quint64 send(std::vector<CAN::CanMessage> frames);
    void handleRequests(DemoNetwork &network, const std::deque<CAN::CanMessage> &requests);
    void requestStop();
    /// On the adapter's receive thread.
    void enqueue(const CAN::CanMessage &message);
    void loseBus(quint64 session);

    std::unique_ptr<AbstractCanAdapter> m_adapter;
    std::thread m_thread;
    bool m_joined = false; ///< or about to join
    QString m_errorText;
    /// Tells the loss of this session's bus from one that was still in the event queue when the next began.
    quint64 m_session = 0;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<CAN::CanMessage> m_requests; ///< under m_mutex
    std::atomic<bool> m_stopRequested{false};
    std::atomic<int> m_extraLoad{0};

    std::atomic<quint64> m_sent{0};
    std::atomic<quint64> m_extraSent{0};
    std::atomic<quint64> m_lost{0};
    std::atomic<quint64> m_dropped{0};
};
