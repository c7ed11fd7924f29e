#include "replayworker.h"

#include "adaptercontract.h"
#include "datachunkhandler.h"
#include "replayclock.h"
#include "replaygap.h"
#include "replayline.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>

#include <chrono>

#include <sys/prctl.h>

namespace {
enum StepState : qint32 { NoStep = 0, StepRequested = 1, StepUnderWay = 2 };

constexpr qint64 progressInterval = 300;       // milliseconds
constexpr unsigned long emptyPassRest = 10000; // microseconds
// Of a trace that is played; 84 bytes each.
constexpr unsigned int framesInMemory = 2000000;
// Far more than any frame takes: a file without line ends must not fill the memory.
constexpr qint64 lineLimit = 65536;

qint64 nowInNanoseconds()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The kernel lets a sleep last up to 50 microseconds longer to save wake-ups; here punctuality is the purpose.
void tuneThread()
{
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}
} // namespace

ReplayWorker::ReplayWorker()
    : clock(std::make_unique<ReplayClock>())
{
}

ReplayWorker::~ReplayWorker() = default;

void ReplayWorker::setCanApdater(AbstractCanAdapter *canAdapter)
{
    adapter = canAdapter;
    if (adapter != nullptr)
        connect(this, &ReplayWorker::writeMessage, adapter, &AbstractCanAdapter::write, Qt::UniqueConnection);
}

void ReplayWorker::setLoop(bool loop)
{
    loopMode.exchange(loop);
}

void ReplayWorker::setPause(bool pause)
{
    {
        const QMutexLocker lock(&waitMutex);
        paused.exchange(pause);
    }
    if (!pause)
        waitCondition.wakeOne();
}

void ReplayWorker::setPlaybackSpeed(double speed)
{
    playbackSpeed.exchange(speed);
}

void ReplayWorker::setPerformanceMode(bool performance)
{
    performanceMode.exchange(performance);
}

void ReplayWorker::setStop()
{
    {
        const QMutexLocker lock(&waitMutex);
        paused.exchange(false);
        stopRequested.exchange(true);
    }
    waitCondition.wakeAll();
}

void ReplayWorker::sendSingleStepMessage()
{
    {
        const QMutexLocker lock(&waitMutex);
        singleStepState.exchange(StepRequested);
    }
    waitCondition.wakeOne();
}

void ReplayWorker::initPerformanceFrequency()
{
    // The clock of this platform needs no calibration.
}

void ReplayWorker::delayMicroseconds(unsigned long long microseconds)
{
    QThread::usleep(clock->sleepFor(microseconds, nowInNanoseconds()));
}

void ReplayWorker::doWork(const QString &fileName)
{
    QFile file(fileName);
    firstMessage = true;
    initPerformanceFrequency();
    tuneThread();
    clock->restart();
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    emit infoText(tr("Loading file..."));
    const bool isTrace = fileName.endsWith(QLatin1String("qrm"));
    const bool played = isTrace ? playTrace(fileName, sinceProgress) : playText(file, sinceProgress);
    if (!played)
        return;
    file.close();
    emit completed();
}

/// False if there is nothing to play, when the end has been told.
bool ReplayWorker::playTrace(const QString &fileName, QElapsedTimer &sinceProgress)
{
    DatachunkHandler trace(this, framesInMemory);
    connect(&trace, &DatachunkHandler::sigQRMLoadingProgress, this, &ReplayWorker::onloadingProgressChanged);
    const bool loaded = trace.loadQrmFile(fileName);
    trace.setImportFinished(loaded, DatachunkHelper::TraceFile, QString(), false);
    if (!loaded) {
        emit infoText(tr("Cannot load QRM file: %1").arg(fileName));
        // While the trace is there: it knows why.
        emit completed();
        return false;
    }
    messageCount = trace.getMessageCount();
    lastMessage = trace.getLastMessage();
    emit infoText(tr("CAN replay started"));
    while (!stopRequested) {
        if (!trace.getMessageAtIndex(currentMessage, messageIndex)) {
            if (!loopMode)
                break;
            messageIndex = 0;
            restAfterAnEmptyPass();
            continue;
        }
        ++messageIndex;
        handleTxMessage(currentMessage);
        reportProgress(sinceProgress);
    }
    if (!stopRequested)
        sendPreviousMessage();
    return true;
}

/// False if there is nothing to play, when the end has been told.
bool ReplayWorker::playText(QFile &file, QElapsedTimer &sinceProgress)
{
    // Whoever opens a pipe or a terminal may wait for ever, out of reach of setStop().
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        setStop();
        emit infoText(tr("Cannot open file..."));
        emit completed();
        return false;
    }
    QTextStream stream(&file);
    QString line;
    while (!stopRequested && !stream.atEnd()) {
        if (!readLine(stream, line))
            qDebug() << Q_FUNC_INFO << line;
        else if (!playLine(line))
            break;
        reportProgress(sinceProgress);
        if (loopMode && stream.atEnd()) {
            restAfterAnEmptyPass();
            stream.seek(0);
        }
    }
    if (!stopRequested)
        sendPreviousMessage();
    return true;
}

/// False for a line beyond the limit, of which `line` is the beginning.
bool ReplayWorker::readLine(QTextStream &stream, QString &line)
{
    stream.readLineInto(&line, lineLimit);
    if (line.size() < lineLimit)
        return true;
    QString rest;
    while (!stopRequested && stream.readLineInto(&rest, lineLimit) && rest.size() >= lineLimit) {
        // The rest belongs to the same line, up to a part that does not fill the limit.
    }
    return false;
}

/// False if the recording ends with this line.
bool ReplayWorker::playLine(const QString &line)
{
    const ReplayLine parsed = parseReplayLine(line);
    // The one slow thing on a frame's way from waking to sending: whoever looks into a recording from elsewhere sees
    // the data of each line before anything else is made of it.
    if (parsed.tabbed)
        qDebug() << "d>" << parsed.tabData.toString().split(QLatin1Char(' '), Qt::SkipEmptyParts) << "<d";
    switch (parsed.kind) {
    case ReplayLine::Frame:
        handleTxMessage(parsed.message);
        break;
    case ReplayLine::Foreign:
        qDebug() << Q_FUNC_INFO << line;
        break;
    case ReplayLine::BrokenTime:
        return false;
    }
    return true;
}

/// A loop over a recording without a frame has no gaps to wait for, and would keep a core busy until the stop.
void ReplayWorker::restAfterAnEmptyPass()
{
    if (firstMessage)
        QThread::usleep(emptyPassRest);
}

void ReplayWorker::handleTxMessage(const CAN::CanRxMessage &message)
{
    if (firstMessage) {
        firstMessage = false;
        previousMessage = message;
        return;
    }
    waitWhilePaused();
    if (stopRequested)
        return;
    sendPreviousMessage();
    const CanTimeStamp previous = previousMessage.timeStamp;
    previousMessage = message;
    waitForGap(previous, message.timeStamp);
}

void ReplayWorker::waitWhilePaused()
{
    const QMutexLocker lock(&waitMutex);
    while (paused && singleStepState != StepRequested) {
        clock->restart();
        waitCondition.wait(&waitMutex);
    }
    if (singleStepState == StepRequested)
        singleStepState.exchange(StepUnderWay);
}

void ReplayWorker::sendPreviousMessage()
{
    if (adapter != nullptr && !ignoreList.contains(previousMessage.message.id))
        adapter->write(&previousMessage.message);
}

void ReplayWorker::waitForGap(CanTimeStamp previous, CanTimeStamp next)
{
    GapRules rules;
    rules.speed = playbackSpeed;
    // A step that was asked for meanwhile stays asked for.
    qint32 underWay = StepUnderWay;
    rules.singleStep = singleStepState.compare_exchange_strong(underWay, NoStep);
    rules.fastForward = fastForward;
    rules.ignoreGaps = ignoreGaps;
    const GapPlan plan = planGap(previous, next, rules);

    clock->setSpeed(rules.speed);
    if (!plan.wait || rules.singleStep || rules.fastForward)
        clock->restart();
    for (const QString &text : plan.textsBefore)
        emit infoText(text);
    if (plan.wait)
        delayMicroseconds(*plan.wait);
    if (!plan.textAfter.isNull())
        emit infoText(plan.textAfter);
}

void ReplayWorker::reportProgress(QElapsedTimer &sinceProgress)
{
    if (sinceProgress.elapsed() < progressInterval)
        return;
    onUpdateProgress();
    sinceProgress.restart();
}

void ReplayWorker::onUpdateProgress()
{
    const CanTimeStamp left = currentMessage.timeStamp.timeDifference(lastMessage.timeStamp);
    // A text has no count: its progress is no number, and is shown as such.
    const double percent = double(messageIndex) / double(messageCount) * 100.0;
    emit infoText(tr("CAN replay active - %1 % completed. Approx. %2 left")
                      .arg(percent, 0, 'f', 2)
                      .arg(left.toQTime().toString(QStringLiteral("hh:mm:ss"))));
}

void ReplayWorker::onloadingProgressChanged(double percent)
{
    emit sigLoadingProgress(percent);
}
