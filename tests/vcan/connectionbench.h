#pragma once

#include "applicationinterfacehandler.h"
#include "messageboxes.h"

/// A handler with what an application hands to it.
struct ConnectionBench
{
    using Adapter = AbstractCanAdapter;

    SettingsDatabase settings{nullptr};
    QPointer<DatachunkHandler> trace{new DatachunkHandler(qApp)};
    MultiCanAdapterHandler adapters;
    QPointer<Adapter> primary;
    QPointer<CanScheduler> scheduler;
    MessageBoxes boxes;
    ApplicationInterfaceHandler handler{&settings, trace, &adapters, primary, scheduler, nullptr};

    ~ConnectionBench()
    {
        handler.disconnectFromAdapter();
        delete trace;
    }

    /// The first one becomes the primary adapter.
    Adapter *add(Adapter::CanAdapterType type, const char *device)
    {
        Adapter *adapter = CanAdapterFactory::createCanAdapter(type, QString::fromLatin1(device));
        adapters.addNewCanAdapter(adapter, adapters.getAdapterCount() == 0, true, false);
        return adapter;
    }
};
