#pragma once

#include <QWidget>

class FrameMarks;
class QHBoxLayout;

/// The legend of the marks: a button each, in the mark's colour, with a menu to change or remove it. Hidden while there
/// are no marks.
class MarkBar : public QWidget
{
    Q_OBJECT

public:
    /// @param marks must outlive the bar
    explicit MarkBar(FrameMarks *marks, QWidget *parent = nullptr);

signals:
    void editRequested(int index);

protected:
    void changeEvent(QEvent *event) override;

private:
    void rebuild();

    FrameMarks *m_marks;
    QHBoxLayout *m_layout;
};
