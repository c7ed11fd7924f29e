#pragma once

#include <QWidget>

class EmptyState;
class FrameView;
class QAbstractItemModel;
class QAction;
class QStackedWidget;

/// One view of the trace with what belongs around it: the words in its place while there is nothing to see, and the
/// way back to the newest frames.
class TracePage : public QWidget
{
    Q_OBJECT

public:
    /// @param follows new frames come in at the end, and the view goes with them
    TracePage(QAbstractItemModel *model, bool follows, QWidget *parent = nullptr);

    FrameView *view() const { return m_view; }
    EmptyState *emptyState() const { return m_emptyState; }
    /// Checkable: on while the view goes with the newest frames.
    QAction *followAction() const { return m_followAction; }
    bool showsEmptyState() const;

private:
    void addCopyAction();
    QWidget *makeFollowBar();
    void updatePage();

    QAbstractItemModel *m_model;
    FrameView *m_view;
    EmptyState *m_emptyState;
    QStackedWidget *m_pages;
    QAction *m_followAction;
};
