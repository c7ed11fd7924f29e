#pragma once

#include "linkproperties.h"

#include <memory>
#include <vector>

struct nl_sock;

/// Every CAN link, up or down; none if the kernel gives no answer.
std::vector<LinkProperties> readCanLinks();
/// Nothing if there is no link of that name, or if it is no CAN link.
std::optional<LinkProperties> readCanLink(const QString &name);

/// Hears of every change of a link, from its making on. For one thread at a time.
class LinkNotices
{
public:
    struct Taken
    {
        std::vector<LinkNotice> list;
        bool incomplete = false; ///< some were lost, for nobody took them in time
    };

    LinkNotices();
    ~LinkNotices();

    /// False if the kernel does not give notice.
    bool isValid() const { return m_socket != nullptr; }
    /// For poll(): readable when there is something to take.
    int descriptor() const;
    Taken take();

    struct Deleter
    {
        void operator()(nl_sock *socket) const;
    };

private:
    std::unique_ptr<nl_sock, Deleter> m_socket;
};
