#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <array>

/// The longest of the delays that were reported within the last minute, and of all since clear(). Pure: time comes in
/// from outside, in milliseconds of a clock that never goes back.
class StallHistory
{
public:
    void report(qint64 now, qint64 delay);
    /// In milliseconds, 0 if none was reported.
    qint64 longestInLastMinute(qint64 now) const;
    qint64 longest() const { return m_longest; }
    void clear();

private:
    static constexpr int seconds = 60;

    struct Second
    {
        qint64 number = -1;
        qint64 longest = 0;
    };

    std::array<Second, seconds> m_seconds;
    qint64 m_longest = 0;
};

/// Measures how late the event loop of its thread is: a frozen window is a late event loop.
class StallMeter : public QObject
{
    Q_OBJECT

public:
    explicit StallMeter(QObject *parent = nullptr);

    qint64 longestInLastMinute() const;
    qint64 longest() const { return m_history.longest(); }

public slots:
    /// Measures from now on.
    void restart();

private:
    void tick();

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_lastTick = 0;
    StallHistory m_history;
};
