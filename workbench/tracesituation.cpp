#include "tracesituation.h"

#include <QCoreApplication>

namespace {
/// Room for the sentences that stand for the user.
struct TraceAdviser
{
    Q_DECLARE_TR_FUNCTIONS(TraceAdviser)
};

TraceAdvice adviceWithoutInterfaces(const QStringList &freeLinks)
{
    if (!freeLinks.isEmpty()) {
        return {TraceAdviser::tr("CAN links found: %1").arg(freeLinks.join(QLatin1String(", "))),
                TraceAdviser::tr("Connect them and see what is on the bus. Or try the demo: a simulated bus with a "
                                 "CANopen network."),
                {TraceAdvice::OfferLinks, TraceAdvice::OfferDemo}};
    }
    return {TraceAdviser::tr("No CAN interface yet"),
            TraceAdviser::tr("Try the demo: two interfaces on a simulated bus, with a CANopen network of five "
                             "nodes that talk. It needs no hardware.\n\n"
                             "A CAN link of this computer shows up here as soon as it is plugged in. Two commands "
                             "make a virtual one:\n\n"
                             "sudo ip link add vcan0 type vcan\n"
                             "sudo ip link set vcan0 mtu 72 up"),
            {TraceAdvice::OfferDemo}};
}
} // namespace

TraceAdvice adviceFor(const TraceSituation &situation)
{
    if (situation.connected) {
        return {TraceAdviser::tr("Waiting for the first frame"),
                TraceAdviser::tr("The connection stands, and nobody has sent anything yet. If traffic should be here, "
                                 "check the bitrate, the wiring and whether another node is switched on."),
                {}};
    }
    if (!situation.hasInterfaces)
        return adviceWithoutInterfaces(situation.freeLinks);
    if (!situation.failure.isEmpty())
        return {TraceAdviser::tr("Not connected"), situation.failure, {TraceAdvice::OfferConnect}};
    return {TraceAdviser::tr("Not connected"),
            TraceAdviser::tr("Press F5 to connect and see what is on the bus."),
            {TraceAdvice::OfferConnect}};
}
