#pragma once

#include "statussummary.h"

#include <QObject>

class QLabel;
class QStatusBar;

/// The state of the connection and the counters, at the right end of a status bar.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    struct Content
    {
        QVector<InterfaceStatus> interfaces; ///< all of them: closed ones keep their counts until they open again
        quint64 framesPerSecond = 0;         ///< into the trace
        quint64 notStored = 0;               ///< frames that found no room in the trace
        qint64 stallInLastMinute = 0;        ///< ms
        qint64 longestStall = 0;             ///< ms
    };

    explicit StatusLine(QStatusBar *bar);

    void show(const Content &content);

private:
    void setWarning(QLabel *label, bool warns);

    QLabel *m_state;
    QLabel *m_received;
    QLabel *m_sent;
    QLabel *m_lost;
    QLabel *m_rate;
};
