#pragma once

#include <QList>
#include <QWidget>

class CVelmarManagerDoc;
class FrozenGridView;
class MessageService;
class PermissionCellDelegate;
class PermissionTableModel;
class QAction;
class QMenu;
class QTreeView;

// The feature permission view: the organisation tree on the left chooses the
// members shown in the permission grid on the right (a group: its direct
// members; the root: everybody). The grid's header row and "Check all" row
// and its user ID and name columns stay in place. The tree is the document's
// own, so groups added elsewhere appear here at once; check boxes and
// account cells edit through the permission editor.
class CAccessControlFormView final : public QWidget
{
    Q_OBJECT

public:
    CAccessControlFormView(
        CVelmarManagerDoc &document, MessageService &messages, QWidget *parent = nullptr);

    QTreeView *groupTree() const { return m_tree; }
    FrozenGridView *grid() const { return m_grid; }
    PermissionTableModel *gridModel() const { return m_model; }

    // Commands of the main window offered in the grid's pop-up as well
    // ("删除 权限(&D)", "自动分配电话号码"), in this order.
    void setPopupActions(const QList<QAction *> &actions) { m_popupActions = actions; }
    QMenu *createGridMenu(QWidget *parent);
    // The members of the selected rows, in row order.
    QList<qint32> selectedMembers() const;

public Q_SLOTS:
    // "删除 权限": the selected members' records go (one step); shown, they
    // read as the defaults they get.
    void deleteSelectedPermissions();

Q_SIGNALS:
    void memberSelectionChanged(bool anySelected);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void showSelectedGroup();
    void selectRoot();
    void cellEdited(const QModelIndex &index);
    void fitColumns();

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    QTreeView *m_tree;
    PermissionTableModel *m_model;
    FrozenGridView *m_grid;
    QList<QAction *> m_popupActions;
    // Filling gives the members shown their default records, so the grid is
    // filled when it is on screen, not for a view nobody opened.
    bool m_fillPending = false;
};
