#pragma once

#include "kestrune_export.h"

#include <QObject>
#include <QSet>
#include <QThread>

class AbstractCanAdapter;
class ReplayWorker;

/// Holds one recorded file and plays it onto an adapter, on a thread of its own: a trace whose name ends in "qrm", or a
/// text in the format of the file logger.
///
/// All functions are called from the thread that made the object. What start() hands over (adapter, ignore list) counts
/// from that start() on; the live controls, setFastForward() and those below it, reach a running replay at once, but for
/// a sleep that is under way.
///
/// A file that does not exist or cannot be read makes a replayer that does nothing and emits nothing.
///
/// A recording without a frame sends one all the same, with the identifier 0 and no data, unless 0 is ignored.
///
/// Destroying a replayer in the middle of a replay waits for the replay's end, which never comes in a loop or a pause:
/// call setStop() first.
class KESTRUNE_EXPORT CANReplayer : public QObject
{
    Q_OBJECT

public:
    /// @param fileName is played by start(); that it can be read is looked at here, and told to the debug stream if not
    explicit CANReplayer(QString fileName, QObject *parent = nullptr);
    ~CANReplayer() override;

    /// Begins the replay. A second call plays a text again when the first replay is over; of a trace, which then stays
    /// at its end, only the last frame goes out again, unless it loops. After a stop, or a text that did not open,
    /// nothing goes out any more.
    void start();

    /// @param canAdapter stays the caller's and has to live until finished(); null plays to nobody
    void setCanApdater(AbstractCanAdapter *canAdapter);
    /// @param identifiers of frames that are not sent, while their gaps are still waited for
    void setIgnoreList(QSet<unsigned int> identifiers);

    /// Skips every wait of 100 microseconds or more.
    void setFastForward(bool fastForward);
    /// Cuts every gap above 10 s to 1 s.
    void setIgnoreGaps(bool ignoreGaps);
    /// Holds the replay before the next frame, or lets it go on. Before start(), that is before the first frame.
    void setPause(bool pause);
    /// Sends one frame of a paused replay.
    void sendNextSingleMessage();
    /// @param speed divisor of all recorded gaps: 2.0 plays twice as fast
    void setPlaybackSpeed(double speed);
    /// Kept for those who set it; it changes nothing on this platform.
    void setPerformanceMode(bool performance);
    /// Starts again at the end of the recording, until this is switched off or the replay is stopped.
    void setLoopMode(bool loop);
    /// Ends the replay, and every later one of this replayer as it begins.
    void setStop();

public slots:
    // What the replay thread tells; the signals below hand it on.

    void handleResults();
    void handleInfoText(QString text);
    /// @param percent of a trace that is loaded, which becomes an infoText()
    void onLoadingProgressChanged(double percent);

signals:
    /// To the replay thread: plays that file.
    void operate(const QString &fileName);
    /// The end of every replay: played, stopped or failed.
    void finished();
    /// What the user may want to know of the replay.
    void infoText(QString text);

private:
    QThread replayThread;
    QSet<quint32> ignoreList;
    AbstractCanAdapter *adapter = nullptr;
    QString replayFileName;
    ReplayWorker *worker = nullptr; ///< deleted by the end of the thread; null if there is nothing to play
};
