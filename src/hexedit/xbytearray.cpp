#include "xbytearray.h"

#include "hextext.h"

#include <utility>

namespace {
/// How many of `length` elements from a position on there are.
int available(const QByteArray &array, int position, int length)
{
    return qBound(0, length, array.size() - position);
}
} // namespace

QByteArray &XByteArray::data()
{
    return m_data;
}

void XByteArray::setData(QByteArray data)
{
    m_data = std::move(data);
    m_changedFlags = QByteArray(m_data.size(), 0);
}

int XByteArray::size()
{
    return qBound(0, m_bytesEnabled, m_data.size());
}

int XByteArray::maxSize() const
{
    return qMin(m_maximumSize, m_bytesEnabled);
}

void XByteArray::setMaximumSize(int size)
{
    m_maximumSize = size;
}

int XByteArray::bytesEnabled() const
{
    return m_bytesEnabled;
}

void XByteArray::setBytesEnabled(int count)
{
    m_bytesEnabled = count;
    const int wanted = qMin(count, mostBytes);
    if (wanted <= m_data.size())
        return;
    const int missing = wanted - m_data.size();
    m_data.append(missing, 0);
    m_changedFlags.append(missing, 0);
}

int XByteArray::addressOffset()
{
    return m_addressOffset;
}

void XByteArray::setAddressOffset(int offset)
{
    m_addressOffset = offset;
}

int XByteArray::addressWidth()
{
    return m_addressWidth;
}

void XByteArray::setAddressWidth(int width)
{
    if (width >= 0 && width < 7)
        m_addressWidth = width;
}

int XByteArray::realAddressNumbers()
{
    if (m_previousSize != size())
        m_realAddressNumbers = addressText(m_addressOffset, size(), m_addressWidth).length();
    return m_realAddressNumbers;
}

bool XByteArray::dataChanged(int position)
{
    return contains(position) && m_changedFlags.at(position) != 0;
}

QByteArray XByteArray::dataChanged(int position, int length)
{
    return contains(position) ? m_changedFlags.mid(position, qMax(0, length)) : QByteArray();
}

void XByteArray::setDataChanged(int position, bool changed)
{
    if (contains(position))
        m_changedFlags[position] = changed ? 1 : 0;
}

void XByteArray::setDataChanged(int position, QByteArray const &changed)
{
    if (!contains(position))
        return;
    const int length = available(m_changedFlags, position, changed.size());
    m_changedFlags.replace(position, length, changed.constData(), length);
}

void XByteArray::insert(int position, char byte)
{
    if (!contains(position) && position != m_data.size())
        return;
    m_data.insert(position, byte);
    m_changedFlags.insert(position, 1, 1);
}

void XByteArray::insert(int position, QByteArray const &bytes)
{
    if (!contains(position) && position != m_data.size())
        return;
    // Counted before they may grow: they can be our own.
    const int count = bytes.size();
    m_data.insert(position, bytes);
    m_changedFlags.insert(position, count, 1);
}

void XByteArray::remove(int position, int length)
{
    if (!contains(position) || length <= 0)
        return;
    m_data.remove(position, length);
    m_changedFlags.remove(position, length);
}

void XByteArray::replace(int position, char byte)
{
    if (!contains(position))
        return;
    m_data[position] = byte;
    m_changedFlags[position] = 1;
}

void XByteArray::replace(int position, QByteArray const &bytes)
{
    replace(position, bytes.size(), bytes);
}

void XByteArray::replace(int position, int length, QByteArray const &bytes)
{
    if (!contains(position))
        return;
    const int replaced = available(m_data, position, length);
    // Held apart from what changes: they can be our own.
    const QByteArray put = bytes.left(replaced);
    m_data.replace(position, replaced, put);
    m_changedFlags.replace(position, replaced, QByteArray(put.size(), 1));
}

QChar XByteArray::asciiChar(int position)
{
    return contains(position) ? printable(m_data.at(position)) : printable('\0');
}

QString XByteArray::toRedableString(int start, int end)
{
    const int shown = size();
    // Behind the bytes the lines are empty, and behind the limit there is nothing that they could stand for.
    const int last = end < 0 ? shown : qMin(end, qMax(shown, qMin(maxSize(), mostBytes)));
    const int width = qMax(realAddressNumbers(), m_addressWidth);
    QString text;
    for (int line = qMax(0, start); line < last; line += dumpBytesPerLine)
        text += dumpLine(addressText(m_addressOffset, line, width),
                         QByteArray::fromRawData(m_data.constData(), shown).mid(line, dumpBytesPerLine));
    return text;
}

bool XByteArray::contains(int position) const
{
    return position >= 0 && position < m_data.size();
}
