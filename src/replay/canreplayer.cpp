#include "canreplayer.h"

#include "replayworker.h"

#include <QDebug>
#include <QFileInfo>

CANReplayer::CANReplayer(QString fileName, QObject *parent)
    : QObject(parent)
    , replayFileName(fileName)
{
    const QFileInfo info(replayFileName);
    if (!info.exists() || !info.isReadable()) {
        qDebug() << Q_FUNC_INFO << "Invalid path " << replayFileName << ". Not started.";
        return;
    }
    worker = new ReplayWorker;
    worker->moveToThread(&replayThread);
    connect(&replayThread, &QThread::finished, worker, &QObject::deleteLater);
    connect(this, &CANReplayer::operate, worker, &ReplayWorker::doWork);
    connect(worker, &ReplayWorker::completed, this, &CANReplayer::handleResults);
    connect(worker, &ReplayWorker::infoText, this, &CANReplayer::handleInfoText);
    connect(worker, &ReplayWorker::sigLoadingProgress, this, &CANReplayer::onLoadingProgressChanged);
    replayThread.start(QThread::InheritPriority);
}

CANReplayer::~CANReplayer()
{
    if (!replayThread.isRunning())
        return;
    replayThread.quit();
    replayThread.wait();
}

void CANReplayer::start()
{
    if (worker == nullptr)
        return;
    // All three wait in the thread's queue, in this order: the replay begins when the other two have arrived, and
    // neither is touched by two threads.
    QMetaObject::invokeMethod(
        worker, [worker = worker, adapter = adapter] { worker->setCanApdater(adapter); }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(
        worker, [worker = worker, list = ignoreList] { worker->ignoreList = list; }, Qt::QueuedConnection);
    emit operate(replayFileName);
}

void CANReplayer::setCanApdater(AbstractCanAdapter *canAdapter)
{
    adapter = canAdapter;
}

void CANReplayer::setIgnoreList(QSet<unsigned int> identifiers)
{
    ignoreList = identifiers;
}

void CANReplayer::setFastForward(bool fastForward)
{
    if (worker != nullptr)
        worker->fastForward.exchange(fastForward);
}

void CANReplayer::setIgnoreGaps(bool ignoreGaps)
{
    if (worker != nullptr)
        worker->ignoreGaps.exchange(ignoreGaps);
}

void CANReplayer::setPause(bool pause)
{
    if (worker != nullptr)
        worker->setPause(pause);
}

void CANReplayer::sendNextSingleMessage()
{
    if (worker != nullptr)
        worker->sendSingleStepMessage();
}

void CANReplayer::setPlaybackSpeed(double speed)
{
    if (worker != nullptr)
        worker->setPlaybackSpeed(speed);
}

void CANReplayer::setPerformanceMode(bool performance)
{
    if (worker != nullptr)
        worker->setPerformanceMode(performance);
}

void CANReplayer::setLoopMode(bool loop)
{
    if (worker != nullptr)
        worker->setLoop(loop);
}

void CANReplayer::setStop()
{
    if (worker != nullptr)
        worker->setStop();
}

void CANReplayer::handleResults()
{
    emit finished();
}

void CANReplayer::handleInfoText(QString text)
{
    emit infoText(text);
}

void CANReplayer::onLoadingProgressChanged(double percent)
{
    emit infoText(tr("Loading %1 % completed").arg(percent, 0, 'f', 2));
}
