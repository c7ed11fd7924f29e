#include "toursteps.h"

#include "fileloggerwindow.h"
#include "frameprobe.h"
#include "mainwindow.h"
#include "tourcontext.h"
#include "touridentifiers.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>

#include <algorithm>

namespace {
constexpr int loggedFrames = 200;

QString logFile(const TourContext &tour)
{
    return QDir(tour.directory()).filePath(QStringLiteral("logged.txt"));
}

/// As the space bar does: a check mark that the program sets tells nobody.
void tick(const QWidget &form, const char *box)
{
    auto *group = form.findChild<QGroupBox *>(QString::fromLatin1(box));
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_Space, Qt::NoModifier);
        QApplication::sendEvent(group, &key);
    }
}

void press(const QWidget &form, const char *button)
{
    form.findChild<QPushButton *>(QString::fromLatin1(button))->click();
}

bool isLogging(const QWidget &form)
{
    return form.findChild<QPushButton *>(QStringLiteral("btnStop"))->isEnabled();
}

void armTriggers(const TourContext &tour, const FileLoggerWindow &logger)
{
    logger.findChild<QLineEdit *>(QStringLiteral("edtFilePath"))->setText(logFile(tour));
    logger.findChild<QLineEdit *>(QStringLiteral("edtStartIds"))
        ->setText(QStringLiteral("0x%1").arg(TourIdentifiers::logStart, 0, 16));
    tick(logger, "gbStartTriggersCANIDs");
    logger.findChild<QSpinBox *>(QStringLiteral("spCounter"))->setValue(loggedFrames);
    tick(logger, "gbStopTriggersCounter");
    press(logger, "btnStartTriggers");
    press(logger, "btnStopTriggers");
}

QByteArrayList logLines(const TourContext &tour)
{
    QFile file(logFile(tour));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().split('\n');
}

/// Whether the line says what the frame says; read as a person reads it, not with the functions that write or replay it.
bool tellsFrame(const QByteArray &line, const CAN::CanRxMessage &frame)
{
    static const QRegularExpression columns(
        QStringLiteral("^ *([0-9]+)\\.([0-9]{6}) 0x([0-9a-f]+)/([0-9]+) +\\(([0-9]+)\\): (.*);([0-9]+)$"));
    const QRegularExpressionMatch match = columns.match(QString::fromLatin1(line));
    const CAN::CanMessage &message = frame.message;
    const int flags = (message.ext ? 1 : 0) + (message.fd ? 2 : 0) + (message.brs ? 4 : 0)
        + (message.extraFlag ? 8 : 0);
    const QString data = message.rtr ? QStringLiteral("Remote Transmission Request")
                                     : QString::fromLatin1(message.dataToByteArray().toHex(' '));
    return match.hasMatch() && match.captured(1).toInt() == frame.timeStamp.seconds
        && match.captured(2).toInt() == frame.timeStamp.microseconds
        && match.captured(3).toUInt(nullptr, 16) == message.id && match.captured(4).toUInt() == message.id
        && match.captured(5).toUInt() == message.length && match.captured(6).trimmed() == data
        && match.captured(7).toInt() == flags;
}

/// The frames behind the one that starts the log.
QVector<CAN::CanRxMessage> framesToLog(const QVector<CAN::CanRxMessage> &heard)
{
    const auto start = std::find_if(heard.cbegin(), heard.cend(), [](const CAN::CanRxMessage &frame) {
        return frame.message.id == TourIdentifiers::logStart;
    });
    const auto behind = static_cast<int>(start - heard.cbegin()) + 1;
    return heard.mid(behind, loggedFrames);
}

/// How many of these frames, from the first on, came in in this order; others may stand between them.
int heardInOrder(const QVector<CAN::CanRxMessage> &frames, const QVector<CAN::CanRxMessage> &heard)
{
    int found = 0;
    for (const CAN::CanRxMessage &frame : heard)
        found += found < frames.size() && frame.message == frames[found].message ? 1 : 0;
    return found;
}

void compareLog(TourContext &tour, const QVector<CAN::CanRxMessage> &expected)
{
    const QByteArrayList lines = logLines(tour);
    tour.report().compare(TourContext::tr("First line of the log"), QStringLiteral("# timestamp id (dlc): data"),
                          QString::fromLatin1(lines.value(0)));
    int same = 0;
    while (same < expected.size() && tellsFrame(lines.value(same + 1), expected[same]))
        ++same;
    tour.report().compare(TourContext::tr("Lines that say what came in"), static_cast<quint64>(loggedFrames),
                          static_cast<quint64>(same));
    // The last line feed has nothing behind it.
    tour.report().compare(TourContext::tr("Lines of the log"), static_cast<quint64>(loggedFrames + 1),
                          static_cast<quint64>(std::max(lines.size() - 1, 0)));
}

/// One frame starts the log, behind whatever else is on the bus; the counter ends it.
/// @return the frames that belong in it
QVector<CAN::CanRxMessage> log(TourContext &tour, FileLoggerWindow &logger)
{
    tour.first()->record();
    CAN::CanMessage start;
    start.id = TourIdentifiers::logStart;
    tour.interfaceAt(1)->write(&start);
    TourContext::await([&] { return isLogging(logger); });
    tour.takePicture(&logger, QStringLiteral("logger"), TourContext::tr("the file logger at work"));
    TourContext::await([&] { return !isLogging(logger); });
    return framesToLog(tour.first()->recording());
}

void replayLog(TourContext &tour, const QVector<CAN::CanRxMessage> &logged)
{
    tour.second()->record();
    tour.replay(logFile(tour));
    TourContext::await([&] { return heardInOrder(logged, tour.second()->recording()) == logged.size(); });
    tour.report().compare(TourContext::tr("Logged frames that a replay brings back"),
                          static_cast<quint64>(loggedFrames),
                          static_cast<quint64>(heardInOrder(logged, tour.second()->recording())));
}
} // namespace

namespace TourSteps {

bool logAndReplay(TourContext &tour)
{
    tour.trigger(QStringLiteral("actionFileLogger"));
    auto *logger = tour.window()->findChild<FileLoggerWindow *>();
    armTriggers(tour, *logger);
    tour.takePicture(logger, QStringLiteral("logger-armed"), TourContext::tr("the file logger, armed"));
    const QVector<CAN::CanRxMessage> logged = log(tour, *logger);
    compareLog(tour, logged);
    tour.takeOtherLooks(logger, QStringLiteral("logger"), TourContext::tr("the file logger"));
    logger->close();
    replayLog(tour, logged);
    return true;
}

} // namespace TourSteps
