#include "COrganizeFormView.h"

#include "ConsoleRegistryKey.h"
#include "CRegistry.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryNode.h"
#include "DocumentUndoStack.h"
#include "GroupTreeModel.h"
#include "InviteRecipientSink.h"
#include "MemberCellDelegate.h"
#include "MemberGridProxy.h"
#include "MemberGridView.h"
#include "MemberListModel.h"
#include "MemberRowSelectionModel.h"
#include "MemberRules.h"
#include "MessageService.h"
#include "OrganizeTreeView.h"
#include "PositionListModel.h"
#include "ViewRefusal.h"

#include <QAction>
#include <QActionGroup>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSplitter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const QString SplitterValue = u"OrganizeSplitters"_s;
constexpr int BalloonMs = 3000;
constexpr int NoPositionCommand = 200;

QString popupLabel(COrganizeFormView::Command command)
{
    using C = COrganizeFormView::Command;
    switch (command) {
    case C::AddGroup:
        return u"添加类别(&A)"_s;
    case C::RenameGroup:
        return u"名称修改(&R)"_s;
    case C::DeleteNode:
        return u"删除(&D)"_s;
    case C::AddMember:
        return u"添加用户(&A)"_s;
    case C::DeleteMembers:
        return u"删除用户(&D)"_s;
    case C::MoveUp:
        return u"上面(&P)"_s;
    case C::MoveDown:
        return u"下面(&N)"_s;
    case C::MoveFirst:
        return u"最上面(&T)"_s;
    case C::MoveLast:
        return u"最底下(&B)"_s;
    case C::PlaceMembers:
        return u"添加群组(&G)"_s;
    case C::PositionList:
        return u"等级列表(&S)"_s;
    case C::SendMail:
        return u"登记发送邮件(设置文件)(&M)"_s;
    }
    return {};
}

QLabel *titleLabel(const QString &title, QWidget *parent)
{
    auto *label = new QLabel(title, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

COrganizeFormView::COrganizeFormView(
    CVelmarManagerDoc &document, MessageService &messages, RegistryHives *hives, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_messages(messages)
    , m_hives(hives)
{
    setObjectName(u"organizeView"_s);
    setAccessibleName(caption());

    Directory &directory = *document.directory();
    for (const bool guest : { false, true }) {
        directory.members(guest)->setEditor(&document.editor());
        directory.tree(guest)->setEditor(&document.editor());
    }

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(4);
    QLabel *heading = titleLabel(caption(), this);
    heading->setObjectName(u"organizeCaption"_s);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.2);
    heading->setFont(font);
    layout->addWidget(heading);

    m_rows = new QSplitter(Qt::Vertical, this);
    m_rows->setObjectName(u"organizeRows"_s);
    m_rows->setChildrenCollapsible(false);
    m_regularPair = new QSplitter(Qt::Horizontal, m_rows);
    m_regularPair->setObjectName(u"organizeRegularPair"_s);
    m_guestPair = new QSplitter(Qt::Horizontal, m_rows);
    m_guestPair->setObjectName(u"organizeGuestPair"_s);
    for (QSplitter *pair : { m_regularPair, m_guestPair }) {
        pair->setChildrenCollapsible(false);
        const bool guest = pair == m_guestPair;
        pair->addWidget(makeTreePane(guest, guest ? u"论坛结构"_s : u"类别"_s));
        pair->addWidget(makeGridPane(guest, guest ? u"论坛用户列表"_s : u"会员列表"_s));
        pair->setStretchFactor(0, 0);
        pair->setStretchFactor(1, 1);
        pair->setSizes({ 270, 650 });
        m_rows->addWidget(pair);
    }
    m_rows->setSizes({ 600, 300 });
    layout->addWidget(m_rows, 1);

    for (const bool guest : { false, true }) {
        connectGrid(guest);
        connectTree(guest);
    }

    m_commandTimer.setSingleShot(true);
    connect(&m_commandTimer, &QTimer::timeout, this, &COrganizeFormView::commandStateChanged);
    connect(document.undoStack(), &DocumentUndoStack::indexChanged, this,
        &COrganizeFormView::scheduleCommandUpdate);

    m_splitterTimer.setSingleShot(true);
    m_splitterTimer.setInterval(400);
    connect(&m_splitterTimer, &QTimer::timeout, this, &COrganizeFormView::saveSplitters);
    for (QSplitter *splitter : { m_rows, m_regularPair, m_guestPair })
        connect(splitter, &QSplitter::splitterMoved, this, [this] { m_splitterTimer.start(); });
}

COrganizeFormView::~COrganizeFormView()
{
    if (m_splitterTimer.isActive())
        saveSplitters();
}

void COrganizeFormView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Once laid out at its real size (after this event): sizes given before
    // would be scaled.
    if (!m_splittersRestored) {
        m_splittersRestored = true;
        QTimer::singleShot(0, this, &COrganizeFormView::restoreSplitters);
    }
}

QString COrganizeFormView::caption()
{
    return u"类别编辑"_s;
}

QWidget *COrganizeFormView::makeTreePane(bool guest, const QString &title)
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    QLabel *label = titleLabel(title, pane);
    auto *tree = new OrganizeTreeView(m_document.directory()->tree(guest), title, pane);
    tree->setObjectName(guest ? u"guestTree"_s : u"organizeTree"_s);
    label->setBuddy(tree);
    layout->addWidget(label);
    layout->addWidget(tree, 1);
    (guest ? m_guestTree : m_regularTree) = tree;
    return pane;
}

QWidget *COrganizeFormView::makeGridPane(bool guest, const QString &title)
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    auto *proxy = new MemberGridProxy(m_document.directory()->members(guest), this);
    auto *grid = new MemberGridView(proxy, title, pane);
    grid->setObjectName(guest ? u"guestGrid"_s : u"memberGrid"_s);

    auto *top = new QHBoxLayout;
    QLabel *label = titleLabel(title, pane);
    label->setBuddy(grid);
    auto *filter = new QLineEdit(pane);
    filter->setObjectName(guest ? u"guestFilter"_s : u"memberFilter"_s);
    const QString filterTitle = u"筛选"_s;
    filter->setAccessibleName(u"%1 %2"_s.arg(title, filterTitle));
    filter->setPlaceholderText(u"%1: 用户ID 或 姓名"_s.arg(filterTitle));
    filter->setClearButtonEnabled(true);
    filter->setMaximumWidth(260);
    top->addWidget(label);
    top->addStretch(1);
    top->addWidget(filter);
    layout->addLayout(top);
    layout->addWidget(grid, 1);
    connect(filter, &QLineEdit::textChanged, proxy, &MemberGridProxy::setFilterText);

    (guest ? m_guestProxy : m_memberProxy) = proxy;
    (guest ? m_guestGrid : m_memberGrid) = grid;
    (guest ? m_guestFilter : m_memberFilter) = filter;
    return pane;
}

void COrganizeFormView::connectGrid(bool guest)
{
    MemberGridView *grid = memberGrid(guest);
    MemberCellDelegate *delegate = grid->cellDelegate();
    connect(delegate, &MemberCellDelegate::editRefused, this,
        [this, guest](const QModelIndex &cell) { showGridRefusal(guest, cell); });
    connect(delegate, &MemberCellDelegate::memberCreated, this,
        [this, guest] { memberCreated(guest); });
    connect(grid->rowSelection(), &MemberRowSelectionModel::leaveRefused, this,
        [this, guest](const QModelIndex &cell) { passwordMissing(guest, cell); });
    connect(grid, &MemberGridView::deleteRequested, this, [this, guest] {
        m_guestGridActive = guest;
        deleteMembers();
    });
    connect(grid, &MemberGridView::contextMenuRequested, this,
        [this, guest](const QModelIndex &, const QPoint &pos) {
            m_guestGridActive = guest;
            openMenu(memberMenu(guest), pos);
        });
    connect(grid, &MemberGridView::focusEntered, this, [this, guest] {
        m_guestGridActive = guest;
        scheduleCommandUpdate();
    });
    connect(grid->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &COrganizeFormView::scheduleCommandUpdate);
}

void COrganizeFormView::connectTree(bool guest)
{
    OrganizeTreeView *tree = this->tree(guest);
    connect(tree, &OrganizeTreeView::contextMenuRequested, this,
        [this, guest](const QModelIndex &index, const QPoint &pos) {
            m_guestTreeActive = guest;
            openMenu(treeMenu(guest, index), pos);
        });
    connect(tree, &OrganizeTreeView::focusEntered, this, [this, guest] {
        m_guestTreeActive = guest;
        scheduleCommandUpdate();
    });
    connect(tree, &OrganizeTreeView::editRefused, this,
        [this, tree] { showRefusal(tree->tree()->lastRefusal(), tree->viewport()); });
    connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
        &COrganizeFormView::scheduleCommandUpdate);
}

void COrganizeFormView::scheduleCommandUpdate()
{
    // Coalesced: a drop of a thousand members changes the trees a thousand times.
    if (!m_commandTimer.isActive())
        m_commandTimer.start(0);
}

// ---- command enabling ----------------------------------------------------

const DirectoryNode *COrganizeFormView::activeNode(bool *guest) const
{
    *guest = m_guestTreeActive;
    return tree(*guest)->selectedNode();
}

bool COrganizeFormView::hasSibling(const DirectoryNode *node, bool previous)
{
    if (!node || !node->parent())
        return false;
    return previous ? node->row() > 0 : node->row() + 1 < node->parent()->childCount();
}

bool COrganizeFormView::enabledOn(Command command, const DirectoryNode *node)
{
    switch (command) {
    case Command::AddGroup:
        return !node || node->isContainer();
    case Command::RenameGroup:
        return node && node->isGroup();
    case Command::DeleteNode:
        return node && !node->isRoot();
    case Command::MoveUp:
    case Command::MoveFirst:
        return hasSibling(node, true);
    case Command::MoveDown:
    case Command::MoveLast:
        return hasSibling(node, false);
    default:
        return false;
    }
}

bool COrganizeFormView::isCommandEnabled(Command command) const
{
    switch (command) {
    case Command::RenameGroup:
    case Command::DeleteNode: {
        // The organisation tree's selection first, then the guest tree's.
        const DirectoryNode *regular = m_regularTree->selectedNode();
        if (regular && regular->isGroup())
            return true;
        const DirectoryNode *guest = m_guestTree->selectedNode();
        return guest && guest->isGroup();
    }
    case Command::MoveUp:
    case Command::MoveFirst:
    case Command::MoveDown:
    case Command::MoveLast: {
        const bool previous = command == Command::MoveUp || command == Command::MoveFirst;
        const DirectoryNode *regular = m_regularTree->selectedNode();
        if (regular)
            return hasSibling(regular, previous);
        return hasSibling(m_guestTree->selectedNode(), previous);
    }
    case Command::AddGroup: {
        bool guest = false;
        return enabledOn(command, activeNode(&guest));
    }
    case Command::AddMember:
    case Command::PositionList:
        return true;
    case Command::DeleteMembers:
        return !memberGrid(m_guestGridActive)->selectedMemberRows().isEmpty();
    case Command::PlaceMembers: {
        const DirectoryNode *group = tree(m_guestGridActive)->selectedNode();
        return group && group->isContainer()
            && !memberGrid(m_guestGridActive)->selectedMemberRows().isEmpty();
    }
    case Command::SendMail:
        return m_mailSink && !memberGrid(m_guestGridActive)->selectedMemberRows().isEmpty();
    }
    return false;
}

void COrganizeFormView::runCommand(Command command)
{
    // Each command checks what it acts on itself: the pop-ups act on the
    // tree they were opened on, the edit menu on the active one.
    switch (command) {
    case Command::AddGroup:
        addGroup();
        break;
    case Command::RenameGroup:
        renameGroup();
        break;
    case Command::DeleteNode:
        deleteNode();
        break;
    case Command::AddMember:
        addMember();
        break;
    case Command::DeleteMembers:
        deleteMembers();
        break;
    case Command::MoveUp:
    case Command::MoveDown:
    case Command::MoveFirst:
    case Command::MoveLast:
        moveNode(command);
        break;
    case Command::PlaceMembers:
        placeMembers();
        break;
    case Command::PositionList:
        Q_EMIT positionListRequested();
        break;
    case Command::SendMail:
        sendMail();
        break;
    }
    scheduleCommandUpdate();
}

// ---- tree commands ---------------------------------------------------------

void COrganizeFormView::addGroup()
{
    bool guest = false;
    const DirectoryNode *parent = activeNode(&guest);
    OrganizeTreeView *view = tree(guest);
    if (!parent)
        parent = view->tree()->tree().root();
    if (!parent->isContainer())
        return;
    const EditResult result = m_document.editor().addGroup(guest, parent, u"新 类别"_s);
    if (!result.ok()) {
        showRefusal(result.refusal, view->viewport());
        return;
    }
    const QModelIndex added = view->tree()->findGroup(result.id);
    view->setFocus();
    view->selectIndex(added);
    view->edit(added);
}

void COrganizeFormView::renameGroup()
{
    bool guest = m_guestTreeActive;
    const DirectoryNode *node = activeNode(&guest);
    if (!node || !node->isGroup()) {
        // The menu's enabling looks at the organisation tree first.
        guest = !guest;
        node = tree(guest)->selectedNode();
        if (!node || !node->isGroup())
            return;
    }
    OrganizeTreeView *view = tree(guest);
    const QModelIndex index = view->tree()->indexForNode(node);
    view->setFocus();
    view->selectIndex(index);
    view->edit(index);
}

void COrganizeFormView::deleteNode()
{
    bool guest = false;
    const DirectoryNode *node = activeNode(&guest);
    if (!node || node->isRoot())
        return;
    if (node->isGroup()) {
        MessageService::Box box;
        box.text = u"删除分类将删除分类下所有的用户附属关系.\n\n确定要删除?"_s;
        box.buttons = MessageService::Buttons::YesNo;
        box.icon = MessageService::Icon::Question;
        box.parent = window();
        if (m_messages.showMessage(box) != MessageService::Yes)
            return;
        // The tree may have changed while the question was open.
        node = tree(guest)->selectedNode();
        if (!node || node->isRoot())
            return;
    }
    const EditResult result = m_document.editor().deleteNode(guest, node);
    showRefusal(result.refusal, tree(guest)->viewport());
}

void COrganizeFormView::moveNode(Command command)
{
    bool guest = false;
    const DirectoryNode *node = activeNode(&guest);
    if (!node || node->isRoot())
        return;
    using Step = DirectoryEditor::MoveStep;
    const Step step = command == Command::MoveUp ? Step::Up
        : command == Command::MoveDown           ? Step::Down
        : command == Command::MoveFirst          ? Step::First
                                                 : Step::Last;
    const EditResult result = m_document.editor().moveNode(guest, node, step);
    if (!result.ok()) {
        showRefusal(result.refusal, tree(guest)->viewport());
        return;
    }
    tree(guest)->selectIndex(tree(guest)->tree()->indexForNode(node));
}

void COrganizeFormView::setPosition(bool guest, const QModelIndex &membership, qint32 rankId)
{
    const DirectoryNode *node = tree(guest)->tree()->nodeForIndex(membership);
    if (!node || !node->isMembership())
        return;
    const EditResult result = m_document.editor().setMembershipPosition(guest, node, rankId);
    showRefusal(result.refusal, tree(guest)->viewport());
}

// ---- grid commands ---------------------------------------------------------

void COrganizeFormView::addMember()
{
    MemberGridView *grid = memberGrid(m_guestGridActive);
    MemberGridProxy *proxy = grid->grid();
    grid->setFocus();
    grid->scrollToBottom();
    grid->selectionModel()->setCurrentIndex(proxy->index(proxy->blankRow(), 0),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void COrganizeFormView::deleteMembers()
{
    const bool guest = m_guestGridActive;
    const QList<int> rows = memberGrid(guest)->selectedMemberRows();
    if (rows.isEmpty())
        return;
    MessageService::Box box;
    box.text = u"确定要删除选定的会员?"_s;
    box.buttons = MessageService::Buttons::YesNo;
    box.icon = MessageService::Icon::Question;
    box.parent = window();
    if (m_messages.showMessage(box) != MessageService::Yes)
        return;
    const EditResult result = m_document.editor().deleteMembers(guest, rows);
    showRefusal(result.refusal, memberGrid(guest)->viewport());
}

void COrganizeFormView::placeMembers()
{
    const bool guest = m_guestGridActive;
    OrganizeTreeView *view = tree(guest);
    const DirectoryNode *group = view->selectedNode();
    if (!group || !group->isContainer())
        return;
    QList<qint32> ids;
    for (const DraggedMember &member : memberGrid(guest)->selectedMembers())
        ids.append(member.id);
    const QModelIndex target = view->tree()->indexForNode(group);
    const EditResult result = m_document.editor().placeMembers(guest, group, ids);
    if (!result.ok()) {
        showRefusal(result.refusal, view->viewport());
        return;
    }
    view->expand(target);
}

// ---- answers ---------------------------------------------------------------

void COrganizeFormView::showRefusal(
    const std::optional<EditRefusal> &refusal, QWidget *anchor, const QRect &cell)
{
    if (refusal)
        ::showRefusal(m_messages, *refusal, anchor ? anchor : this, cell);
}

void COrganizeFormView::showGridRefusal(bool guest, const QModelIndex &cell)
{
    MemberGridView *grid = memberGrid(guest);
    const std::optional<EditRefusal> &refusal = grid->grid()->members()->lastRefusal();
    QModelIndex where = cell;
    if (refusal && refusal->column >= 0 && where.isValid())
        where = grid->grid()->index(where.row(), refusal->column);
    showRefusal(refusal, grid->viewport(), where.isValid() ? grid->visualRect(where) : QRect());
}

void COrganizeFormView::memberCreated(bool guest)
{
    MemberGridView *grid = memberGrid(guest);
    MemberGridProxy *proxy = grid->grid();
    MemberListModel *members = proxy->members();
    // The new member is the last of its list; the caret goes to its row
    // (the blank row moved down under it) once the editor has closed.
    const QPersistentModelIndex created
        = proxy->mapFromSource(members->index(members->memberCount() - 1, 0));
    QTimer::singleShot(0, grid, [grid, created] {
        if (!created.isValid())
            return;
        const int column = grid->currentIndex().isValid() ? grid->currentIndex().column() : 0;
        grid->selectionModel()->setCurrentIndex(created.sibling(created.row(), column),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    });
    if (!guest && members->memberCount() == 1) {
        MessageService::Balloon tip;
        tip.title = u"Tip!"_s;
        tip.text = u"在群组中没有添加用户.\n在左侧的系统图中."_s;
        tip.icon = MessageService::Icon::Question;
        tip.timeoutMs = BalloonMs;
        tip.anchor = grid->viewport();
        tip.cell = created.isValid() ? grid->visualRect(created) : QRect();
        tip.hint = true;
        m_messages.showBalloon(tip);
    }
}

void COrganizeFormView::passwordMissing(bool guest, const QModelIndex &passwordCell)
{
    MemberGridView *grid = memberGrid(guest);
    const std::optional<MemberRefusal> refusal = MemberRules::checkPasswordOnLeave({});
    if (refusal) {
        MessageService::Balloon balloon = refusal->balloon();
        balloon.timeoutMs = BalloonMs;
        balloon.anchor = grid->viewport();
        balloon.cell = grid->visualRect(passwordCell);
        m_messages.showBalloon(balloon);
    }
    // Once the refused move is over, the caret goes to the empty password.
    const QPersistentModelIndex cell(passwordCell);
    QTimer::singleShot(0, grid, [grid, cell] {
        if (!cell.isValid())
            return;
        grid->selectionModel()->setCurrentIndex(cell, QItemSelectionModel::NoUpdate);
        grid->scrollTo(cell);
        grid->setFocus();
    });
}

// ---- invitation mail --------------------------------------------------------

void COrganizeFormView::sendMail()
{
    if (!m_mailSink)
        return;
    MemberGridView *grid = memberGrid(m_guestGridActive);
    m_mailSink->clearRecipients();
    int taken = 0;
    for (const int row : grid->selectedMemberRows()) {
        const UserInfo &member = grid->grid()->members()->member(row);
        if (m_mailSink->offerRecipient(
                { member.displayName, member.email, member.loginName, member.password }))
            ++taken;
    }
    if (taken == 0) {
        m_messages.showBalloon({ {}, u"E-Mail已经添加\n再次添加错误."_s,
            MessageService::Icon::Exclamation, BalloonMs, this, {}, false });
        m_mailSink->hideComposer();
        return;
    }
    m_mailSink->showComposer();
}

// ---- pop-up menus ----------------------------------------------------------

QMenu *COrganizeFormView::memberMenu(bool guest)
{
    auto *menu = new QMenu(this);
    menu->setObjectName(u"memberMenu"_s);
    menu->setTitle(u"用户设置"_s);
    auto add = [this, menu](Command command, const QString &label = {}) {
        QAction *action = menu->addAction(label.isEmpty() ? popupLabel(command) : label);
        action->setEnabled(isCommandEnabled(command));
        connect(action, &QAction::triggered, this, [this, command] { runCommand(command); });
        return action;
    };
    add(Command::AddMember);
    add(Command::DeleteMembers);
    // Offered only while a group of the matching tree is selected, named in the item.
    const DirectoryNode *group = tree(guest)->selectedNode();
    if (group && group->isContainer()) {
        const QString name = tree(guest)->tree()->indexForNode(group).data().toString();
        add(Command::PlaceMembers, u"[%1]添加群"_s.arg(name));
    }
    menu->addSeparator();
    add(Command::SendMail);
    return menu;
}

QMenu *COrganizeFormView::treeMenu(bool guest, const QModelIndex &index)
{
    auto *menu = new QMenu(this);
    const DirectoryNode *node = tree(guest)->tree()->nodeForIndex(index);
    auto add = [this, menu, guest, node](Command command) {
        QAction *action = menu->addAction(popupLabel(command));
        action->setEnabled(enabledOn(command, node));
        connect(action, &QAction::triggered, this, [this, guest, command] {
            m_guestTreeActive = guest;
            runCommand(command);
        });
        return action;
    };
    if (!node || node->isContainer()) {
        menu->setObjectName(u"groupMenu"_s);
        menu->setTitle(u"类别设置"_s);
        add(Command::AddGroup);
        add(Command::RenameGroup);
        add(Command::DeleteNode);
        menu->addSeparator();
        add(Command::MoveUp);
        add(Command::MoveDown);
        add(Command::MoveFirst);
        add(Command::MoveLast);
        menu->addSeparator();
        QAction *positions = menu->addAction(popupLabel(Command::PositionList));
        connect(positions, &QAction::triggered, this, &COrganizeFormView::positionListRequested);
        return menu;
    }
    menu->setObjectName(u"membershipMenu"_s);
    QMenu *levels = menu->addMenu(u"等级设置(&C)"_s);
    levels->setObjectName(u"positionMenu"_s);
    auto *choices = new QActionGroup(levels);
    const QPersistentModelIndex membership(index);
    const qint32 current = node->rankId();
    auto addLevel = [&](int commandId, const QString &name, qint32 rankId) {
        QAction *action = levels->addAction(name);
        action->setCheckable(true);
        action->setChecked(rankId == current);
        action->setData(commandId);
        choices->addAction(action);
        connect(action, &QAction::triggered, this,
            [this, guest, membership, rankId] { setPosition(guest, membership, rankId); });
    };
    addLevel(NoPositionCommand, u"无等级"_s, PositionList::NoPosition);
    const PositionList &list = m_document.positions()->list();
    for (int k = 0; k < list.count() && NoPositionCommand + 1 + k <= 299; ++k)
        addLevel(NoPositionCommand + 1 + k, list.positions.at(k).name, list.positions.at(k).id);
    menu->addSeparator();
    add(Command::DeleteNode);
    menu->addSeparator();
    add(Command::MoveUp);
    add(Command::MoveDown);
    add(Command::MoveFirst);
    add(Command::MoveLast);
    return menu;
}

void COrganizeFormView::openMenu(QMenu *menu, const QPoint &globalPos)
{
    if (m_menu)
        m_menu->deleteLater();
    m_menu = menu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(globalPos);
}

// ---- splitters ---------------------------------------------------------------

void COrganizeFormView::restoreSplitters()
{
    if (!m_hives)
        return;
    CRegistry registry(*m_hives, RegistryRoot::CurrentUser);
    QString stored;
    if (!registry.openKey(RegistryRoot::CurrentUser, ConsoleRegistryKey)
        || !registry.readString(SplitterValue, stored))
        return;
    // "rows;regular pair;guest pair", each "a,b" in pixels.
    const QStringList parts = stored.split(u';');
    const QList<QSplitter *> splitters { m_rows, m_regularPair, m_guestPair };
    for (qsizetype i = 0; i < parts.size() && i < splitters.size(); ++i) {
        const QStringList sizes = parts.at(i).split(u',');
        bool okA = false;
        bool okB = false;
        const int a = sizes.value(0).toInt(&okA);
        const int b = sizes.value(1).toInt(&okB);
        if (sizes.size() == 2 && okA && okB && a > 0 && b > 0 && a < 100000 && b < 100000)
            splitters.at(i)->setSizes({ a, b });
    }
}

void COrganizeFormView::saveSplitters()
{
    m_splitterTimer.stop();
    if (!m_hives)
        return;
    QStringList parts;
    for (QSplitter *splitter : { m_rows, m_regularPair, m_guestPair }) {
        const QList<int> sizes = splitter->sizes();
        parts.append(u"%1,%2"_s.arg(sizes.value(0)).arg(sizes.value(1)));
    }
    CRegistry registry(*m_hives, RegistryRoot::CurrentUser);
    if (registry.createKey(RegistryRoot::CurrentUser, ConsoleRegistryKey))
        registry.writeString(SplitterValue, parts.join(u';'));
}
