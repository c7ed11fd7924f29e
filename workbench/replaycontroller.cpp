#include "replaycontroller.h"

#include "canreplayer.h"
#include "waiting.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {
// For a replay that is in the middle of a write, which no adapter lets take longer than a second.
constexpr int endMilliseconds = 1500;
} // namespace

ReplayController::~ReplayController()
{
    stop();
    waitUntil([this] { return m_retired.isEmpty(); }, endMilliseconds);
    // Those that are left would block their destruction for the rest of their wait. Stopped, they do nothing more.
    for (CANReplayer *replayer : qAsConst(m_retired)) {
        replayer->setParent(nullptr);
        replayer->disconnect();
    }
}

bool ReplayController::start(const Recording &recording)
{
    stop();
    const QFileInfo file(recording.fileName);
    if (!file.isFile() || !file.isReadable()) {
        emit statusChanged(tr("\"%1\" cannot be read. Choose a log or a trace file.")
                               .arg(QDir::toNativeSeparators(recording.fileName)));
        return false;
    }
    m_adapter = recording.adapter;
    m_replayer = new CANReplayer(recording.fileName, this);
    connect(m_replayer, &CANReplayer::infoText, this, &ReplayController::statusChanged);
    connect(m_replayer, &CANReplayer::finished, this, [this, over = m_replayer] {
        m_retired.remove(over);
        over->deleteLater();
        if (over != m_replayer)
            return;
        m_replayer = nullptr;
        m_adapter = nullptr;
        emit runningChanged();
        emit ended();
    });
    apply(m_replayer);
    m_replayer->setCanApdater(recording.adapter);
    m_replayer->setIgnoreList(recording.ignored);
    m_replayer->start();
    emit runningChanged();
    return true;
}

void ReplayController::stop()
{
    if (m_replayer == nullptr)
        return;
    retire(m_replayer);
    m_replayer = nullptr;
    m_adapter = nullptr;
    emit runningChanged();
}

void ReplayController::setPaused(bool paused)
{
    m_settings.paused = paused;
    if (m_replayer != nullptr)
        m_replayer->setPause(paused);
}

void ReplayController::step()
{
    if (m_replayer != nullptr)
        m_replayer->sendNextSingleMessage();
}

void ReplayController::setSpeed(double factor)
{
    m_settings.speed = factor;
    if (m_replayer != nullptr)
        m_replayer->setPlaybackSpeed(factor);
}

void ReplayController::setLoop(bool loop)
{
    m_settings.loop = loop;
    if (m_replayer != nullptr)
        m_replayer->setLoopMode(loop);
}

void ReplayController::setFastForward(bool fastForward)
{
    m_settings.fastForward = fastForward;
    if (m_replayer != nullptr)
        m_replayer->setFastForward(fastForward);
}

void ReplayController::setIgnoreGaps(bool ignoreGaps)
{
    m_settings.ignoreGaps = ignoreGaps;
    if (m_replayer != nullptr)
        m_replayer->setIgnoreGaps(ignoreGaps);
}

std::optional<double> ReplayController::percentIn(const QString &status)
{
    static const QRegularExpression number(QStringLiteral("([0-9.]+) % completed"));
    bool isNumber = false;
    const double percent = number.match(status).captured(1).toDouble(&isNumber);
    if (!isNumber)
        return {};
    return qBound(0.0, percent, 100.0);
}

void ReplayController::apply(CANReplayer *replayer) const
{
    replayer->setPause(m_settings.paused);
    replayer->setPlaybackSpeed(m_settings.speed);
    replayer->setLoopMode(m_settings.loop);
    replayer->setFastForward(m_settings.fastForward);
    replayer->setIgnoreGaps(m_settings.ignoreGaps);
}

void ReplayController::retire(CANReplayer *replayer)
{
    // Its last words would mix with those of the next.
    disconnect(replayer, &CANReplayer::infoText, this, nullptr);
    m_retired.insert(replayer);
    replayer->setStop();
}
