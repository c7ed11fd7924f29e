#pragma once

#include "replayline.h"

#include <QString>
#include <QStringList>

/// A line of a recording read the plain way, by QString's own means: what the hand-written reader has to agree with, and
/// to be faster than.
namespace PlainReplayLine {

inline bool readTime(const QString &text, CanTimeStamp &stamp)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return false;
    stamp = {parts[0].toInt(), parts[1].toInt()};
    return true;
}

inline void readData(const QStringList &data, int count, CAN::CanMessage &frame)
{
    for (int i = 0; i < count && i < data.size() && i < CAN::maxDataLength; ++i)
        frame.data[i] = static_cast<quint8>(data[i].toUInt(nullptr, 16));
}

inline ReplayLine::Kind readLog(const QStringList &fields, const QStringList &words, CAN::CanRxMessage &record)
{
    if (!readTime(words[0], record.timeStamp))
        return ReplayLine::BrokenTime;
    CAN::CanMessage &frame = record.message;
    const QStringList data = words.mid(3);
    const uint flags = fields.last().toUInt();
    frame.length = static_cast<quint8>(words[2].mid(1, words[2].indexOf(QLatin1Char(')')) - 1).toUInt(nullptr, 0));
    frame.id = words[1].split(QLatin1Char('/'))[0].toUInt(nullptr, 16);
    frame.rtr = data.contains(QStringLiteral("Remote"));
    if (!frame.rtr)
        readData(data, frame.length, frame);
    frame.ext = (flags & 1U) != 0;
    frame.fd = (flags & 2U) != 0;
    frame.brs = (flags & 4U) != 0;
    frame.extraFlag = (flags & 8U) != 0;
    return ReplayLine::Frame;
}

inline ReplayLine::Kind readTabs(const QStringList &tabs, CAN::CanRxMessage &record)
{
    if (!readTime(tabs[0], record.timeStamp))
        return ReplayLine::BrokenTime;
    const QStringList data = tabs[4].split(QLatin1Char(' '), Qt::SkipEmptyParts);
    record.message.id = tabs[1].split(QLatin1Char('/'))[0].toUInt();
    record.message.length = static_cast<quint8>(data.size());
    readData(data, data.size(), record.message);
    return ReplayLine::Frame;
}

/// Within the line, as the reader has it.
inline QStringView fifthColumn(const QString &line)
{
    const int begin = line.section(QLatin1Char('\t'), 0, 3).size() + 1;
    return QStringView(line).mid(begin, line.section(QLatin1Char('\t'), 4, 4).size());
}

inline ReplayLine parse(const QString &line)
{
    ReplayLine result;
    const QStringList fields = line.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    const QStringList words = (fields.size() == 2 ? fields[0] : line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QStringList tabs = line.split(QLatin1Char('\t'));
    if (words.size() >= 3 && words[2].endsWith(QStringLiteral("):"))) {
        result.kind = readLog(fields, words, result.message);
    } else if (tabs.size() >= 5) {
        result.tabbed = true;
        result.tabData = fifthColumn(line);
        result.kind = readTabs(tabs, result.message);
    }
    return result;
}

/// The same result to the last byte, of data that do not count too.
inline bool agrees(const ReplayLine &a, const ReplayLine &b)
{
    return a.kind == b.kind && a.tabbed == b.tabbed && a.tabData == b.tabData && a.message == b.message
        && std::equal(std::begin(a.message.message.data), std::end(a.message.message.data),
                      std::begin(b.message.message.data));
}
} // namespace PlainReplayLine
