#include "captureinput.h"

#include <QIODevice>

#include <algorithm>

namespace {
constexpr quint32 pieceBytes = 1U << 18;
}

CaptureInput::CaptureInput(QIODevice &device)
    : m_device(device)
{
}

const uchar *CaptureInput::peek(quint32 size)
{
    if (available() < size && !fill(size))
        return nullptr;
    return reinterpret_cast<const uchar *>(m_buffer.constData()) + m_next;
}

bool CaptureInput::skip(quint64 size)
{
    while (size > 0) {
        if (available() == 0 && !fill(1))
            return false;
        const auto step = static_cast<quint32>(std::min<quint64>(size, available()));
        m_next += step;
        m_position += step;
        size -= step;
    }
    return true;
}

quint64 CaptureInput::size() const
{
    return static_cast<quint64>(std::max<qint64>(m_device.size(), 0));
}

/// Moves what is left to the front and reads on behind it until `size` bytes are there.
bool CaptureInput::fill(quint32 size)
{
    const quint32 left = available();
    m_buffer.remove(0, static_cast<int>(m_next));
    m_next = 0;
    quint32 filled = left;
    m_buffer.resize(static_cast<int>(std::max(size, pieceBytes)));
    while (filled < size) {
        const qint64 got = m_device.read(m_buffer.data() + filled, m_buffer.size() - static_cast<int>(filled));
        if (got <= 0) {
            m_failed = got < 0;
            break;
        }
        filled += static_cast<quint32>(got);
    }
    m_buffer.resize(static_cast<int>(filled));
    return filled >= size;
}
