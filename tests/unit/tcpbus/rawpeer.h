#pragma once

#include "filedescriptor.h"
#include "wireformat.h"

#include <QByteArray>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

constexpr int patience = 10000; // ms, for what happens at once on a machine that is not busy

inline const QByteArray &greetingBytes()
{
    static const QByteArray bytes("CANNELLONIv1");
    return bytes;
}

inline sockaddr_in loopbackAddress(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

inline QByteArray encodedFrame(const CAN::CanMessage &message)
{
    quint8 bytes[WireFormat::largestFrameSize];
    const std::size_t size = WireFormat::encodeFrame(message, bytes);
    return QByteArray(reinterpret_cast<const char *>(bytes), static_cast<int>(size));
}

/// A frame whose id and data tell it from others.
inline CAN::CanMessage numberedFrame(quint32 number)
{
    CAN::CanMessage message;
    message.id = number & 0x7FF;
    message.length = 8;
    for (int i = 0; i < 8; ++i)
        message.data[i] = static_cast<quint8>(number >> (8 * (i % 4)));
    return message;
}

/// A connection of plain bytes, which knows nothing of the bus. Waits with a bound, and reads only when asked to.
class RawPeer
{
public:
    RawPeer() = default;
    explicit RawPeer(FileDescriptor socket)
        : m_socket(std::move(socket))
    {
    }

    /// @param receiveBuffer bytes that the system takes in for a peer that does not read; 0 for the system's own idea
    explicit RawPeer(quint16 port, int receiveBuffer = 0)
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (receiveBuffer > 0)
            ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        sockaddr_in address = loopbackAddress(port);
        m_connected = ::connect(m_socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }

    bool isConnected() const { return m_connected; }

    bool send(const QByteArray &bytes)
    {
        return ::send(m_socket.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL)
            == bytes.size();
    }

    /// Exactly `size` bytes; fewer if they do not come.
    QByteArray receive(int size)
    {
        QByteArray bytes;
        while (bytes.size() < size && waitForInput()) {
            char block[4096];
            const auto wanted = std::min<std::size_t>(sizeof block, static_cast<std::size_t>(size - bytes.size()));
            const ssize_t received = ::recv(m_socket.get(), block, wanted, 0);
            if (received <= 0)
                break;
            bytes.append(block, static_cast<int>(received));
        }
        return bytes;
    }

    /// Reads on until the other side has closed the connection; false if it does not.
    bool waitForEnd()
    {
        while (waitForInput()) {
            char block[4096];
            if (::recv(m_socket.get(), block, sizeof block, 0) <= 0)
                return true;
        }
        return false;
    }

    /// True if bytes are there, or the end.
    bool waitForInput(int milliseconds = patience)
    {
        pollfd poll = {m_socket.get(), POLLIN, 0};
        return ::poll(&poll, 1, milliseconds) > 0;
    }

    void close() { m_socket.reset(); }

    /// Says the greeting and hears it.
    bool greet() { return send(greetingBytes()) && receive(greetingBytes().size()) == greetingBytes(); }

private:
    FileDescriptor m_socket;
    bool m_connected = true;
};

/// Listens at a free port of this computer. What connects waits in the system's queue until it is accepted.
class RawServer
{
public:
    RawServer()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopbackAddress(0);
        socklen_t size = sizeof address;
        ::bind(m_socket.get(), reinterpret_cast<sockaddr *>(&address), sizeof address);
        ::listen(m_socket.get(), 8);
        ::getsockname(m_socket.get(), reinterpret_cast<sockaddr *>(&address), &size);
        m_port = ntohs(address.sin_port);
    }

    quint16 port() const { return m_port; }
    RawPeer accept() { return RawPeer(FileDescriptor(::accept4(m_socket.get(), nullptr, nullptr, SOCK_CLOEXEC))); }

private:
    FileDescriptor m_socket;
    quint16 m_port = 0;
};

/// A port that was free a moment ago.
inline quint16 freePort()
{
    return RawServer().port();
}
