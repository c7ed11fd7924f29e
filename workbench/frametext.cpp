#include "frametext.h"

#include <QLocale>

namespace {
constexpr qint64 microsecondsPerSecond = 1'000'000;
constexpr qint64 secondsPerDay = 24 * 60 * 60;

QString translated(const char *text)
{
    return QCoreApplication::translate("FrameText", text);
}
} // namespace

namespace FrameText {

QString identifier(quint32 id, bool extended)
{
    const QString digits = QStringLiteral("%1").arg(id, extended ? 8 : 3, 16, QLatin1Char('0')).toUpper();
    return extended ? digits + QLatin1Char('x') : digits;
}

QString identifier(const CAN::CanMessage &message)
{
    return identifier(message.id, message.ext);
}

QString kind(const CAN::CanMessage &message)
{
    if (message.errorFrame)
        return translated(QT_TRANSLATE_NOOP("FrameText", "Error"));
    if (message.rtr)
        return translated(QT_TRANSLATE_NOOP("FrameText", "CAN remote"));
    if (!message.fd)
        return QStringLiteral("CAN");
    QString text = QStringLiteral("CAN FD");
    if (message.brs)
        text += QLatin1String(" BRS");
    if (message.extraFlag)
        text += QLatin1String(" ESI");
    return text;
}

QString data(const CAN::CanMessage &message)
{
    if (message.rtr)
        return {};
    return QString::fromLatin1(message.dataToByteArray().toHex(' ')).toUpper();
}

QString milliseconds(qint64 microseconds)
{
    const QString sign = microseconds < 0 ? QStringLiteral("-") : QString();
    // Unsigned, so that the smallest number has a magnitude too.
    const quint64 magnitude = microseconds < 0 ? 0 - static_cast<quint64>(microseconds)
                                               : static_cast<quint64>(microseconds);
    return QStringLiteral("%1%2.%3").arg(sign).arg(magnitude / 1000).arg(magnitude % 1000, 3, 10, QLatin1Char('0'));
}

QString timeOfDay(const CanTimeStamp &stamp)
{
    const qint64 day = secondsPerDay * microsecondsPerSecond;
    const qint64 within = ((microseconds(stamp) % day) + day) % day;
    const qint64 seconds = within / microsecondsPerSecond;
    const QLatin1Char zero('0');
    return QStringLiteral("%1:%2:%3.%4")
        .arg(seconds / 3600, 2, 10, zero)
        .arg(seconds / 60 % 60, 2, 10, zero)
        .arg(seconds % 60, 2, 10, zero)
        .arg(within % microsecondsPerSecond, 6, 10, zero);
}

qint64 microseconds(const CanTimeStamp &stamp)
{
    return stamp.seconds * microsecondsPerSecond + stamp.microseconds;
}

QString note(const QString &note)
{
    if (note == QLatin1String("Disconnected"))
        return translated(QT_TRANSLATE_NOOP("FrameText", "Disconnected"));
    const QLatin1String connect("Connect:");
    const int bitrateAt = note.lastIndexOf(QLatin1Char(':')) + 1;
    if (!note.startsWith(connect) || bitrateAt <= connect.size())
        return note;
    const QString device = note.mid(connect.size(), bitrateAt - 1 - connect.size());
    bool isNumber = false;
    const uint bitrate = note.midRef(bitrateAt).toUInt(&isNumber);
    if (!isNumber)
        return note;
    // Some interfaces have no bitrate of their own.
    if (bitrate == 0)
        return translated(QT_TRANSLATE_NOOP("FrameText", "Connected to %1")).arg(device);
    return translated(QT_TRANSLATE_NOOP("FrameText", "Connected to %1 at %2 kBit/s")).arg(device).arg(bitrate);
}

QString count(quint64 number)
{
    return QLocale().toString(number);
}

QString line(quint64 number, qint64 microsecondsSinceStart, const CAN::CanMessage &message)
{
    return QStringLiteral("%1\t%2\t%3\t%4\t%5\t%6")
        .arg(QString::number(number), milliseconds(microsecondsSinceStart), kind(message), identifier(message),
             QString::number(message.length), data(message));
}

} // namespace FrameText
