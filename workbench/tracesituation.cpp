#include "tracesituation.h"

#include <QCoreApplication>

namespace {
/// Room for the sentences that stand for the user.
struct TraceAdviser
{
    Q_DECLARE_TR_FUNCTIONS(TraceAdviser)
};
} // namespace

TraceAdvice adviceFor(const TraceSituation &situation)
{
    if (situation.connected) {
        return {TraceAdviser::tr("Waiting for the first frame"),
                TraceAdviser::tr("The connection stands, and nobody has sent anything yet. If traffic should be here, "
                                 "check the bitrate, the wiring and whether another node is switched on."),
                TraceAdvice::NoOffer};
    }
    if (!situation.hasInterfaces) {
        return {TraceAdviser::tr("No CAN interface yet"),
                TraceAdviser::tr("Try the demo: two interfaces on a simulated bus, with a CANopen network of five "
                                 "nodes that talk. It needs no hardware."),
                TraceAdvice::OfferDemo};
    }
    if (!situation.failure.isEmpty())
        return {TraceAdviser::tr("Not connected"), situation.failure, TraceAdvice::OfferConnect};
    return {TraceAdviser::tr("Not connected"), TraceAdviser::tr("Press F5 to connect and see what is on the bus."),
            TraceAdvice::OfferConnect};
}
