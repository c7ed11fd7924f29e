// Which bytes are considered. The bits belong to positions: nothing that happens to the bytes moves them.

#include "qhexeditprivate.h"

namespace {
/// A bit for each byte of a count, but no more than an editor has before it is told any: a count that only means "no
/// limit" needs no memory for bytes that nobody brings along.
int bitCount(int count)
{
    return qBound(0, count, XByteArray::mostBytes);
}
} // namespace

void QHexEditPrivate::setConsiderPos(int index)
{
    if (index < 0 || index == m_considerPos)
        return;
    m_considerPos = index;
    if (m_considerDragClears)
        unsetConsideredByte(index);
    else
        setConsideredByte(index);
}

void QHexEditPrivate::setConsideredByte(int index)
{
    if (index >= 0 && index < m_considerBits.size())
        m_considerBits.setBit(index);
}

void QHexEditPrivate::unsetConsideredByte(int index)
{
    if (index >= 0 && index < m_considerBits.size())
        m_considerBits.clearBit(index);
}

void QHexEditPrivate::toggleByteHighlight(int index)
{
    if (index >= 0 && index < m_considerBits.size())
        m_considerBits.toggleBit(index);
}

void QHexEditPrivate::setBytesHighlighted(bool highlighted)
{
    m_considerBits = QBitArray(m_considerBits.size(), highlighted);
    update();
}

void QHexEditPrivate::setConsideration(bool enabled)
{
    m_considerationEnabled = enabled;
}

void QHexEditPrivate::setConsiderBitArray(QBitArray bits)
{
    m_considerBits = bits;
}

QBitArray QHexEditPrivate::getConsiderBitArray()
{
    return m_considerBits;
}

void QHexEditPrivate::setMaximumByteCount(int count)
{
    m_xData.setMaximumSize(count);
    m_considerBits.resize(bitCount(count));
    update();
}

void QHexEditPrivate::setByteCountEnabled(int count)
{
    m_xData.setBytesEnabled(count);
    if (bitCount(count) > m_considerBits.size())
        m_considerBits.resize(bitCount(count));
    update();
}

bool QHexEditPrivate::isConsidered(int index) const
{
    return index >= 0 && index < m_considerBits.size() && m_considerBits.testBit(index);
}
