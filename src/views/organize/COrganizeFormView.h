#pragma once

#include "EditRefusal.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

class CVelmarManagerDoc;
class DirectoryNode;
class InviteRecipientSink;
class MemberGridProxy;
class MemberGridView;
class MessageService;
class OrganizeTreeView;
class QAction;
class QLineEdit;
class QMenu;
class QSplitter;
class RegistryHives;

// The organisation view: the organisation tree "类别" beside the member
// grid "会员列表", and below them the guest tree "论坛结构" beside the
// guest grid "论坛用户列表". Members are created by typing a user ID into
// a grid's blank row and edited in place; groups are added, renamed,
// deleted and moved in the trees; members are placed in groups by dragging
// grid rows onto a group or by "添加群组". Every edit is a document
// operation and one step of its journal; a refused one is shown as a
// balloon at the offending cell. The grids can be narrowed by a filter box
// and sorted by a column, which never changes the saved order.
class COrganizeFormView final : public QWidget
{
    Q_OBJECT

public:
    // The view's commands, from the edit menu and from its pop-up menus.
    enum class Command {
        AddGroup, // 添加 类别
        RenameGroup, // 修改 类别
        DeleteNode, // 删除 类别: the selected group or membership
        AddMember, // 添加 用户: the blank row of the focused grid
        DeleteMembers, // 删除 用户
        MoveUp,
        MoveDown,
        MoveFirst,
        MoveLast,
        PlaceMembers, // 添加群组
        PositionList, // 等级列表
        SendMail, // 登记发送邮件: the selected members to the mail composer
    };

    // hives: where the splitter sizes are kept (nothing kept without).
    COrganizeFormView(CVelmarManagerDoc &document, MessageService &messages,
        RegistryHives *hives = nullptr, QWidget *parent = nullptr);
    ~COrganizeFormView() override;

    static QString caption(); // 类别编辑

    // The invitation mail composer that "登记发送邮件" hands the selected
    // members to; without one the command stays greyed.
    void setMailRecipientSink(InviteRecipientSink *sink) { m_mailSink = sink; }

    MemberGridView *memberGrid(bool guest) const { return guest ? m_guestGrid : m_memberGrid; }
    OrganizeTreeView *tree(bool guest) const { return guest ? m_guestTree : m_regularTree; }
    QLineEdit *filterBox(bool guest) const { return guest ? m_guestFilter : m_memberFilter; }

    // The tree and grid the commands act on: the one that last had the focus.
    bool guestTreeActive() const { return m_guestTreeActive; }
    bool guestGridActive() const { return m_guestGridActive; }

    bool isCommandEnabled(Command command) const;
    void runCommand(Command command);
    // The pop-up menus as they open (built anew each time).
    QMenu *memberMenu(bool guest);
    QMenu *treeMenu(bool guest, const QModelIndex &index);

Q_SIGNALS:
    // What the commands may do has changed (selection, focus, content).
    void commandStateChanged();
    void positionListRequested();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeTreePane(bool guest, const QString &title);
    QWidget *makeGridPane(bool guest, const QString &title);
    void connectGrid(bool guest);
    void connectTree(bool guest);
    void scheduleCommandUpdate();

    // The commands.
    void addGroup();
    void renameGroup();
    void deleteNode();
    void addMember();
    void deleteMembers();
    void moveNode(Command command);
    void placeMembers();
    void sendMail();
    void setPosition(bool guest, const QModelIndex &membership, qint32 rankId);

    // Shows why an edit was refused: at the cell of the grid it names, or at
    // the given cell, or at the view.
    void showRefusal(const std::optional<EditRefusal> &refusal, QWidget *anchor = nullptr,
        const QRect &cell = {});
    void showGridRefusal(bool guest, const QModelIndex &cell);
    void memberCreated(bool guest);
    void passwordMissing(bool guest, const QModelIndex &passwordCell);
    void openMenu(QMenu *menu, const QPoint &globalPos);

    const DirectoryNode *activeNode(bool *guest) const;
    static bool hasSibling(const DirectoryNode *node, bool previous);
    static bool enabledOn(Command command, const DirectoryNode *node);

    void restoreSplitters();
    void saveSplitters();

    CVelmarManagerDoc &m_document;
    MessageService &m_messages;
    RegistryHives *m_hives;
    InviteRecipientSink *m_mailSink = nullptr;
    MemberGridProxy *m_memberProxy = nullptr;
    MemberGridProxy *m_guestProxy = nullptr;
    MemberGridView *m_memberGrid = nullptr;
    MemberGridView *m_guestGrid = nullptr;
    OrganizeTreeView *m_regularTree = nullptr;
    OrganizeTreeView *m_guestTree = nullptr;
    QLineEdit *m_memberFilter = nullptr;
    QLineEdit *m_guestFilter = nullptr;
    QSplitter *m_rows = nullptr;
    QSplitter *m_regularPair = nullptr;
    QSplitter *m_guestPair = nullptr;
    bool m_guestTreeActive = false;
    bool m_guestGridActive = false;
    bool m_splittersRestored = false;
    QTimer m_commandTimer;
    QTimer m_splitterTimer;
    QPointer<QMenu> m_menu;
};
