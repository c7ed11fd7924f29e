#include "toursteps.h"

#include "datachunkhandler.h"
#include "frameprobe.h"
#include "mainwindow.h"
#include "tourcontext.h"
#include "touridentifiers.h"
#include "tracearchive.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace {
constexpr int frames = 100;
constexpr qint64 microsecondsPerSecond = 1'000'000;
// Of a machine that does other things too.
constexpr double tolerance = 0.1;

/// Gaps of 2 to 20 ms in turn.
qint64 recordedTime(int frame)
{
    constexpr qint64 gaps[] = {2000, 5000, 20'000, 3000};
    constexpr qint64 allGaps = 30'000;
    qint64 time = frame / 4 * allGaps;
    for (int i = 0; i < frame % 4; ++i)
        time += gaps[i];
    return time;
}

CAN::CanRxMessage recordedFrame(quint32 identifier, int frame)
{
    CAN::CanRxMessage recorded;
    recorded.timeStamp = CanTimeStamp(static_cast<qint32>(recordedTime(frame) / microsecondsPerSecond),
                                      static_cast<qint32>(recordedTime(frame) % microsecondsPerSecond));
    recorded.message.id = identifier;
    recorded.message.length = 2;
    recorded.message.data[0] = static_cast<quint8>(frame);
    recorded.message.data[1] = static_cast<quint8>(~frame);
    return recorded;
}

bool writeLog(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (int i = 0; i < frames; ++i) {
        const CAN::CanRxMessage frame = recordedFrame(TourIdentifiers::replayedLog, i);
        file.write(QStringLiteral(" %1.%2 0x%3/%4 (2): %5;0\n")
                       .arg(frame.timeStamp.seconds)
                       .arg(frame.timeStamp.microseconds, 6, 10, QLatin1Char('0'))
                       .arg(frame.message.id, 3, 16, QLatin1Char('0'))
                       .arg(frame.message.id)
                       .arg(QString::fromLatin1(frame.message.dataToByteArray().toHex(' ')))
                       .toLatin1());
    }
    return file.flush();
}

bool writeTrace(const QString &fileName)
{
    DatachunkHandler trace;
    for (int i = 0; i < frames; ++i)
        trace.appendCanMessage(recordedFrame(TourIdentifiers::replayedTrace, i));
    return trace.saveQrmFile(fileName);
}

/// How many arrived as they were recorded, in their order.
int sameFrames(const QVector<CAN::CanRxMessage> &received, quint32 identifier)
{
    int same = 0;
    while (same < received.size() && same < frames && received[same].message == recordedFrame(identifier, same).message)
        ++same;
    return same;
}

void replay(TourContext &tour, const QString &fileName, quint32 identifier)
{
    tour.second()->keep(identifier);
    tour.replay(fileName);
    TourContext::await([&] { return tour.second()->kept(identifier).size() >= frames; });

    const QVector<CAN::CanRxMessage> received = tour.second()->kept(identifier);
    tour.report().compare(TourContext::tr("Frames replayed from \"%1\"").arg(QFileInfo(fileName).fileName()),
                          static_cast<quint64>(frames), static_cast<quint64>(sameFrames(received, identifier)));
    if (received.isEmpty())
        return;
    const CanTimeStamp span = received.first().timeStamp.timeDifference(received.last().timeStamp);
    const auto recorded = static_cast<double>(recordedTime(frames - 1));
    const double played = span.seconds * 1e6 + span.microseconds;
    tour.report().add(TourContext::tr("  time that it took"),
                      TourContext::tr("%1 ms within %2 %").arg(recorded / 1000).arg(tolerance * 100),
                      TourContext::tr("%1 ms").arg(played / 1000), std::abs(played - recorded) <= tolerance * recorded);
}
} // namespace

namespace TourSteps {

bool replayRecordings(TourContext &tour)
{
    const QString log = QDir(tour.directory()).filePath(QStringLiteral("replayed.txt"));
    const QString trace = QDir(tour.directory()).filePath(QStringLiteral("replayed.qrm"));
    if (!writeLog(log) || !writeTrace(trace))
        return tour.stop(TourContext::tr("\"%1\" cannot be written to.").arg(tour.directory()));
    tour.trigger(QStringLiteral("actionReplay"));
    tour.takePicture(QStringLiteral("replay"), TourContext::tr("the replay panel"));
    tour.takeOtherLooks(tour.window(), QStringLiteral("replay"), TourContext::tr("the replay panel"));
    replay(tour, log, TourIdentifiers::replayedLog);
    replay(tour, trace, TourIdentifiers::replayedTrace);
    tour.takePicture(QStringLiteral("replay-over"), TourContext::tr("the replay panel after a replay"));
    tour.trigger(QStringLiteral("actionWriteFrame"));
    return true;
}

bool recordAndOpenTrace(TourContext &tour)
{
    constexpr unsigned some = 100;
    DatachunkHandler *trace = tour.window()->session()->trace();
    TraceArchive *files = tour.window()->files();
    const QString fileName = QDir(tour.directory()).filePath(QStringLiteral("recorded.qrm"));
    const unsigned begin = trace->getMessageCount();
    files->startRecording(fileName);
    const unsigned enough = trace->getMessageCount() + some;
    TourContext::await([&] { return trace->getMessageCount() >= enough; });
    tour.window()->disconnectAdapters();
    // On the thread of the trace, behind the last frames that are on their way to it.
    QMetaObject::invokeMethod(
        trace, [] {}, Qt::BlockingQueuedConnection);
    const QVector<CAN::CanRxMessage> shown = trace->getMessages(begin, trace->getMessageCount() - begin);
    files->stopRecording();

    files->open(fileName);
    TourContext::await([&] { return !files->isBusy(); });
    const QVector<CAN::CanRxMessage> opened = trace->getMessages(0, trace->getMessageCount());
    // A frame or two may have come in before the recording began.
    const bool same = opened.size() <= shown.size() && opened == shown.mid(shown.size() - opened.size());
    tour.report().add(TourContext::tr("Frames recorded, and opened again"),
                      TourContext::tr("the same, %1 or more").arg(some),
                      TourContext::tr("%1, %2")
                          .arg(same ? TourContext::tr("the same") : TourContext::tr("others"))
                          .arg(opened.size()),
                      same && opened.size() >= static_cast<int>(some));
    tour.takePicture(QStringLiteral("opened"), TourContext::tr("an opened trace"));
    return true;
}

} // namespace TourSteps
