#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// Why a trace is empty.
struct TraceSituation
{
    bool hasInterfaces = false; ///< some are configured
    bool connected = false;
    QString failure;       ///< why the last connection failed or ended, in words; empty if it did not
    QStringList freeLinks; ///< CAN links of this computer that could become interfaces
};

/// What the place of the trace says then.
struct TraceAdvice
{
    enum Offer { OfferConnect, OfferLinks, OfferDemo };

    QString title;
    QString text;
    QVector<Offer> offers; ///< the best first
};

/// Pure.
TraceAdvice adviceFor(const TraceSituation &situation);
