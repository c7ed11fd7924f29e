#pragma once

#include "filedescriptor.h"
#include "rtnetlink.h"

#include <map>
#include <thread>

/// The CAN links as a list of devices shows them.
class LinkTable
{
public:
    // Each of them says whether the list of devices looks different afterwards.
    bool reset(const std::vector<LinkProperties> &links);
    bool apply(const LinkNotice &notice);

private:
    struct Entry
    {
        QString text;
        unsigned int features;

        bool operator==(const Entry &other) const { return text == other.text && features == other.features; }
        bool operator!=(const Entry &other) const { return !(*this == other); }
    };
    using Entries = std::map<int, Entry>;

    static Entry entryOf(const LinkProperties &link) { return {link.deviceText(), link.features()}; }

    Entries m_entries;
};

/// Calls back, on a thread of its own, whenever a CAN link has come, gone, or changed in a way that its device text or
/// its features show. Where the kernel gives no notice there is never a call.
class LinkWatcher
{
public:
    explicit LinkWatcher(void (*changed)());
    /// Waits for a call that is just running.
    ~LinkWatcher();

private:
    void run();
    bool takeNotices();

    void (*const m_changed)();
    FileDescriptor m_stop;
    LinkNotices m_notices;
    LinkTable m_table;
    std::thread m_thread;
};
