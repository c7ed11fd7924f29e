#pragma once

#include "busclient.h"
#include "threadedadapter.h"

#include <mutex>
#include <vector>

/// A node on a bus that is carried over TCP.
///
/// As CanAdapterDemo it joins the embedded bus at its port on 127.0.0.1; where nobody carries one there, this process
/// does from then on. As CanAdapterFixedNetwork20 it is a client of the gateway at its address and port.
///
/// Such a bus has no bitrate of its own: any is accepted. What a controller with these settings could not receive is
/// not handed on and not counted: CAN FD frames without OptionUseCanFd, reports of errors. Stamps are the system's time
/// of day. An echo of a sent frame (OptionForcedEcho) is not counted as received.
class TcpBusAdapter : public ThreadedAdapter, private BusListener
{
    Q_OBJECT

public:
    static constexpr quint16 defaultPort = 45674;

    /// @param type CanAdapterDemo or CanAdapterFixedNetwork20
    TcpBusAdapter(CanAdapterType type, const QString &device, QObject *parent = nullptr);
    ~TcpBusAdapter() override;

    void setBitrate(quint16 bitrate) override;
    void setFdBitrate(quint16 bitrate) override;
    QList<AdapterOption> getSupportedOptions() override;
    CAN::CANBitTimingThresholds getThresholds(bool dataPhase) override;

private:
    int openLink() override;
    void endLink() override;
    bool isLinked() const override { return m_client.isLinked(); }
    bool isReceiveThread() const override { return m_client.isReceiveThread(); }
    void readSendSettings() override;
    WriteResult send(const CAN::CanMessage &message) override;
    void frameArrived(const CAN::CanMessage &message, std::chrono::system_clock::time_point arrival) override;
    void awoken() override;
    void linkLost(WireFormat::Fault fault) override;
    void framesUnsent(quint64 frames) override;

    int openEmbeddedBus();
    int openGateway();
    int joinedWith(BusLink link);
    int refuseBusyPort();
    bool readPort();
    void echo(const CAN::CanMessage &message);
    void handOn(const CAN::CanMessage &message, std::chrono::system_clock::time_point stamp);

    const bool m_embedded;
    quint16 m_port = 0;
    QString m_host;
    std::atomic<bool> m_echo{false};
    std::mutex m_echoMutex;
    std::vector<CAN::CanMessage> m_echoes;
    BusClient m_client; // the last member: its threads use the others
};
