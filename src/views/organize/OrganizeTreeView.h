#pragma once

#include <QPersistentModelIndex>
#include <QTreeView>

class DirectoryNode;
class GroupTreeModel;

// A group tree (the organisation or the guest structure). Groups are
// renamed in place (F2 or a click on the selected group; never the root nor
// a membership). A group or membership dragged inside the tree moves with
// its subtree under the group it is dropped on, as its last child; members
// dragged from a grid are placed under it. While hovering, only a group the
// rules accept takes the drop; after a drop the target opens. A drop never
// removes anything at its source.
class OrganizeTreeView final : public QTreeView
{
    Q_OBJECT

public:
    OrganizeTreeView(GroupTreeModel *tree, const QString &title, QWidget *parent = nullptr);

    GroupTreeModel *tree() const { return m_tree; }
    // The node the commands act on: the group highlighted as a drop target
    // during a drag, else the caret node.
    QModelIndex selectedIndex() const;
    const DirectoryNode *selectedNode() const;
    // Selects a node, opening the groups above it.
    void selectIndex(const QModelIndex &index);

Q_SIGNALS:
    void contextMenuRequested(const QModelIndex &index, const QPoint &globalPos);
    void focusEntered();
    // A drop went through (the target has been opened).
    void dropped(const QModelIndex &target);
    // The tree's model turned a drop or a rename down (its refusal says why).
    void editRefused();

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The group under pos that takes data, else an invalid index.
    QModelIndex dropTarget(const QMimeData *data, const QPoint &pos) const;
    void setDropHighlight(const QModelIndex &index);

    GroupTreeModel *m_tree;
    QPersistentModelIndex m_dropHighlight;
};
