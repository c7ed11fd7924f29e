#pragma once

#include <QAbstractItemView>

class QHeaderView;

/// A table of frames for models of any size.
///
/// Rows have one height and no sections of their own, so that memory and the cost of a new row do not depend on how
/// many there are. It selects whole rows and copies them as text.
///
/// While it follows, the last row stays in sight; scrolling up ends that, scrolling to the end starts it again.
class FrameView : public QAbstractItemView
{
    Q_OBJECT

public:
    explicit FrameView(QWidget *parent = nullptr);

    /// A view that never follows keeps the rows in sight when rows come in above.
    void setFollowAllowed(bool allowed);
    bool isFollowing() const { return m_following; }

    QHeaderView *header() const { return m_header; }
    /// The row at the top, -1 without rows.
    int firstVisibleRow() const;

    void setModel(QAbstractItemModel *model) override;
    QRect visualRect(const QModelIndex &index) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;
    QModelIndex indexAt(const QPoint &point) const override;
    void reset() override;

public slots:
    void setFollowing(bool following);
    /// The selected rows as lines of text, to the clipboard.
    void copySelection();

    /// Letters search nothing: a search would read the whole trace back, row by row.
    void keyboardSearch(const QString &) override {}

signals:
    void followingChanged(bool following);

protected:
    void rowsInserted(const QModelIndex &parent, int start, int end) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;

    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override;
    int verticalOffset() const override;
    bool isIndexHidden(const QModelIndex &index) const override;
    void setSelection(const QRect &rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection &selection) const override;

private:
    int rows() const;
    int wholeRowsPerPage() const;
    void takeMetrics();
    void resizeColumnsToSamples();
    void updateScrollBars();
    void noteUserScroll(int value);
    void paintRow(QPainter &painter, QStyleOptionViewItem option, int row) const;

    QHeaderView *m_header;
    int m_rowHeight = 1;
    bool m_followAllowed = true;
    bool m_following = true;
    bool m_adapting = false; // the scroll bar changes by our hand, not by the user's
};
