#pragma once

#include <QString>
#include <QVector>

/// What the interfaces of a connection have counted. Pure.
struct InterfaceCounts
{
    QString name;
    quint64 received = 0;
    quint64 sent = 0;
    quint64 lost = 0;
};

/// The sum over all; its name is empty.
InterfaceCounts sumOf(const QVector<InterfaceCounts> &interfaces);

/// One line for each interface, for a tool tip.
QString breakdown(const QVector<InterfaceCounts> &interfaces);

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
