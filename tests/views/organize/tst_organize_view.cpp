// The organisation view in the main frame, on a real SQLite server database
// loaded by the console, used as an administrator uses it: keys typed into
// the grids' blank rows and cells, the in-place editors, drags carrying the
// real member-drag and node formats, the pop-up menus, the edit menu, undo,
// and a save whose database is compared with what the view shows. The
// rules themselves are proven on the editors; here the view must reach
// them and show their answers.

#include "CMainFrame.h"
#include "CommandIds.h"
#include "COrganizeFormView.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "GroupTreeModel.h"
#include "LoadedFrame.h"
#include "MemberDragFormat.h"
#include "MemberGridProxy.h"
#include "MemberGridView.h"
#include "MemberListModel.h"
#include "OrganizeTreeView.h"
#include "ViewIds.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSplitter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList column(const QAbstractItemModel *model, const QModelIndex &parent = {})
{
    QStringList texts;
    for (int row = 0; row < model->rowCount(parent); ++row)
        texts.append(model->index(row, 0, parent).data().toString());
    return texts;
}

QStringList nodeLabels(const QModelIndex &parent)
{
    return column(parent.model(), parent);
}

} // namespace

class OrganizeViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsBothPairs();
    void typingIntoTheBlankRow();
    void cellEditorsAndUndo();
    void filterAndSortLeaveTheListOrder();
    void dragsOntoTheTrees();
    void treeCommandsAndPopups();
    void deleteKeyThenSaveMatchesTheView();
    void firstMemberTipAndSplitters();

private:
    CMainFrame &frame() { return m_f->frame(); }
    COrganizeFormView &view()
    {
        return *qobject_cast<COrganizeFormView *>(frame().view(ViewId::Organize));
    }
    MemberGridView *grid() { return view().memberGrid(false); }
    OrganizeTreeView *tree() { return view().tree(false); }
    QModelIndex group(const QString &name) const;
    QModelIndex cell(const QString &loginName, int column);
    void trigger(int commandId);
    // Opens the pop-up of a tree node or grid row and returns it.
    QMenu *popup(QAbstractItemView *widget, const QModelIndex &index);
    QAction *item(QMenu *menu, const QString &text);

    std::unique_ptr<LoadedFrame> m_f;
};

void OrganizeViewTest::init()
{
    // alice in Sales as 职员; bob and cara in no group; the guest gina in Forum.
    OPEN_LOADED_FRAME(m_f, sqlFile(u"organize.sql"_s));
    QVERIFY(frame().showView(ViewId::Organize));
    m_f->messages().clear();
}

QModelIndex OrganizeViewTest::group(const QString &name) const
{
    const GroupTreeModel *model = m_f->fixture.frame->document().directory()->regularTree();
    const QModelIndexList found = model->match(
        model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly | Qt::MatchRecursive);
    return found.value(0);
}

QModelIndex OrganizeViewTest::cell(const QString &loginName, int column)
{
    QAbstractItemModel *model = grid()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, 0).data().toString() == loginName)
            return model->index(row, column);
    }
    return {};
}

void OrganizeViewTest::trigger(int commandId)
{
    QApplication::processEvents(); // the coalesced enabling
    QAction *action = frame().commandAction(commandId);
    QVERIFY(action && action->isEnabled());
    action->trigger();
}

QMenu *OrganizeViewTest::popup(QAbstractItemView *widget, const QModelIndex &index)
{
    return openPopup(widget, widget->visualRect(index).center());
}

QAction *OrganizeViewTest::item(QMenu *menu, const QString &text)
{
    if (!menu)
        return nullptr;
    for (QAction *action : menu->actions()) {
        if (action->text() == text)
            return action;
        if (QAction *inner = action->menu() ? item(action->menu(), text) : nullptr)
            return inner;
    }
    return nullptr;
}

void OrganizeViewTest::showsBothPairs()
{
    QCOMPARE(view().accessibleName(), u"类别编辑"_s);
    QCOMPARE(grid()->accessibleName(), u"会员列表"_s);
    QCOMPARE(view().memberGrid(true)->accessibleName(), u"论坛用户列表"_s);
    QCOMPARE(tree()->accessibleName(), u"类别"_s);
    QCOMPARE(view().tree(true)->accessibleName(), u"论坛结构"_s);
    QVERIFY(view().memberGrid(true)->isVisible() && view().tree(true)->isVisible());

    QStringList titles;
    for (int c = 0; c < grid()->model()->columnCount(); ++c)
        titles.append(grid()->model()->headerData(c, Qt::Horizontal).toString());
    QCOMPARE(titles,
        QStringList({ u"用户ID"_s, u"姓名"_s, u"呢称"_s, u"密码"_s, u"性别"_s, u"权限"_s, u"邮箱"_s,
            u"手机"_s, u"办公电话"_s, u"地址"_s, u"电话号码"_s, u"出生年月"_s, u"自我介绍"_s,
            u"是否阳历"_s, u"公开信息"_s }));
    QVERIFY(grid()->isColumnHidden(2) && grid()->isColumnHidden(13));
    QCOMPARE(column(grid()->model()), QStringList({ u"alice"_s, u"bob"_s, u"cara"_s, QString() }));
    QCOMPARE(column(view().memberGrid(true)->model()), QStringList({ u"gina"_s, QString() }));
    // Rows show their icon (which one is the member model's to test; the
    // cell editor below shows it following an edit).
    QVERIFY(!cell(u"cara"_s, 0).data(Qt::DecorationRole).isNull());

    // 修改 类别 follows the selected node: the root gives nothing to rename.
    tree()->setFocus();
    tree()->setCurrentIndex(tree()->tree()->rootIndex());
    QApplication::processEvents();
    QVERIFY(!frame().commandAction(CommandId::RenameCategory)->isEnabled());
    tree()->setCurrentIndex(group(u"Sales"_s));
    QApplication::processEvents();
    QVERIFY(frame().commandAction(CommandId::RenameCategory)->isEnabled());
    QVERIFY(!frame().commandAction(CommandId::SendRegistrationMail)->isEnabled());
    // Another view: the organisation commands rest.
    frame().showView(ViewId::Home);
    QApplication::processEvents();
    QVERIFY(!frame().commandAction(CommandId::RenameCategory)->isEnabled());
}

void OrganizeViewTest::typingIntoTheBlankRow()
{
    grid()->setFocus();
    trigger(CommandId::AddMember);
    QCOMPARE(grid()->currentIndex().row(), 3);
    QCOMPARE(QApplication::focusWidget(), grid());

    typeIntoCell(grid(), u"bad id"_s);
    QCOMPARE(m_f->messages().balloons().size(), 1);
    QCOMPARE(
        m_f->messages().balloons().last().text, u"用户ID可以用字母数字或符号，但不少于3个字母."_s);
    QCOMPARE(m_f->messages().balloons().last().anchor, grid()->viewport());
    QCOMPARE(grid()->model()->rowCount(), 4);

    typeIntoCell(grid(), u"dave"_s);
    QCOMPARE(column(grid()->model()),
        QStringList({ u"alice"_s, u"bob"_s, u"cara"_s, u"dave"_s, QString() }));
    QCOMPARE(frame().document().undoStack()->undoText(), u"添加用户 dave"_s);
    QCOMPARE(cell(u"dave"_s, 4).data().toString(), u"男生"_s);
    QCOMPARE(grid()->currentIndex().row(), 3);

    // Leaving the new row without a password is refused; the caret goes to it.
    m_f->messages().clear();
    QTest::keyClick(grid(), Qt::Key_Up);
    QCOMPARE(m_f->messages().balloonTexts(), QStringList { u"用户密码错误."_s });
    QCOMPARE(m_f->messages().balloons().last().cell, grid()->visualRect(cell(u"dave"_s, 3)));
    QTRY_COMPARE(grid()->currentIndex(), cell(u"dave"_s, 3));
    typeIntoCell(grid(), u"s3cret"_s);
    QCOMPARE(frame().document().directory()->regularMembers()->member(3).password, u"s3cret"_s);
    QTest::keyClick(grid(), Qt::Key_Up);
    QCOMPARE(grid()->currentIndex().row(), 2);
    QCOMPARE(m_f->messages().balloons().size(), 1);

    // Both steps come back off the journal.
    frame().undoAction()->trigger();
    frame().undoAction()->trigger();
    QCOMPARE(column(grid()->model()), QStringList({ u"alice"_s, u"bob"_s, u"cara"_s, QString() }));
}

void OrganizeViewTest::cellEditorsAndUndo()
{
    const QVariant before = cell(u"alice"_s, 0).data(MemberListModel::UserInfoRole);
    grid()->setFocus();
    grid()->setCurrentIndex(cell(u"alice"_s, 1));

    typeIntoCell(grid(), u"Alicia"_s);
    QCOMPARE(cell(u"alice"_s, 1).data().toString(), u"Alicia"_s);
    QCOMPARE(nodeLabels(group(u"Sales"_s)), QStringList { u"Alicia"_s });

    // The gender list: a choice is stored at once, and the row icon follows.
    grid()->setCurrentIndex(cell(u"alice"_s, 4));
    QTest::keyClick(grid(), Qt::Key_F2);
    auto *gender = qobject_cast<QComboBox *>(QApplication::focusWidget());
    QVERIFY(gender);
    QCOMPARE(gender->count(), 2);
    QTest::keyClick(gender, Qt::Key_Down);
    QTRY_COMPARE(cell(u"alice"_s, 4).data().toString(), u"女生"_s);
    QCOMPARE(cell(u"alice"_s, 0).data(MemberListModel::IconIndexRole).toInt(), 1);

    // The date cell opens on 1970-01-01 for an empty birthday.
    grid()->setCurrentIndex(cell(u"alice"_s, 11));
    QTest::keyClick(grid(), Qt::Key_F2);
    auto *date = qobject_cast<QDateEdit *>(QApplication::focusWidget());
    QVERIFY(date);
    QCOMPARE(date->date(), QDate(1970, 1, 1));
    date->setDate(QDate(1990, 5, 6));
    QTest::keyClick(date, Qt::Key_Return);
    QApplication::processEvents();
    QCOMPARE(cell(u"alice"_s, 11).data().toString(), u"1990-05-06"_s);

    // The password editor hides what is typed.
    grid()->setCurrentIndex(cell(u"alice"_s, 3));
    QTest::keyClick(grid(), Qt::Key_F2);
    auto *password = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    QVERIFY(password);
    QCOMPARE(password->echoMode(), QLineEdit::Password);
    QTest::keyClick(password, Qt::Key_Escape);

    QCOMPARE(frame().document().undoStack()->count(), 3);
    for (int i = 0; i < 3; ++i)
        frame().undoAction()->trigger();
    QCOMPARE(cell(u"alice"_s, 0).data(MemberListModel::UserInfoRole), before);
    QCOMPARE(nodeLabels(group(u"Sales"_s)), QStringList { u"Alice"_s });
}

void OrganizeViewTest::filterAndSortLeaveTheListOrder()
{
    QTest::keyClicks(view().filterBox(false), u"CA"_s);
    QCOMPARE(column(grid()->model()), QStringList({ u"cara"_s, QString() }));
    view().filterBox(false)->clear();

    // Sorted by name, descending (the first click may sort either way).
    QHeaderView *header = grid()->horizontalHeader();
    const QPoint nameHeader(header->sectionViewportPosition(1) + 10, header->height() / 2);
    for (int i = 0; i < 3
         && (header->sortIndicatorSection() != 1
             || header->sortIndicatorOrder() != Qt::DescendingOrder);
         ++i)
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, nameHeader);
    QCOMPARE(header->sortIndicatorSection(), 1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(column(grid()->model()), QStringList({ u"cara"_s, u"bob"_s, u"alice"_s, QString() }));
    // The blank row stays last and still takes a new member.
    grid()->setFocus();
    trigger(CommandId::AddMember);
    typeIntoCell(grid(), u"zed"_s);
    QCOMPARE(column(grid()->model()),
        QStringList({ u"cara"_s, u"bob"_s, u"alice"_s, u"zed"_s, QString() }));
    // Back to the list order, where the new member is last.
    for (int i = 0; i < 2 && header->sortIndicatorSection() != -1; ++i)
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, nameHeader);
    QCOMPARE(header->sortIndicatorSection(), -1);
    QCOMPARE(column(grid()->model()),
        QStringList({ u"alice"_s, u"bob"_s, u"cara"_s, u"zed"_s, QString() }));
}

void OrganizeViewTest::dragsOntoTheTrees()
{
    tree()->expandAll();
    // bob and cara, selected from the bottom up, travel in grid order.
    grid()->selectionModel()->select(
        cell(u"cara"_s, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    grid()->selectionModel()->select(
        cell(u"bob"_s, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    auto members
        = std::unique_ptr<QMimeData>(MemberDragFormat::toMimeData(grid()->selectedMembers()));
    auto centre = [this](const QModelIndex &index) { return tree()->visualRect(index).center(); };
    QVERIFY(dragTo(tree(), centre(group(u"HQ"_s)), members.get(), false));
    QVERIFY(dragTo(tree(), centre(group(u"HQ"_s)), members.get(), true));
    QCOMPARE(nodeLabels(group(u"HQ"_s)), QStringList({ u"Bob"_s, u"Cara"_s }));
    QVERIFY(tree()->isExpanded(group(u"HQ"_s)));
    QCOMPARE(grid()->model()->rowCount(), 4); // the rows stay in the grid

    // bob's membership dragged inside the tree moves under Sales.
    auto bob = std::unique_ptr<QMimeData>(
        tree()->model()->mimeData({ tree()->model()->index(0, 0, group(u"HQ"_s)) }));
    QVERIFY(dragTo(tree(), centre(group(u"Sales"_s)), bob.get(), true));
    QCOMPARE(nodeLabels(group(u"Sales"_s)), QStringList({ u"Alice"_s, u"Bob"_s }));
    QCOMPARE(nodeLabels(group(u"HQ"_s)), QStringList({ u"Cara"_s }));

    // A group moves with its subtree as the last child, keeping its id.
    auto hq = std::unique_ptr<QMimeData>(tree()->model()->mimeData({ group(u"HQ"_s) }));
    QVERIFY(dragTo(tree(), centre(group(u"Sales"_s)), hq.get(), true));
    QCOMPARE(nodeLabels(group(u"Sales"_s)), QStringList({ u"Alice"_s, u"Bob"_s, u"HQ"_s }));
    QCOMPARE(group(u"HQ"_s).data(GroupTreeModel::GroupIdRole).toInt(), 20);
    QCOMPARE(nodeLabels(group(u"HQ"_s)), QStringList({ u"Cara"_s }));

    // Undone step by step, the tree is as it was.
    while (frame().undoAction()->isEnabled())
        frame().undoAction()->trigger();
    QCOMPARE(nodeLabels(tree()->tree()->rootIndex()), QStringList({ u"Sales"_s, u"HQ"_s }));
    QCOMPARE(nodeLabels(group(u"Sales"_s)), QStringList({ u"Alice"_s }));
    QCOMPARE(nodeLabels(group(u"HQ"_s)), QStringList());
}

void OrganizeViewTest::treeCommandsAndPopups()
{
    tree()->setFocus();
    tree()->setCurrentIndex(tree()->tree()->rootIndex());
    trigger(CommandId::AddCategory);
    QVERIFY(tree()->isPersistentEditorOpen(tree()->currentIndex())
        || tree()->indexWidget(tree()->currentIndex()) || QApplication::focusWidget() != tree());
    auto *label = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    QVERIFY(label);
    QCOMPARE(label->text(), u"新 类别"_s);
    label->selectAll();
    QTest::keyClicks(label, u"Ops"_s);
    QTest::keyClick(label, Qt::Key_Return);
    QApplication::processEvents();
    QCOMPARE(
        nodeLabels(tree()->tree()->rootIndex()), QStringList({ u"Sales"_s, u"HQ"_s, u"Ops"_s }));

    // The last group cannot go further down; up it goes.
    QMenu *menu = popup(tree(), group(u"Ops"_s));
    QVERIFY(menu);
    QVERIFY(!item(menu, u"下面(&N)"_s)->isEnabled());
    QVERIFY(!item(menu, u"最底下(&B)"_s)->isEnabled());
    item(menu, u"上面(&P)"_s)->trigger();
    QCOMPARE(
        nodeLabels(tree()->tree()->rootIndex()), QStringList({ u"Sales"_s, u"Ops"_s, u"HQ"_s }));

    // Labels are edited on groups only: F2 on the root or a membership opens nothing.
    tree()->expandAll();
    const QModelIndex alice = tree()->tree()->index(0, 0, group(u"Sales"_s));
    tree()->setFocus();
    for (const QModelIndex &index : { tree()->tree()->rootIndex(), alice }) {
        tree()->setCurrentIndex(index);
        QTest::keyClick(tree(), Qt::Key_F2);
        QCOMPARE(QApplication::focusWidget(), tree());
    }

    // A membership's position, checked in its sub-menu.
    menu = popup(tree(), alice);
    QVERIFY(item(menu, u"职员"_s)->isChecked());
    QVERIFY(item(menu, u"无等级"_s));
    item(menu, u"经理"_s)->trigger();
    QCOMPARE(alice.data(GroupTreeModel::RankIdRole).toInt(), 2);

    // "[group]添加群" from a member row's pop-up, with the group selected.
    tree()->setCurrentIndex(group(u"Ops"_s));
    menu = popup(grid(), cell(u"cara"_s, 1));
    QVERIFY(menu);
    // The mail composer takes the selected rows (tst_invite_composer).
    QVERIFY(item(menu, u"登记发送邮件(设置文件)(&M)"_s)->isEnabled());
    item(menu, u"[Ops]添加群"_s)->trigger();
    QCOMPARE(nodeLabels(group(u"Ops"_s)), QStringList { u"Cara"_s });

    // Deleting a group asks first; its members stay, unplaced.
    tree()->setFocus();
    tree()->setCurrentIndex(group(u"Ops"_s));
    m_f->messages().queueAnswer(MessageService::No);
    trigger(CommandId::DeleteCategory);
    QVERIFY(group(u"Ops"_s).isValid());
    m_f->messages().queueAnswer(MessageService::Yes);
    trigger(CommandId::DeleteCategory);
    QCOMPARE(m_f->messages().boxTexts(),
        QStringList(2, u"删除分类将删除分类下所有的用户附属关系.\n\n确定要删除?"_s));
    QVERIFY(!group(u"Ops"_s).isValid());
    frame().undoAction()->trigger();
    QCOMPARE(nodeLabels(group(u"Ops"_s)), QStringList { u"Cara"_s });
}

void OrganizeViewTest::deleteKeyThenSaveMatchesTheView()
{
    // Place bob, then delete him with the Delete key: his membership goes too.
    QVERIFY(frame()
                .document()
                .editor()
                .placeMembers(false, tree()->tree()->nodeForIndex(group(u"HQ"_s)), { 2 })
                .ok());
    grid()->setFocus();
    grid()->setCurrentIndex(cell(u"bob"_s, 0));
    m_f->messages().queueAnswer(MessageService::No);
    QTest::keyClick(grid(), Qt::Key_Delete);
    QCOMPARE(m_f->messages().boxTexts(), QStringList { u"确定要删除选定的会员?"_s });
    QVERIFY(cell(u"bob"_s, 0).isValid());
    m_f->messages().queueAnswer(MessageService::Yes);
    QTest::keyClick(grid(), Qt::Key_Delete);
    QCOMPARE(column(grid()->model()), QStringList({ u"alice"_s, u"cara"_s, QString() }));
    QCOMPARE(nodeLabels(group(u"HQ"_s)), QStringList());

    // A new guest typed into the guest grid, placed by a drag onto Forum.
    MemberGridView *guests = view().memberGrid(true);
    guests->setFocus();
    trigger(CommandId::AddMember);
    typeIntoCell(guests, u"gus"_s);
    guests->setCurrentIndex(guests->model()->index(1, 3));
    typeIntoCell(guests, u"pw2"_s);
    guests->selectRow(1);
    auto data = std::unique_ptr<QMimeData>(MemberDragFormat::toMimeData(guests->selectedMembers()));
    OrganizeTreeView *forum = view().tree(true);
    const QModelIndex forumGroup = forum->tree()->index(0, 0, forum->tree()->rootIndex());
    QVERIFY(dragTo(forum, forum->visualRect(forumGroup).center(), data.get(), true));
    QCOMPARE(nodeLabels(forumGroup), QStringList({ u"Gina"_s, u"gus"_s }));

    m_f->messages().queueAnswer(MessageService::Yes);
    frame().commandAction(CommandId::Save)->trigger();
    QCOMPARE(m_f->messages().boxTexts().last(), u"确定要保存?"_s);
    QVERIFY(!frame().document().isModified());

    // What the database holds is what the view shows.
    QCOMPARE(m_f->db->column(
                 u"SELECT MemberID FROM Member WHERE IsGuestMember = 0 ORDER BY OMemberID"_s),
        column(grid()->model()).mid(0, 2));
    QCOMPARE(m_f->db->column(
                 u"SELECT MemberID FROM Member WHERE IsGuestMember = 1 ORDER BY OMemberID"_s),
        column(guests->model()).mid(0, 2));
    QCOMPARE(m_f->db->column(u"SELECT Passwd FROM Member WHERE MemberID = 'gus'"_s),
        QStringList { u"pw2"_s });
    QCOMPARE(m_f->db->column(u"SELECT M.MemberID || '@' || G.GroupName FROM Relation R "
                             "JOIN Member M ON M.OMemberID = R.OMemberID "
                             "JOIN [Group] G ON G.OGroupID = R.OGroupID ORDER BY 1"_s),
        QStringList({ u"alice@Sales"_s, u"gina@Forum"_s, u"gus@Forum"_s }));
}

void OrganizeViewTest::firstMemberTipAndSplitters()
{
    // Every member deleted at once: the first new one brings the tip.
    grid()->setFocus();
    grid()->selectAll();
    m_f->messages().queueAnswer(MessageService::Yes);
    QTest::keyClick(grid(), Qt::Key_Delete);
    QCOMPARE(column(grid()->model()), QStringList { QString() });
    trigger(CommandId::AddMember);
    typeIntoCell(grid(), u"first"_s);
    const MessageService::Balloon tip = m_f->messages().balloons().last();
    QCOMPARE(tip.title, u"Tip!"_s);
    QCOMPARE(tip.text, u"在群组中没有添加用户.\n在左侧的系统图中."_s);
    QCOMPARE(tip.icon, MessageService::Icon::Question);
    QVERIFY(tip.hint);

    // The splitter between the two pairs, dragged up, is where it was left
    // in the next console.
    auto *rows = view().findChild<QSplitter *>(u"organizeRows"_s);
    QSplitterHandle *handle = rows->handle(1);
    const QList<int> before = rows->sizes();
    const int x = handle->width() / 2;
    QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(x, 1));
    QTest::mouseMove(handle, QPoint(x, -80));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(x, -80));
    const QList<int> moved = rows->sizes();
    QVERIFY(moved != before);
    const QString key = u"Software\\Velmar\\VelmarManager"_s;
    QTRY_VERIFY(registryString(
        m_f->fixture.dir.hives(), RegistryRoot::CurrentUser, key, u"OrganizeSplitters"_s)
                    .has_value());
    QString error;
    QVERIFY2(m_f->reopen(&error), qPrintable(error));
    QVERIFY(frame().showView(ViewId::Organize));
    // Scaled to the new pane's height.
    auto *restored = view().findChild<QSplitter *>(u"organizeRows"_s);
    QTRY_VERIFY2(qAbs(restored->sizes().value(0) - moved.first()) <= 10,
        qPrintable(u"%1 against %2"_s.arg(restored->sizes().value(0)).arg(moved.first())));
}

QTEST_MAIN(OrganizeViewTest)
#include "tst_organize_view.moc"
