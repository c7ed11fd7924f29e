#pragma once

#include "traceimport.h"
#include "tracerecorder.h"

// What happens to trace files, and what to do about it, in words for the user.

namespace TraceFileTexts {
/// Empty for what was loaded.
QString importError(const TraceImport::Result &result, const QString &fileName);
/// What is missing in what was loaded; empty if nothing is.
QString importRemark(const TraceImport::Result &result);
QString cannotOpen(const QString &fileName, const QString &reason);
QString noFile(const QString &fileName);
QString noMemory();
QString recordingRuns();
QString loadRuns();
QString cannotSave(const QString &fileName, const QString &reason);
QString traceUnreadable(const QString &fileName);
QString cannotRecord(const QString &fileName, int error);
QString recordingFailed(const TraceRecorder::Failure &failure);
} // namespace TraceFileTexts
