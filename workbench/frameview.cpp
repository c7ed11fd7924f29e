#include "frameview.h"

#include "framecolumn.h"
#include "framedelegate.h"
#include "markcolor.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr int rowPadding = 4;
constexpr int cellPadding = 20;
constexpr int cellInset = 4;
// A clipboard larger than this helps nobody and stops the window while it is made.
constexpr int maxCopiedRows = 100'000;
} // namespace

FrameView::FrameView(QWidget *parent)
    : QAbstractItemView(parent)
    , m_header(new QHeaderView(Qt::Horizontal, this))
{
    setItemDelegate(new FrameDelegate(this));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setAlternatingRowColors(true);
    setTabKeyNavigation(false);

    m_header->setSectionsClickable(false);
    m_header->setStretchLastSection(true);
    m_header->setHighlightSections(false);
    connect(m_header, &QHeaderView::sectionResized, this, [this] {
        updateScrollBars();
        viewport()->update();
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &FrameView::noteUserScroll);
    takeMetrics();
}

void FrameView::setFollowAllowed(bool allowed)
{
    m_followAllowed = allowed;
    setFollowing(allowed);
}

int FrameView::firstVisibleRow() const
{
    return rows() > 0 ? verticalScrollBar()->value() : -1;
}

void FrameView::setModel(QAbstractItemModel *model)
{
    QAbstractItemView::setModel(model);
    m_header->setModel(model);
    resizeColumnsToSamples();
    updateGeometries();
}

QRect FrameView::visualRect(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    const qint64 y = (static_cast<qint64>(index.row()) - verticalScrollBar()->value()) * m_rowHeight;
    // Far away is far away: beyond any screen, and within what a rectangle can hold.
    constexpr qint64 far = std::numeric_limits<int>::max() / 4;
    return {m_header->sectionViewportPosition(index.column()), static_cast<int>(qBound(-far, y, far)),
            m_header->sectionSize(index.column()), m_rowHeight};
}

void FrameView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    const int page = wholeRowsPerPage();
    const int top = verticalScrollBar()->value();
    const int row = index.row();
    if (hint == PositionAtTop || (hint == EnsureVisible && row < top))
        verticalScrollBar()->setValue(row);
    else if (hint == PositionAtBottom || (hint == EnsureVisible && row >= top + page))
        verticalScrollBar()->setValue(row - page + 1);
    else if (hint == PositionAtCenter)
        verticalScrollBar()->setValue(row - page / 2);
}

QModelIndex FrameView::indexAt(const QPoint &point) const
{
    const qint64 row = point.y() < 0 ? -1 : static_cast<qint64>(verticalScrollBar()->value()) + point.y() / m_rowHeight;
    const int column = m_header->logicalIndexAt(point.x());
    if (row < 0 || row >= rows() || column < 0)
        return {};
    return model()->index(static_cast<int>(row), column);
}

void FrameView::reset()
{
    QAbstractItemView::reset();
    updateScrollBars();
    // A trace that starts anew is watched from its start.
    if (rows() == 0)
        setFollowing(true);
    viewport()->update();
}

void FrameView::setFollowing(bool following)
{
    following = following && m_followAllowed;
    if (following) {
        const QScopedValueRollback<bool> adapting(m_adapting, true);
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    }
    if (following == m_following)
        return;
    m_following = following;
    emit followingChanged(following);
}

void FrameView::copySelection()
{
    QStringList lines;
    const QItemSelection selection = selectionModel()->selection();
    QVector<QPair<int, int>> ranges;
    for (const QItemSelectionRange &range : selection)
        ranges.append({range.top(), range.bottom()});
    std::sort(ranges.begin(), ranges.end());
    for (const auto &range : qAsConst(ranges)) {
        for (int row = range.first; row <= range.second && lines.size() < maxCopiedRows; ++row)
            lines.append(model()->index(row, 0).data(FrameRoles::ClipboardRole).toString());
    }
    if (!lines.isEmpty())
        QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

void FrameView::rowsInserted(const QModelIndex &parent, int start, int end)
{
    QAbstractItemView::rowsInserted(parent, start, end);
    const int top = verticalScrollBar()->value();
    updateScrollBars();
    // Rows that come in above push nothing out of sight; at the very top they show.
    if (!m_following && top > 0 && start <= top) {
        const QScopedValueRollback<bool> adapting(m_adapting, true);
        verticalScrollBar()->setValue(top + end - start + 1);
    }
    viewport()->update();
}

void FrameView::paintEvent(QPaintEvent *event)
{
    if (model() == nullptr)
        return;
    QPainter painter(viewport());
    QStyleOptionViewItem option = viewOptions();
    option.widget = this;
    const int first = verticalScrollBar()->value() + event->rect().top() / m_rowHeight;
    const int last = static_cast<int>(std::min<qint64>(
        rows() - 1LL, static_cast<qint64>(verticalScrollBar()->value()) + event->rect().bottom() / m_rowHeight));
    for (int row = first; row <= last; ++row)
        paintRow(painter, option, row);
}

void FrameView::paintRow(QPainter &painter, QStyleOptionViewItem option, int row) const
{
    const int y = (row - verticalScrollBar()->value()) * m_rowHeight;
    option.state.setFlag(QStyle::State_Selected, selectionModel()->isRowSelected(row, {}));
    option.state.setFlag(QStyle::State_HasFocus, false);
    option.features.setFlag(QStyleOptionViewItem::Alternate, alternatingRowColors() && row % 2 == 1);
    option.rect = QRect(0, y, viewport()->width(), m_rowHeight);
    style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &option, &painter, this);
    const QVariant mark = model()->index(row, 0).data(FrameRoles::MarkRole);
    if (mark.isValid() && mark.toInt() >= 0 && !option.state.testFlag(QStyle::State_Selected))
        painter.fillRect(option.rect, markColor(option.palette, mark.toInt()));
    const bool current = hasFocus() && currentIndex().row() == row;
    for (int column = 0; column < m_header->count(); ++column) {
        option.rect = QRect(m_header->sectionViewportPosition(column), y, m_header->sectionSize(column), m_rowHeight);
        if (option.rect.right() < 0 || option.rect.left() > viewport()->width())
            continue;
        // Between digits that end at the right of one cell and those that begin at the left of the next.
        option.rect.adjust(cellInset, 0, -cellInset, 0);
        option.state.setFlag(QStyle::State_HasFocus, current && currentIndex().column() == column);
        itemDelegate()->paint(&painter, option, model()->index(row, column));
    }
}

void FrameView::resizeEvent(QResizeEvent *event)
{
    QAbstractItemView::resizeEvent(event);
    updateGeometries();
}

void FrameView::changeEvent(QEvent *event)
{
    QAbstractItemView::changeEvent(event);
    if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange)
        return;
    takeMetrics();
    resizeColumnsToSamples();
    updateGeometries();
}

void FrameView::updateGeometries()
{
    const int height = m_header->sizeHint().height();
    setViewportMargins(0, height, 0, 0);
    const QRect area = viewport()->geometry();
    m_header->setGeometry(area.left(), area.top() - height, area.width(), height);
    updateScrollBars();
    QAbstractItemView::updateGeometries();
}

void FrameView::scrollContentsBy(int dx, int dy)
{
    Q_UNUSED(dy)
    if (dx != 0)
        m_header->setOffset(horizontalScrollBar()->value());
    viewport()->update();
}

QModelIndex FrameView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    Q_UNUSED(modifiers)
    if (rows() == 0)
        return {};
    // Without a current row, keys start from what is in sight.
    const QModelIndex from = currentIndex();
    qint64 row = from.isValid() ? from.row() : verticalScrollBar()->value();
    int column = qMax(0, from.column());
    switch (action) {
    case MoveUp:
    case MovePrevious:
        --row;
        break;
    case MoveDown:
    case MoveNext:
        ++row;
        break;
    case MovePageUp:
        row -= wholeRowsPerPage();
        break;
    case MovePageDown:
        row += wholeRowsPerPage();
        break;
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = rows() - 1;
        break;
    case MoveLeft:
        column = qMax(0, column - 1);
        break;
    case MoveRight:
        column = qMin(m_header->count() - 1, column + 1);
        break;
    }
    return model()->index(static_cast<int>(qBound<qint64>(0, row, rows() - 1)), column);
}

int FrameView::horizontalOffset() const
{
    return horizontalScrollBar()->value();
}

int FrameView::verticalOffset() const
{
    // Qt adds pixels to this; in the depth of a long trace the exact number does not matter to it.
    constexpr qint64 deep = std::numeric_limits<int>::max() / 2;
    return static_cast<int>(std::min(static_cast<qint64>(verticalScrollBar()->value()) * m_rowHeight, deep));
}

bool FrameView::isIndexHidden(const QModelIndex &index) const
{
    Q_UNUSED(index)
    return false;
}

void FrameView::setSelection(const QRect &rect, QItemSelectionModel::SelectionFlags command)
{
    if (model() == nullptr || selectionModel() == nullptr)
        return;
    const QRect area = rect.normalized();
    const qint64 top = verticalScrollBar()->value() + qint64(std::floor(double(area.top()) / m_rowHeight));
    const qint64 bottom = verticalScrollBar()->value() + qint64(std::floor(double(area.bottom()) / m_rowHeight));
    const qint64 last = rows() - 1LL;
    if (bottom < 0 || top > last) {
        selectionModel()->select(QItemSelection(), command);
        return;
    }
    const QModelIndex from = model()->index(static_cast<int>(qMax<qint64>(top, 0)), 0);
    const QModelIndex to = model()->index(static_cast<int>(qMin(bottom, last)), m_header->count() - 1);
    selectionModel()->select(QItemSelection(from, to), command);
}

QRegion FrameView::visualRegionForSelection(const QItemSelection &selection) const
{
    QRegion region;
    for (const QItemSelectionRange &range : selection) {
        const QRect top = visualRect(range.topLeft());
        const QRect bottom = visualRect(range.bottomRight());
        region += QRect(QPoint(0, top.top()), QPoint(viewport()->width(), bottom.bottom())) & viewport()->rect();
    }
    return region;
}

int FrameView::rows() const
{
    return model() != nullptr ? model()->rowCount() : 0;
}

int FrameView::wholeRowsPerPage() const
{
    return qMax(1, viewport()->height() / m_rowHeight);
}

void FrameView::takeMetrics()
{
    const int proportional = fontMetrics().height();
    const int fixed = QFontMetrics(FrameDelegate::fixedWidthFont(font())).height();
    m_rowHeight = qMax(proportional, fixed) + rowPadding;
}

void FrameView::resizeColumnsToSamples()
{
    if (model() == nullptr)
        return;
    const QFontMetrics fixed(FrameDelegate::fixedWidthFont(font()));
    for (int column = 0; column < m_header->count(); ++column) {
        const auto header = [this, column](int role) { return model()->headerData(column, Qt::Horizontal, role); };
        const QFontMetrics metrics = header(FrameRoles::FixedWidthRole).toBool() ? fixed : fontMetrics();
        const int content = metrics.horizontalAdvance(header(FrameRoles::SampleTextRole).toString()) + cellPadding;
        m_header->resizeSection(column, qMax(content, m_header->sectionSizeHint(column)));
    }
}

void FrameView::updateScrollBars()
{
    const QScopedValueRollback<bool> adapting(m_adapting, true);
    const int page = wholeRowsPerPage();
    verticalScrollBar()->setPageStep(page);
    verticalScrollBar()->setRange(0, qMax(0, rows() - page));
    if (m_following)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(fontMetrics().averageCharWidth() * 4);
    horizontalScrollBar()->setRange(0, qMax(0, m_header->length() - viewport()->width()));
}

void FrameView::noteUserScroll(int value)
{
    if (!m_adapting)
        setFollowing(value >= verticalScrollBar()->maximum());
}
