#pragma once

#include "socketcanadapter.h"
#include "socketpeer.h"

/// On a socket that needs no kernel with CAN, and on a link as the test describes it.
class InjectedAdapter : public SocketCanAdapter
{
public:
    explicit InjectedAdapter(const QString &device = QStringLiteral("can0|test"))
        : SocketCanAdapter(device)
    {
        link.name = QStringLiteral("can0");
        link.isUp = true;
        link.mtu = CANFD_MTU;
    }
    ~InjectedAdapter() override { close(); }

    int openLink() override
    {
        peer = std::make_unique<SocketPeer>();
        return openOn(peer->takeNear(), link);
    }
    bool start()
    {
        if (open() != OpenOk)
            return false;
        setRunning(true);
        return getRunning();
    }

    LinkProperties link;
    std::unique_ptr<SocketPeer> peer;
};
