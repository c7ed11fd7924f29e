#pragma once

#include "adaptercontract.h"
#include "canscheduler.h"
#include "datachunkhandler.h"
#include "multicanadapterhandler.h"
#include "settingsdatabase.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

/// Connects and disconnects the CAN adapters of an application, reports failures to the user, and hands received
/// frames on to the trace store.
///
/// The application owns everything that it passes in and keeps the two references alive as long as the handler; the
/// handler only points at them. It makes and deletes the CanScheduler itself. All functions are called from the GUI
/// thread but newCanMessage() and appendCanMessage(), which run on the adapter's thread.
///
/// The destructor neither closes adapters nor cuts connections: call disconnectFromAdapter() first.
class KESTRUNE_EXPORT ApplicationInterfaceHandler : public QObject
{
    Q_OBJECT

public:
    /// @param parent a widget becomes the parent of all message boxes
    /// @param primaryAdapter, canScheduler are kept up to date for the application to read
    ApplicationInterfaceHandler(SettingsDatabase *settingsDatabase, QPointer<DatachunkHandler> &dataChunkHandler,
                                MultiCanAdapterHandler *adapterHandler, QPointer<AbstractCanAdapter> &primaryAdapter,
                                QPointer<CanScheduler> &canScheduler, QObject *parent);
    ~ApplicationInterfaceHandler() override;

    /// Opens the standard settings file and fills the collection with the saved adapters; adapters that leave the
    /// collection take their settings with them from then on. Settings that cannot be opened are not reported: the
    /// application starts without adapters. Call it once.
    void openSettingsDatabase();

    /// As MultiCanAdapterHandler::addNewCanAdapter(); 0 once the collection is gone.
    quint16 addNewCanAdapter(AbstractCanAdapter *adapter, bool primary, bool active, bool keepIdentifier);

    /// Connects every active adapter, in ascending order of identifiers, and then makes the scheduler on the
    /// primary one. A failing adapter shows its box, and the others go on.
    /// @param withoutTrace received frames do not go to the trace store
    /// @param usesCanFd set to true if an adapter connects with CAN FD, otherwise left alone
    void connectAdapters(bool withoutTrace, bool &usesCanFd);
    /// Connects one adapter; gives what its open() gave, 0 for one that runs already, 6 for null.
    int connectToAdapter(AbstractCanAdapter *adapter, bool withoutTrace, bool &usesCanFd);
    /// Closes all adapters and cuts all their signals, also those to other objects.
    void disconnectFromAdapter();
    /// Deletes the scheduler, if there is one.
    void clearScheduler();
    /// Makes a new scheduler on the primary adapter. Listeners hear of it before it is attached.
    void updateSchedulerForNewPrimaryAdapter();

    bool isConnected();
    QList<QPointer<AbstractCanAdapter>> getConnectedAdapters();
    /// Lets the user manage the adapters in a modal window, and saves them afterwards, however the window was closed.
    /// getDirectConnect() then says whether to connect. The value "defaultBitrate" of the settings, in kBit/s, is what
    /// an adapter starts with of which nothing is known; 250 while the application has set none. Without settings or a
    /// collection there is no window.
    /// @param hideActiveColumn for applications that connect one adapter only
    /// @param showConnectButton lets the user ask for a connection
    void showCanMultiInterfaceSettings(bool hideActiveColumn, bool showConnectButton);

    /// From the collection: the configured one, connected or not.
    AbstractCanAdapter *getPrimaryAdapter();
    /// The user asked for a connection when the settings were last closed.
    bool getDirectConnect();

    /// Hands a frame on to the trace store, if there is one. From any thread.
    void appendCanMessage(CAN::CanRxMessage message);

signals:
    /// A scheduler was made or, with null, deleted.
    void newCanScheduler(CanScheduler *);
    /// From the primary adapter, on its thread.
    void newCanState(CAN::CanState canState, CanTimeStamp ts);
    void updateCanConnectionState();
    void newAdapter(AbstractCanAdapter *pCanAdapter);
    void sigAppendCanMessage(CAN::CanRxMessage message);

public slots:
    /// An adapter failed: brings the whole connection down and tells the user.
    void interfaceError();
    /// Copies the frame; a null pointer is ignored. From the adapter's thread.
    void newCanMessage(CAN::CanRxMessage *pCanMessage);

private:
    void showBox(const QString &text, const QString &informativeText, QMessageBox::Icon icon) const;
    void showOpenFailure(int openResult, const AbstractCanAdapter &adapter) const;
    void showOtherSettings(const AbstractCanAdapter &adapter) const;
    void listenForErrors(AbstractCanAdapter *adapter);
    void establish(AbstractCanAdapter *adapter, bool withoutTrace, quint16 bitrate);

    static constexpr int noAdapter = 6; // beside the results of AbstractCanAdapter::open()

    bool directConnect = false;
    QPointer<QWidget> parentWidget;
    QPointer<MultiCanAdapterHandler> adapterHandler;
    QPointer<DatachunkHandler> &dataChunkHandler;
    QPointer<SettingsDatabase> settingsDatabase;
    QPointer<AbstractCanAdapter> &primaryAdapter;
    QPointer<CanScheduler> &canScheduler;
};
