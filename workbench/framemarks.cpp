#include "framemarks.h"

#include "templatecomparison.h"

#include <algorithm>

bool FrameMarks::add(const CANRAW::CanRawCompareMessage &pattern)
{
    const bool added = append(pattern);
    if (added)
        emit changed();
    return added;
}

void FrameMarks::replace(int index, const CANRAW::CanRawCompareMessage &pattern)
{
    m_marks[index].pattern = pattern;
    emit changed();
}

void FrameMarks::remove(int index)
{
    m_marks.removeAt(index);
    emit changed();
}

void FrameMarks::clear()
{
    if (m_marks.isEmpty())
        return;
    m_marks.clear();
    emit changed();
}

int FrameMarks::colorFor(const CAN::CanRxMessage &frame) const
{
    // An error frame says what the controller saw, it carries no message.
    if (frame.message.errorFrame)
        return -1;
    const auto mark = std::find_if(m_marks.cbegin(), m_marks.cend(), [&frame](const Mark &candidate) {
        return CANRAW::matches(candidate.pattern, frame);
    });
    return mark == m_marks.cend() ? -1 : mark->color;
}

QVariantList FrameMarks::toVariant() const
{
    QVariantList list;
    for (const Mark &mark : m_marks)
        list.append(mark.pattern.toByteArray());
    return list;
}

void FrameMarks::setFromVariant(const QVariantList &list)
{
    m_marks.clear();
    for (const QVariant &entry : list) {
        const auto pattern = CANRAW::CanRawCompareMessage::fromByteArray(
            entry.type() == QVariant::ByteArray ? entry.toByteArray() : QByteArray());
        if (pattern.valid)
            append(pattern);
    }
    emit changed();
}

bool FrameMarks::append(const CANRAW::CanRawCompareMessage &pattern)
{
    for (int color = 0; color < maxMarks; ++color) {
        const bool taken = std::any_of(m_marks.cbegin(), m_marks.cend(),
                                       [color](const Mark &mark) { return mark.color == color; });
        if (!taken) {
            m_marks.append({pattern, color});
            return true;
        }
    }
    return false;
}
