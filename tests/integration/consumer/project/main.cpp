#include <Kestrune/applicationinterfacehandler.h>

#include <QApplication>
#include <QDebug>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    SettingsDatabase settings(nullptr);
    MultiCanAdapterHandler adapters;
    QPointer<DatachunkHandler> trace = new DatachunkHandler(&application);
    QPointer<AbstractCanAdapter> primary;
    QPointer<CanScheduler> scheduler;
    ApplicationInterfaceHandler connection(&settings, trace, &adapters, primary, scheduler, nullptr);

    for (const QString &device : {QStringLiteral("Demo 1"), QStringLiteral("Demo 2")}) {
        auto *adapter = CanAdapterFactory::createCanAdapter(AbstractCanAdapter::CanAdapterDemo, device);
        adapter->setCanAdapterOption(AbstractCanAdapter::OptionPort, application.arguments().value(1));
        adapters.addNewCanAdapter(adapter, false, true, false); // the first becomes the primary one
    }
    bool usesCanFd = false;
    connection.connectAdapters(false, usesCanFd);
    if (adapters.getConnectedAdapters().size() != 2)
        return 1; // a message box has said why

    const auto show = [&](const CAN::CanRxMessage &frame) {
        qInfo() << Qt::hex << frame.message.id << frame.message.dataToByteArray().toHex(' ');
        application.quit();
    };
    QObject::connect(&connection, &ApplicationInterfaceHandler::sigAppendCanMessage, &application, show);

    CAN::CanMessage message;
    message.id = 0x123;
    message.length = 1;
    message.data[0] = 0x2A;
    primary->write(&message);

    const int result = application.exec();
    connection.disconnectFromAdapter();
    return result;
}
