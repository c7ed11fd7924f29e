#pragma once

#include <QByteArray>

class QIODevice;

/// Reads a device from its start to its end, in large pieces, and hands out what is asked for in place.
///
/// Not mapped into memory: a file that is cut while it is read then ends early, and nothing worse.
class CaptureInput
{
public:
    /// @param device open for reading; must outlive the input
    explicit CaptureInput(QIODevice &device);

    /// The next `size` bytes without going past them; null if there are fewer, or no memory for them. Good until the
    /// next call.
    const uchar *peek(quint32 size);
    /// Goes past bytes, whether peeked at or not. False if there are fewer.
    bool skip(quint64 size);

    bool atEnd() { return peek(1) == nullptr; }
    /// Bytes before the next one.
    quint64 position() const { return m_position; }
    /// Bytes of the device, as far as it knows.
    quint64 size() const;
    /// Whether the device failed, which looks like its end otherwise.
    bool failed() const { return m_failed; }

private:
    quint32 available() const { return static_cast<quint32>(m_buffer.size()) - m_next; }
    bool fill(quint32 size);

    QIODevice &m_device;
    QByteArray m_buffer;
    quint32 m_next = 0;
    quint64 m_position = 0;
    bool m_failed = false;
};
