#pragma once

#include "canrawcomparemessage.h"
#include "canrecords.h"

#include <QObject>
#include <QVariant>
#include <QVector>

/// The templates whose frames the trace shows in colour.
///
/// A mark keeps its colour while it exists; a frame that several marks match takes the colour of the first.
class FrameMarks : public QObject
{
    Q_OBJECT

public:
    /// More colours than these nobody tells apart.
    static constexpr int maxMarks = 8;

    using QObject::QObject;

    int count() const { return m_marks.size(); }
    bool isFull() const { return count() >= maxMarks; }
    const CANRAW::CanRawCompareMessage &at(int index) const { return m_marks[index].pattern; }
    /// 0 to maxMarks - 1, see markColor().
    int colorAt(int index) const { return m_marks[index].color; }

    /// Takes the first free colour. False if there is none.
    bool add(const CANRAW::CanRawCompareMessage &pattern);
    void replace(int index, const CANRAW::CanRawCompareMessage &pattern);
    void remove(int index);
    void clear();

    /// The colour of the first mark that the frame matches; -1 for none.
    int colorFor(const CAN::CanRxMessage &frame) const;

    /// For the settings: the marks in their order.
    QVariantList toVariant() const;
    /// Takes the place of all marks. Entries that are no mark are left out.
    void setFromVariant(const QVariantList &list);

signals:
    /// A mark came, went or changed.
    void changed();

private:
    struct Mark
    {
        CANRAW::CanRawCompareMessage pattern;
        int color;
    };

    bool append(const CANRAW::CanRawCompareMessage &pattern);

    QVector<Mark> m_marks;
};
