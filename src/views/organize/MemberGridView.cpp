#include "MemberGridView.h"

#include "MemberCellDelegate.h"
#include "MemberGridProxy.h"
#include "MemberListModel.h"
#include "MemberRowSelectionModel.h"

#include <algorithm>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

namespace {

constexpr int RowHeight = 22;

// Widths in pixels by column; the nickname and the calendar are hidden.
constexpr int ColumnWidths[MemberListModel::ColumnCount]
    = { 120, 90, 0, 80, 56, 56, 160, 110, 110, 160, 110, 96, 160, 0, 76 };

} // namespace

MemberGridView::MemberGridView(MemberGridProxy *grid, const QString &title, QWidget *parent)
    : QTableView(parent)
    , m_grid(grid)
    , m_delegate(new MemberCellDelegate(this))
{
    setAccessibleName(title);
    setModel(grid);
    m_selection = new MemberRowSelectionModel(grid, this);
    QItemSelectionModel *old = selectionModel();
    setSelectionModel(m_selection);
    delete old;
    setItemDelegate(m_delegate);

    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
        | QAbstractItemView::AnyKeyPressed | QAbstractItemView::SelectedClicked);
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::MoveAction);
    setWordWrap(false);
    setTabKeyNavigation(true);
    setAlternatingRowColors(true);

    // Every row is as high as every other: the view never measures 100,000 rows.
    QHeaderView *rows = verticalHeader();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(RowHeight);
    rows->hide();

    QHeaderView *columns = horizontalHeader();
    columns->setSectionResizeMode(QHeaderView::Interactive);
    columns->setHighlightSections(false);
    for (int column = 0; column < MemberListModel::ColumnCount; ++column) {
        if (ColumnWidths[column] == 0)
            setColumnHidden(column, true);
        else
            setColumnWidth(column, ColumnWidths[column]);
    }
    // Unsorted (the list order) until a header is clicked; the third click
    // on a header returns to it.
    columns->setSortIndicator(-1, Qt::AscendingOrder);
    columns->setSortIndicatorClearable(true);
    setSortingEnabled(true);
}

QList<int> MemberGridView::selectedMemberRows() const
{
    QList<int> gridRows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        gridRows.append(index.row());
    std::sort(gridRows.begin(), gridRows.end());
    QList<int> rows;
    rows.reserve(gridRows.size());
    for (const int row : std::as_const(gridRows)) {
        const int memberRow = m_grid->memberRow(row);
        if (memberRow >= 0)
            rows.append(memberRow);
    }
    return rows;
}

QList<DraggedMember> MemberGridView::selectedMembers() const
{
    QList<DraggedMember> members;
    for (const int row : selectedMemberRows()) {
        const UserInfo &member = m_grid->members()->member(row);
        members.append({ member.id, member.isMale() });
    }
    return members;
}

void MemberGridView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete && state() != QAbstractItemView::EditingState) {
        event->accept();
        Q_EMIT deleteRequested();
        return;
    }
    QTableView::keyPressEvent(event);
}

void MemberGridView::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid() || m_grid->isBlankRow(index.row()))
        return;
    if (!selectionModel()->isRowSelected(index.row(), {}))
        selectionModel()->setCurrentIndex(
            index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    Q_EMIT contextMenuRequested(index, event->globalPos());
}

void MemberGridView::focusInEvent(QFocusEvent *event)
{
    QTableView::focusInEvent(event);
    Q_EMIT focusEntered();
}

void MemberGridView::startDrag(Qt::DropActions supportedActions)
{
    const QList<DraggedMember> members = selectedMembers();
    if (members.isEmpty())
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(MemberDragFormat::toMimeData(members));
    drag->setPixmap(QPixmap());
    // A drop places the members; their rows stay here whatever the target
    // reports, so the result is not acted on.
    drag->exec(supportedActions & (Qt::CopyAction | Qt::MoveAction), Qt::MoveAction);
}
