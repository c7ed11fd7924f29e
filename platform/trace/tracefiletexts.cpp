#include "tracefiletexts.h"

#include "datachunkhandler.h"

#include <QDir>
#include <QStringList>

#include <cerrno>

namespace {
QString shown(const QString &fileName)
{
    return QDir::toNativeSeparators(fileName);
}

// A directory, a device or a pipe, as the recorder tells it.
constexpr int noRegularFile = EINVAL;
} // namespace

QString TraceFileTexts::importError(const TraceImport::Result &result, const QString &fileName)
{
    if (result.isGood())
        return {};
    const QString file = shown(fileName);
    switch (result.outcome) {
    case TraceImport::NoCapture:
        return DatachunkHandler::tr("%1 is not a trace file: it begins neither like pcapng nor like pcap. Choose "
                                    "another file.")
            .arg(file);
    case TraceImport::NotCan:
        return DatachunkHandler::tr("%1 holds no CAN frames: it was captured on another kind of network. Choose "
                                    "another file.")
            .arg(file);
    case TraceImport::ReadFailed:
        return DatachunkHandler::tr("%1 cannot be read beyond byte %2. Check the disk or the network on which it lies.")
            .arg(file)
            .arg(result.position);
    case TraceImport::StorageFailed:
        return DatachunkHandler::tr("%1 was not loaded to its end: the trace takes no more frames. Free space for its "
                                    "temporary file, then load it again.")
            .arg(file);
    case TraceImport::Cancelled:
        return DatachunkHandler::tr("Loading %1 was cancelled.").arg(file);
    default:
        return DatachunkHandler::tr("%1 is damaged at byte %2, before its first frame. Choose another file.")
            .arg(file)
            .arg(result.position);
    }
}

QString TraceFileTexts::importRemark(const TraceImport::Result &result)
{
    QStringList remarks;
    if (result.outcome == TraceImport::CutOff)
        remarks += DatachunkHandler::tr("The end of the file is missing. All frames before it were loaded.");
    if (result.outcome == TraceImport::Damaged)
        remarks += DatachunkHandler::tr("The file is damaged from byte %1 on. All frames before it were loaded.")
                       .arg(result.position);
    if (result.otherPackets > 0)
        remarks += DatachunkHandler::tr("Packets that are no CAN frames were left out: %1.").arg(result.otherPackets);
    if (result.notesLeftOut)
        remarks += DatachunkHandler::tr("Notes were left out: the file has more of them than the trace holds.");
    return result.isGood() ? remarks.join(QLatin1Char(' ')) : QString();
}

QString TraceFileTexts::cannotOpen(const QString &fileName, const QString &reason)
{
    return DatachunkHandler::tr("%1 cannot be opened (%2). Check its name and your rights.")
        .arg(shown(fileName), reason);
}

QString TraceFileTexts::noFile(const QString &fileName)
{
    return DatachunkHandler::tr("%1 is not a file. Choose a trace file.").arg(shown(fileName));
}

QString TraceFileTexts::noMemory()
{
    return DatachunkHandler::tr("There is not enough memory. Close other programs, then try again.");
}

QString TraceFileTexts::recordingRuns()
{
    return DatachunkHandler::tr("The trace is being recorded. Stop the recording before you load a file.");
}

QString TraceFileTexts::loadRuns()
{
    return DatachunkHandler::tr("A file is being loaded. Start the recording when that is done.");
}

QString TraceFileTexts::cannotSave(const QString &fileName, const QString &reason)
{
    return DatachunkHandler::tr("%1 cannot be written (%2). Free space there, or choose another place.")
        .arg(shown(fileName), reason);
}

QString TraceFileTexts::traceUnreadable(const QString &fileName)
{
    return DatachunkHandler::tr("%1 was not written: the trace was cleared meanwhile, or its temporary file cannot be "
                                "read.")
        .arg(shown(fileName));
}

QString TraceFileTexts::cannotRecord(const QString &fileName, int error)
{
    if (error == noRegularFile)
        return DatachunkHandler::tr("Nothing can be recorded into %1: it is not a file. Choose another name.")
            .arg(shown(fileName));
    return cannotSave(fileName, qt_error_string(error));
}

QString TraceFileTexts::recordingFailed(const TraceRecorder::Failure &failure)
{
    if (failure.kind == TraceRecorder::Failure::TraceUnreadable)
        return DatachunkHandler::tr("The recording into %1 has ended: the trace's temporary file cannot be read. Start "
                                    "a new recording.")
            .arg(shown(failure.fileName));
    return DatachunkHandler::tr("The recording into %1 has ended: the file cannot grow (%2). Free space there, then "
                                "start a new recording. The trace itself goes on.")
        .arg(shown(failure.fileName), qt_error_string(failure.error));
}
