#pragma once

#include <QObject>
#include <QString>

#include <memory>

class AbstractCanAdapter;
class DemoNetworkRunner;
class Session;

/// The demo: two interfaces on the embedded bus, and a simulated CANopen network of five nodes beside them.
///
/// The trace records from the first interface, which also hears itself. So it shows every frame of the bus once, the
/// user's own among them.
class DemoSession : public QObject
{
    Q_OBJECT

public:
    explicit DemoSession(Session *session, QObject *parent = nullptr);
    ~DemoSession() override;

    /// @param port of the bus; empty means the usual one. For addInterfaces().
    void setPort(const QString &port) { m_port = port; }
    /// Puts the two interfaces into the collection; does nothing a second time.
    void addInterfaces();
    /// With the interfaces connected: starts the network, unless it runs or somebody else already talks on the bus.
    void joinNetwork();
    bool isNetworkRunning() const;
    DemoNetworkRunner *network() const { return m_network.get(); }

signals:
    /// Something about the demo that the user should know.
    void remark(const QString &text);

private:
    AbstractCanAdapter *connectedDemoInterface() const;
    void startNetworkOnSilentBus();

    Session *m_session;
    QString m_port;
    bool m_hasInterfaces = false;
    quint64 m_heardBefore = 0;
    std::unique_ptr<DemoNetworkRunner> m_network;
};
