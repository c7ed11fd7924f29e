#pragma once

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// Files for replays, in a folder of their own.
class Recordings
{
public:
    QString path(const QString &name) const { return m_directory.filePath(name); }

    /// A text of the file logger with one frame a number, so many milliseconds apart; the numbers are the only byte.
    QString log(quint32 identifier, int frames, int gapMilliseconds,
                const QString &name = QStringLiteral("log.txt")) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write("# timestamp id (dlc): data\n");
        for (int i = 0; i < frames; ++i) {
            const int microseconds = i * gapMilliseconds * 1000;
            file.write(QStringLiteral(" %1.%2 0x%3/%4 (1): %5;0\n")
                           .arg(microseconds / 1000000)
                           .arg(microseconds % 1000000, 6, 10, QLatin1Char('0'))
                           .arg(identifier, 3, 16, QLatin1Char('0'))
                           .arg(identifier)
                           .arg(i % 256, 2, 16, QLatin1Char('0'))
                           .toLatin1());
        }
        return file.fileName();
    }

private:
    QTemporaryDir m_directory;
};
