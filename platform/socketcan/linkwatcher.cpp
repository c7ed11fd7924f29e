#include "linkwatcher.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <iterator>
#include <system_error>

bool LinkTable::reset(const std::vector<LinkProperties> &links)
{
    Entries entries;
    for (const LinkProperties &link : links)
        entries.insert_or_assign(link.index, entryOf(link));
    const bool changed = entries != m_entries;
    m_entries.swap(entries);
    return changed;
}

bool LinkTable::apply(const LinkNotice &notice)
{
    if (notice.isGone)
        return m_entries.erase(notice.link.index) > 0;
    const Entry entry = entryOf(notice.link);
    const auto [place, isNew] = m_entries.try_emplace(notice.link.index, entry);
    if (isNew)
        return true;
    const bool changed = place->second != entry;
    place->second = entry;
    return changed;
}

LinkWatcher::LinkWatcher(void (*changed)())
    : m_changed(changed)
    , m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_notices.isValid() || !m_stop.isValid())
        return;
    // What changes from here on waits among the notices.
    m_table.reset(readCanLinks());
    try {
        m_thread = std::thread(&LinkWatcher::run, this);
    } catch (const std::system_error &) {
        // Then the list of devices is as old as the last look at it, which is no reason to fail.
    }
}

LinkWatcher::~LinkWatcher()
{
    if (!m_thread.joinable())
        return;
    ::eventfd_write(m_stop.get(), 1);
    m_thread.join();
}

void LinkWatcher::run()
{
    pollfd polls[] = {{m_notices.descriptor(), POLLIN, 0}, {m_stop.get(), POLLIN, 0}};
    for (;;) {
        if (::poll(polls, std::size(polls), -1) < 0 && errno != EINTR)
            return;
        if (polls[1].revents != 0)
            return;
        if (polls[0].revents != 0 && takeNotices())
            m_changed();
    }
}

/// True if the list of devices looks different now.
bool LinkWatcher::takeNotices()
{
    const LinkNotices::Taken taken = m_notices.take();
    if (taken.incomplete)
        return m_table.reset(readCanLinks());
    bool changed = false;
    for (const LinkNotice &notice : taken.list)
        changed = m_table.apply(notice) || changed;
    return changed;
}
