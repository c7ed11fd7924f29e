#pragma once

#include <QObject>
#include <QPointer>
#include <QSet>

#include <optional>

class AbstractCanAdapter;
class CANReplayer;

/// Plays one recording after the other for the replay panel.
///
/// A replay that is told to stop ends only with the wait that is under way, which may last an hour: it is put aside until
/// then and bothers nobody.
class ReplayController : public QObject
{
    Q_OBJECT

public:
    struct Recording
    {
        QString fileName;
        AbstractCanAdapter *adapter = nullptr; ///< has to live until the replay is stopped
        QSet<quint32> ignored;                 ///< identifiers that are not sent
    };

    using QObject::QObject;
    /// Stops the replay. One that is in the middle of a long wait is left to end with the program.
    ~ReplayController() override;

    /// Begins a replay, in place of one that runs.
    /// @return false if the file cannot be read; statusChanged() then says so
    bool start(const Recording &recording);
    void stop();
    bool isRunning() const { return m_replayer != nullptr; }
    /// The adapter that the replay sends through; null while none runs.
    const AbstractCanAdapter *adapter() const { return m_adapter; }

    // Live; kept for the next replay too.
    void setPaused(bool paused);
    /// Sends one frame of a paused replay.
    void step();
    void setSpeed(double factor);
    void setLoop(bool loop);
    void setFastForward(bool fastForward);
    void setIgnoreGaps(bool ignoreGaps);

    /// How far the replay or its loading is by its own words, 0 to 100; none if the words do not tell. Pure.
    static std::optional<double> percentIn(const QString &status);

signals:
    /// Started, ended or stopped.
    void runningChanged();
    /// The recording is played, or could not be: the last statusChanged() tells why.
    void ended();
    void statusChanged(const QString &text);

private:
    void apply(CANReplayer *replayer) const;
    void retire(CANReplayer *replayer);

    struct Settings
    {
        bool paused = false;
        double speed = 1.0;
        bool loop = false;
        bool fastForward = false;
        bool ignoreGaps = false;
    };

    Settings m_settings;
    CANReplayer *m_replayer = nullptr;
    const AbstractCanAdapter *m_adapter = nullptr;
    QSet<CANReplayer *> m_retired; ///< stopped, and in a wait still
};
