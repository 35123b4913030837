#pragma once

#include "MemberDragFormat.h"

#include <QList>
#include <QTableView>

class MemberCellDelegate;
class MemberGridProxy;
class MemberRowSelectionModel;

// A member grid: one row per member, the blank new-member row last, cells
// edited in place through the member cell delegate, rows sorted by a header
// click (a third click returns to the list order). Selected rows are dragged
// to a tree as a member-drag block in grid order; the rows stay, whatever
// the drop does. Delete and the context menu are handed to the view.
class MemberGridView final : public QTableView
{
    Q_OBJECT

public:
    MemberGridView(MemberGridProxy *grid, const QString &title, QWidget *parent = nullptr);

    MemberGridProxy *grid() const { return m_grid; }
    MemberCellDelegate *cellDelegate() const { return m_delegate; }
    MemberRowSelectionModel *rowSelection() const { return m_selection; }

    // The list rows of the selected member rows in grid order (the blank
    // row left out).
    QList<int> selectedMemberRows() const;
    // The same members as a drag carries them.
    QList<DraggedMember> selectedMembers() const;

Q_SIGNALS:
    void deleteRequested();
    void contextMenuRequested(const QModelIndex &index, const QPoint &globalPos);
    void focusEntered();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;

private:
    MemberGridProxy *m_grid;
    MemberCellDelegate *m_delegate;
    MemberRowSelectionModel *m_selection;
};
