#pragma once

#include "canrecords.h"
#include "kestrune_export.h"

#include <QMutex>
#include <QObject>
#include <QSet>
#include <QWaitCondition>

#include <atomic>
#include <memory>

class AbstractCanAdapter;
class QElapsedTimer;
class QFile;
class QTextStream;
class ReplayClock;

/// Plays a recording onto one adapter, with the gaps between frames as they were recorded. CANReplayer makes one and
/// drives it; few others have a reason to.
///
/// A file whose name ends in "qrm" is a trace; any other is text, in the format of the file logger or with tabs between
/// its columns. The worker holds one frame back: it sends a frame when it has read the one behind it, and then waits for
/// the gap between the two.
///
/// doWork() and all signals run on the thread that the worker was moved to. What is said to work from any thread does so
/// in the middle of a replay, but for a sleep that is under way: that one ends first, and may take an hour.
class KESTRUNE_EXPORT ReplayWorker : public QObject
{
    Q_OBJECT

public:
    /// Without a parent, to be moved to its thread.
    ReplayWorker();
    ~ReplayWorker() override;

    /// Where the frames go; null for nowhere, with all the timing. On the worker's thread, before doWork().
    void setCanApdater(AbstractCanAdapter *canAdapter);

    // From any thread.

    /// Starts again at the end of the recording.
    void setLoop(bool loop);
    /// Holds the replay before the next frame, or lets it go on.
    void setPause(bool pause);
    /// @param speed divisor of all gaps: 2.0 plays twice as fast. Counts from the next gap on; 0 plays without waits.
    void setPlaybackSpeed(double speed);
    /// Kept for those who set it; it changes nothing on this platform.
    void setPerformanceMode(bool performance);
    /// Ends the replay, for good: the worker does not play again. The frame held back is not sent.
    void setStop();
    /// Sends one frame of a paused replay, without waiting for the gap behind it.
    void sendSingleStepMessage();

    // Steps of doWork().

    /// Nothing to prepare on this platform.
    void initPerformanceFrequency();
    /// Sleeps once, with QThread::usleep, until `microseconds` after the moment at which the sleep before should have
    /// ended: what has passed since then, by oversleeping or by sending, is left out. If that is more than 100 ms, it
    /// sleeps in full from now on.
    void delayMicroseconds(unsigned long long microseconds);
    /// Sends the frame held back, holds `message` back instead, and waits for the gap between them.
    void handleTxMessage(const CAN::CanRxMessage &message);

public slots:
    /// The whole replay; returns when it is over. One trace a worker: a second one would begin at the frame at which
    /// the first has ended.
    void doWork(const QString &fileName);
    /// Tells how much of a trace is played and how much recorded time is left; of a text, whose length nobody knows,
    /// "nan" and no time.
    void onUpdateProgress();
    /// Hands the progress of the trace on, as sigLoadingProgress().
    void onloadingProgressChanged(double percent);

signals:
    /// The end of every replay: played, stopped or failed.
    void completed();
    /// For the user.
    void infoText(QString text);
    /// Frames do not go this way but straight to AbstractCanAdapter::write(): a signal would have them wait for the
    /// adapter's thread.
    void writeMessage(CAN::CanMessage *message);
    /// @param percent of a trace that is loaded
    void sigLoadingProgress(double percent);

private:
    friend class CANReplayer; // writes the flags and the list that have no setter

    bool playTrace(const QString &fileName, QElapsedTimer &sinceProgress);
    bool playText(QFile &file, QElapsedTimer &sinceProgress);
    bool readLine(QTextStream &stream, QString &line);
    bool playLine(const QString &line);
    void restAfterAnEmptyPass();
    void reportProgress(QElapsedTimer &sinceProgress);
    void waitWhilePaused();
    void sendPreviousMessage();
    void waitForGap(CanTimeStamp previous, CanTimeStamp next);

    CAN::CanRxMessage currentMessage; ///< the progress counts from its time
    CAN::CanRxMessage lastMessage;    ///< to that of this one
    quint32 messageIndex = 0;         ///< of the record to fetch next
    quint32 messageCount = 0;
    AbstractCanAdapter *adapter = nullptr;
    std::atomic<bool> stopRequested{false};
    std::atomic<bool> fastForward{false};
    std::atomic<bool> performanceMode{false};
    std::atomic<bool> loopMode{false};
    std::atomic<bool> paused{false};
    std::atomic<qint32> singleStepState{0};
    std::atomic<double> playbackSpeed{1.0};
    std::atomic<bool> ignoreGaps{false};
    QSet<quint32> ignoreList;
    // So that a pause blocks without polling; what it waits for is atomic.
    QMutex waitMutex;
    QWaitCondition waitCondition;
    bool firstMessage = true;
    CAN::CanRxMessage previousMessage; ///< held back
    std::unique_ptr<ReplayClock> clock;
};
