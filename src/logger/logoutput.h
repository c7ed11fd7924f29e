#pragma once

#include <QDebug>
#include <QFile>

/// @param file may be null
inline bool isWritable(const QFile *file)
{
    return file != nullptr && file->isOpen();
}

/// Writes where there is something to write to. A line that is not taken shows in the debug stream only, and the log
/// goes on: on a disk that was full for a while, the end matters more than the gap.
/// @param caller signature of the function that writes
inline void writeToLog(QFile *file, const QByteArray &line, const char *caller)
{
    if (isWritable(file) && file->write(line) == -1)
        qDebug() << caller << "write failed:" << file->errorString();
}

/// Brings to the disk what was written so far. A short log meets the full disk only here.
/// @param caller signature of the function that flushes
inline void flushLog(QFile *file, const char *caller)
{
    if (isWritable(file) && !file->flush())
        qDebug() << caller << "write failed:" << file->errorString();
}
