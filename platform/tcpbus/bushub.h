#pragma once

#include "filedescriptor.h"
#include "wireformat.h"

#include <QLoggingCategory>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

Q_DECLARE_LOGGING_CATEGORY(lcTcpBus)

/// Carries a bus: hands each frame that one connection sends to all others, in order, on 127.0.0.1 only and on a
/// thread of its own.
///
/// No connection can hold up another. What one is slow to take waits for it up to a bound; one that falls further behind is
/// disconnected. So is one that says nothing valid in time, or sends what is no traffic of a bus. Each such end goes to
/// the log as a warning.
///
/// A hub serves until it is destroyed, which waits for its thread. Its functions may be called from any thread.
class BusHub
{
public:
    struct Limits
    {
        std::size_t backlog = 4 * 1024 * 1024; ///< bytes that wait for one connection
        std::chrono::milliseconds greetingTime = std::chrono::seconds(2);
        std::size_t connections = 64;
    };

    /// Null if the port cannot be had: `error` then holds the system's error number, EADDRINUSE if another has it.
    /// @param port 0 for any free one
    static std::unique_ptr<BusHub> create(quint16 port, const Limits &limits, int &error);
    ~BusHub();

    /// Makes the hub of the port a part of this process, for as long as that lives.
    /// @return 0 if the process has the hub now, or had it before; otherwise the system's error number
    static int serveUntilExit(quint16 port);

    quint16 port() const { return m_port; }
    /// Connections that said their greeting.
    std::size_t memberCount() const { return m_memberCount; }
    /// Why connections were ended, the latest last and no more than a hundred.
    QStringList notices() const;

private:
    struct Connection;

    BusHub(FileDescriptor listener, quint16 port, const Limits &limits);
    bool start(int &error);
    void run();
    int waitTime() const;
    void acceptAll();
    void admit(FileDescriptor socket, const QString &name);
    void pauseListening();
    void resumeListening();
    void receive(Connection &connection);
    void takeBytes(Connection &connection);
    void forward(const Connection &sender, StreamDecoder::Bytes bytes);
    void send(Connection &connection, StreamDecoder::Bytes bytes);
    void sendBacklog(Connection &connection);
    void watch(Connection &connection, bool writable);
    void end(Connection &connection, const QString &reason = {});
    void endOverdue();
    void removeEnded();

    const quint16 m_port;
    const Limits m_limits;
    FileDescriptor m_listener;
    FileDescriptor m_epoll;
    FileDescriptor m_stop;
    bool m_listening = false;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::atomic<std::size_t> m_memberCount{0};
    mutable std::mutex m_noticesMutex;
    QStringList m_notices;
    std::thread m_thread;
};
