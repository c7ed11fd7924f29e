#pragma once

#include "canrecords.h"

#include <QString>
#include <QVector>

/// How one interface is doing. Pure.
struct InterfaceStatus
{
    QString name;
    quint64 received = 0; ///< these three since it was opened the last time
    quint64 sent = 0;
    quint64 lost = 0;
    bool connected = false;
    QString trouble; ///< why it is not connected although it should be; empty where it should not, or is
    CAN::CanState controller = CAN::CanStateUnknown;
};

/// The counters' sums over all; the rest says nothing.
InterfaceStatus sumOf(const QVector<InterfaceStatus> &interfaces);

/// Which are connected, which failed, and which have a controller that keeps away from the bus.
QString connectionText(const QVector<InterfaceStatus> &interfaces);
/// Whether that text says something that the user should look after.
bool hasTrouble(const QVector<InterfaceStatus> &interfaces);

/// One line for each interface, for a tool tip.
QString breakdown(const QVector<InterfaceStatus> &interfaces);

/// How many a second, from a number that grows, over the last second or so. Time in milliseconds of a clock that
/// never goes back.
class RateMeter
{
public:
    /// A number smaller than the last one starts afresh: somebody cleared what is counted.
    void report(qint64 now, quint64 number);
    quint64 perSecond() const;
    void clear();

private:
    struct Sample
    {
        qint64 time;
        quint64 number;
    };

    QVector<Sample> m_samples;
};
