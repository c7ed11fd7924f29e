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
    /// Puts the two interfaces into the collection, unless it has interfaces already. A port that was set moves those
    /// that are on the embedded bus to it.
    void addInterfaces();
    /// After addInterfaces(), with the interfaces connected: starts the network, unless it runs or somebody else already talks on the bus.
    void joinNetwork();
    /// The demo has a place beside the interfaces there are: none yet, or some on the embedded bus.
    bool isPossible() const;
    bool isNetworkRunning() const;
    DemoNetworkRunner *network() const { return m_network.get(); }

signals:
    /// Something about the demo that the user should know.
    void remark(const QString &text);

private:
    AbstractCanAdapter *connectedDemoInterface() const;
    void moveInterfacesToPort();
    void startNetworkOnSilentBus();

    Session *m_session;
    QString m_port;
    bool m_wanted = false;
    quint64 m_heardBefore = 0;
    std::unique_ptr<DemoNetworkRunner> m_network;
};
