#pragma once

#include <QFile>
#include <QTemporaryDir>

/// A text on the disk that a replay can play, as long as this object lives.
class Recording
{
public:
    explicit Recording(const QByteArray &text, const QString &name = QStringLiteral("recording.txt"))
        : m_path(m_directory.filePath(name))
    {
        QFile file(m_path);
        m_written = m_directory.isValid() && file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    }

    /// Empty if the disk did not take the text.
    QString path() const { return m_written ? m_path : QString(); }
    QString directory() const { return m_directory.path(); }

    /// One frame without data for each time in seconds, with the identifiers 001, 002 and so on.
    static QByteArray frames(const QList<double> &times)
    {
        QByteArray text;
        for (int i = 0; i < times.size(); ++i) {
            const auto microseconds = static_cast<qint64>(times[i] * 1e6 + 0.5);
            text += QStringLiteral(" %1.%2 0x%3/0 (0): ;0\n")
                        .arg(microseconds / 1000000)
                        .arg(microseconds % 1000000, 6, 10, QLatin1Char('0'))
                        .arg(i + 1, 3, 16, QLatin1Char('0'))
                        .toLatin1();
        }
        return text;
    }

private:
    QTemporaryDir m_directory;
    QString m_path;
    bool m_written = false;
};
