#pragma once

#include "applicationinterfacehandler.h"

#include <QSet>
#include <QThread>

/// Everything of the workbench that is not a window: the collection of interfaces, the connection, the trace.
///
/// The trace lives on a thread of its own, so that a frame never waits for a window. All functions are called from the
/// GUI thread.
class Session : public QObject
{
    Q_OBJECT

public:
    /// @param boxParent parent of the connection's message boxes; may be null
    explicit Session(QWidget *boxParent = nullptr);
    /// Disconnects first.
    ~Session() override;

    /// Brings the saved interfaces back. Without this call nothing is ever saved.
    /// @return false if the settings cannot be opened; settingsProblem() then tells
    bool openSettings();
    /// Writes interfaces and values to the settings file; does nothing without openSettings().
    /// @return false if that failed; settingsProblem() then tells
    bool saveSettings();
    /// Named values of the workbench, beside the interfaces.
    SettingsDatabase *settings() { return &m_settings; }

    MultiCanAdapterHandler *adapters() { return &m_adapters; }
    DatachunkHandler *trace() const { return m_trace; }
    /// The connected primary adapter; null while there is none.
    AbstractCanAdapter *primaryAdapter() const { return m_primaryAdapter; }
    CanScheduler *scheduler() const { return m_scheduler; }

    bool hasInterfaces() const;
    /// Lets the user manage the interfaces in a window, and saves them. To be called while none is connected.
    /// @return whether the user wants them connected
    bool editInterfaces();
    bool isConnected();
    /// Why the last connection failed or ended by itself, in words for the user; empty if all is well.
    QString failure() const { return m_failure; }

    /// Whether the frames that an interface receives go into the trace: of several interfaces on the same bus one is
    /// enough, or every frame shows twice.
    void setTraced(quint16 identifier, bool traced);
    bool isTraced(quint16 identifier) const;

public slots:
    void connectAdapters();
    void disconnectAdapters();
    void clearTrace();

signals:
    /// Connected, disconnected, or failed to connect; also after a change of the collection.
    void connectionChanged();
    /// A new scheduler, or null when there is none any more.
    void schedulerChanged(CanScheduler *scheduler);
    void traceCleared();
    /// In words for the user: what went wrong, and what to do.
    void settingsProblem(const QString &text);

private:
    void collectFailures();
    void applyTraced(AbstractCanAdapter *adapter);
    void cutUntraced();

    QThread m_traceThread;
    QPointer<DatachunkHandler> m_trace;
    SettingsDatabase m_settings;
    bool m_settingsOpened = false;
    MultiCanAdapterHandler m_adapters;
    QPointer<AbstractCanAdapter> m_primaryAdapter;
    QPointer<CanScheduler> m_scheduler;
    ApplicationInterfaceHandler *m_handler;
    QSet<quint16> m_untraced;
    QString m_failure;
    bool m_disconnecting = false; ///< the user ends the connection: nothing has failed
};
