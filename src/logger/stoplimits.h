#pragma once

#include <QtGlobal>

/// A megabyte of the file size limit: neither 10^6 nor 2^20 bytes, and kept, since users have tuned their limits to it.
constexpr qint64 logMegabyte = 1024000;

/// @param bytes on disk
/// @param limit in units of logMegabyte
constexpr bool isFileSizeReached(qint64 bytes, qint32 limit)
{
    return bytes / logMegabyte >= limit;
}

constexpr bool isCountReached(quint32 messages, int limit)
{
    return qint64(messages) >= limit;
}
