#include "OrganizeTreeView.h"

#include "DirectoryNode.h"
#include "GroupTreeModel.h"
#include "OrganizeTreeDelegate.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QPainter>

OrganizeTreeView::OrganizeTreeView(GroupTreeModel *tree, const QString &title, QWidget *parent)
    : QTreeView(parent)
    , m_tree(tree)
{
    setAccessibleName(title);
    setModel(tree);
    setItemDelegate(new OrganizeTreeDelegate(this));
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    // The group taking the drop is outlined instead (see paintEvent): a
    // drop never lands between two nodes.
    setDropIndicatorShown(false);
    setAutoExpandDelay(700);
    // The top groups open, so that the organisation shows at a glance.
    expandToDepth(1);
    connect(tree, &QAbstractItemModel::modelReset, this, [this] { expandToDepth(1); });
}

QModelIndex OrganizeTreeView::selectedIndex() const
{
    if (m_dropHighlight.isValid())
        return m_dropHighlight;
    return currentIndex();
}

const DirectoryNode *OrganizeTreeView::selectedNode() const
{
    return m_tree->nodeForIndex(selectedIndex());
}

void OrganizeTreeView::selectIndex(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        expand(up);
    setCurrentIndex(index);
    scrollTo(index);
}

void OrganizeTreeView::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    setCurrentIndex(index);
    Q_EMIT contextMenuRequested(index, event->globalPos());
}

void OrganizeTreeView::focusInEvent(QFocusEvent *event)
{
    QTreeView::focusInEvent(event);
    Q_EMIT focusEntered();
}

void OrganizeTreeView::startDrag(Qt::DropActions)
{
    const QModelIndex index = currentIndex();
    if (!index.isValid() || !(m_tree->flags(index) & Qt::ItemIsDragEnabled))
        return;
    QMimeData *data = m_tree->mimeData({ index });
    if (!data)
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    // The drop has moved the node already; nothing is removed here.
    drag->exec(Qt::MoveAction, Qt::MoveAction);
}

QModelIndex OrganizeTreeView::dropTarget(const QMimeData *data, const QPoint &pos) const
{
    const QModelIndex index = indexAt(pos);
    if (!index.isValid() || !data)
        return {};
    if (!m_tree->canDropMimeData(data, Qt::MoveAction, -1, -1, index))
        return {};
    return index;
}

void OrganizeTreeView::setDropHighlight(const QModelIndex &index)
{
    if (m_dropHighlight == index)
        return;
    m_dropHighlight = index;
    viewport()->update();
}

void OrganizeTreeView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!event->mimeData()->hasFormat(m_tree->mimeTypes().at(0))
        && !event->mimeData()->hasFormat(m_tree->mimeTypes().at(1))) {
        event->ignore();
        return;
    }
    // Accepted for now: whether a drop may happen is decided on every move.
    setState(QAbstractItemView::DraggingState);
    event->accept();
}

void OrganizeTreeView::dragMoveEvent(QDragMoveEvent *event)
{
    // Auto-scroll and opening a hovered group after a while.
    QTreeView::dragMoveEvent(event);
    const QModelIndex target = dropTarget(event->mimeData(), event->position().toPoint());
    setDropHighlight(target);
    if (target.isValid()) {
        // A copy request moves as well: the members stay in the grid anyway.
        event->setDropAction(Qt::MoveAction);
        event->accept(visualRect(target));
    } else {
        event->ignore();
    }
}

void OrganizeTreeView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTreeView::dragLeaveEvent(event);
    setDropHighlight({});
}

void OrganizeTreeView::dropEvent(QDropEvent *event)
{
    const QModelIndex target = dropTarget(event->mimeData(), event->position().toPoint());
    setDropHighlight({});
    stopAutoScroll();
    setState(QAbstractItemView::NoState);
    if (!target.isValid()) {
        event->ignore();
        return;
    }
    const QPersistentModelIndex where(target);
    if (!m_tree->dropMimeData(event->mimeData(), Qt::MoveAction, -1, -1, target)) {
        event->ignore();
        Q_EMIT editRefused();
        return;
    }
    event->setDropAction(Qt::MoveAction);
    event->accept();
    expand(where);
    Q_EMIT dropped(where);
}

void OrganizeTreeView::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (!m_dropHighlight.isValid())
        return;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(visualRect(m_dropHighlight).adjusted(1, 1, -1, -1));
}
