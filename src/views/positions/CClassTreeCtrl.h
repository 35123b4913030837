#pragma once

#include <QTreeView>

class CVelmarManagerDoc;
class MessageService;
class PositionTreeModel;
class QAction;

// The position list as a tree: the root "等级" and the positions under it.
// Its commands (add, rename, delete, move, default) are document operations
// through the editor; refusals are shown as the editor words them. F2 and a
// click on the selected position rename it in place, Delete deletes it; the
// pop-up on the root offers only "追加等级(&A)".
class CClassTreeCtrl final : public QTreeView
{
    Q_OBJECT

public:
    CClassTreeCtrl(
        CVelmarManagerDoc &document, MessageService &messages, QWidget *parent = nullptr);

    PositionTreeModel *positionModel() const { return m_model; }
    // The list row of the selected position; -1 for the root or nothing.
    int selectedRow() const;

    QAction *addPositionAction() const { return m_add; }
    QAction *renamePositionAction() const { return m_rename; }
    QAction *deletePositionAction() const { return m_delete; }
    QAction *moveUpAction() const { return m_moveUp; }
    QAction *moveDownAction() const { return m_moveDown; }
    QAction *defaultPositionAction() const { return m_default; }

    // The pop-up menu the tree shows for the selected node (the caller owns it).
    QMenu *createPopupMenu(QWidget *parent);

public Q_SLOTS:
    // A new position, selected and put into label editing.
    void addPosition();
    void renameSelected();
    // Position 1 and the last position are refused; anything else is confirmed first.
    void deleteSelected();
    // The selected position becomes the default; the root means none.
    void setSelectedAsDefault();
    void moveSelected(int delta);

Q_SIGNALS:
    // Whether a position (not the root) is selected, for the commands that need one.
    void positionSelectedChanged(bool selected);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void commitData(QWidget *editor) override;

private:
    void updateActions();
    void expandRoot();

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    PositionTreeModel *m_model;
    QAction *m_add;
    QAction *m_rename;
    QAction *m_delete;
    QAction *m_moveUp;
    QAction *m_moveDown;
    QAction *m_default;
};
