#pragma once

#include <QString>

/// Why a trace is empty.
struct TraceSituation
{
    bool hasInterfaces = false; ///< some are configured
    bool connected = false;
    QString failure; ///< why the last connection failed or ended, in words; empty if it did not
};

/// What the place of the trace says then.
struct TraceAdvice
{
    enum Offer { NoOffer, OfferConnect, OfferDemo };

    QString title;
    QString text;
    Offer offer = NoOffer;
};

/// Pure.
TraceAdvice adviceFor(const TraceSituation &situation);
