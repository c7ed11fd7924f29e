#include "storagefailuretext.h"

#include "datachunkhandler.h"

QString storageFailureText(const TraceStore::Failure &failure)
{
    switch (failure.kind) {
    case TraceStore::Failure::NoFile:
        return DatachunkHandler::tr("The trace takes no more frames: no temporary file can be made (%1). Make /var/tmp "
                                    "writable, or restart the program with the environment variable TMPDIR naming "
                                    "another directory, then start a new trace.")
            .arg(qt_error_string(failure.error));
    case TraceStore::Failure::WriteFailed:
        return DatachunkHandler::tr("The trace takes no more frames: its temporary file in %1 cannot grow (%2). Free "
                                    "space there, or restart the program with the environment variable TMPDIR naming "
                                    "another directory, then start a new trace.")
            .arg(QString::fromLocal8Bit(failure.directory.c_str()), qt_error_string(failure.error));
    case TraceStore::Failure::NoMemory:
        return DatachunkHandler::tr("The trace takes no more frames: there is not enough memory. Close other programs, "
                                    "then start a new trace.");
    case TraceStore::Failure::CountExhausted:
        return DatachunkHandler::tr(
            "The trace takes no more frames: it has as many as it can count. Start a new trace.");
    }
    return {};
}
