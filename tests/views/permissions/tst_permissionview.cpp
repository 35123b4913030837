// The permission view on a loaded frame (see LoadedFrame): check boxes and
// "Check all" clicked in the grid, account cells typed into, the group tree
// choosing the rows and following the document, the pop-up with the frame's
// commands.

#include "CAccessControlFormView.h"
#include "CommandIds.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "FrozenGridView.h"
#include "GroupTreeModel.h"
#include "LoadedFrame.h"
#include "OutlookBar.h"
#include "PermissionTableModel.h"
#include "ViewIds.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;

class PermissionViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void layoutAndDefaultRecords();
    void checkBoxesAndCheckAll();
    void accountsAndPopupCommands();
    void followsDocument();

private:
    CAccessControlFormView *view() const
    {
        return qobject_cast<CAccessControlFormView *>(m_f->frame().view(ViewId::AccessControl));
    }
    FrozenGridView *grid() const { return view()->grid(); }
    QModelIndex cell(int row, int column) const { return grid()->model()->index(row, column); }
    // Clicks a cell where it is on screen (the fixed parts included).
    void click(const QModelIndex &index);
    void selectGroup(qint32 groupId);
    // Types into a cell (the first key opens its editor) and confirms.
    void typeInto(const QModelIndex &index, const QString &text);
    // Each member row as "user:flags:voip id:password", flags as 0 and 1.
    QStringList gridRows() const;
    int journalSteps() const { return m_f->frame().document().undoStack()->index(); }

    std::unique_ptr<LoadedFrame> m_f;
};

void PermissionViewTest::init()
{
    OPEN_LOADED_FRAME(m_f);
    QVERIFY(m_f->frame().outlookBar()->isItemEnabled(ViewId::AccessControl));
    QVERIFY(m_f->frame().showView(ViewId::AccessControl));
    QVERIFY(view() && grid()->isVisible());
}

void PermissionViewTest::click(const QModelIndex &index)
{
    grid()->scrollTo(index);
    QTableView *shown = grid()->viewShowing(index);
    QTest::mouseClick(shown->viewport(), Qt::LeftButton, {}, shown->visualRect(index).center());
}

void PermissionViewTest::typeInto(const QModelIndex &index, const QString &text)
{
    grid()->setFocus();
    grid()->setCurrentIndex(index);
    typeIntoCell(grid(), text);
}

void PermissionViewTest::selectGroup(qint32 groupId)
{
    QTreeView *tree = view()->groupTree();
    const QModelIndex group
        = m_f->frame().document().directory()->regularTree()->findGroup(groupId);
    tree->scrollTo(group);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(group).center());
}

QStringList PermissionViewTest::gridRows() const
{
    QStringList rows;
    for (int row = 1; row < grid()->model()->rowCount(); ++row) {
        QString flags;
        for (int column = PermissionTableModel::FirstFeatureColumn;
             column <= PermissionTableModel::LastFeatureColumn; ++column)
            flags
                += cell(row, column).data(Qt::CheckStateRole).toInt() == Qt::Checked ? u'1' : u'0';
        rows << u"%1:%2:%3:%4"_s.arg(cell(row, 0).data().toString(), flags,
            cell(row, PermissionTableModel::VoipIdColumn).data().toString(),
            cell(row, PermissionTableModel::VoipPasswordColumn).data().toString());
    }
    return rows;
}

void PermissionViewTest::layoutAndDefaultRecords()
{
    // The header and "Check all" rows, and the user ID and name columns, stay in place.
    QCOMPARE(grid()->viewShowing(cell(0, 2)), grid()->frozenRowsView());
    QVERIFY(grid()->frozenRowsView()->isVisible() && grid()->frozenColumnsView()->isVisible());
    QCOMPARE(grid()->frozenColumnsView()->width(), grid()->columnWidth(0) + grid()->columnWidth(1));
    grid()->horizontalScrollBar()->setValue(grid()->horizontalScrollBar()->maximum());
    QCOMPARE(grid()->frozenRowsView()->horizontalScrollBar()->value(),
        grid()->horizontalScrollBar()->value());

    // The root shows everybody; carl and gina got the defaults without an edit.
    QCOMPARE(gridRows(),
        QStringList({ u"anna:11111111:v100:p100"_s, u"bert:10100000::"_s, u"carl:11111110::"_s,
            u"dora:11111110::"_s, u"gina:11111110::"_s }));
    QVERIFY(m_f->frame().document().permissions().token(3));
    QVERIFY(!m_f->frame().document().isModified());
    // Check boxes tell assistive tools their state.
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(grid());
    QVERIFY(table && table->tableInterface());
    const QAccessible::State bert = table->tableInterface()->cellAt(2, 3)->state();
    QVERIFY(bert.checkable && !bert.checked);
    QCOMPARE(view()->groupTree()->accessibleName(), u"类别"_s);
    QCOMPARE(grid()->accessibleName(), u"权限"_s);
}

void PermissionViewTest::checkBoxesAndCheckAll()
{
    // A click reaches the permission rules (instant messaging off takes file
    // transfer with it: the undo below shows it). A group shows its direct
    // members only; "Check all" touches them alone.
    click(cell(1, 2));
    selectGroup(10);
    QCOMPARE(view()->gridModel()->shownMembers(), QList<qint32>({ 1, 3 }));
    click(cell(2, 4)); // carl's file transfer off
    click(cell(0, 4));
    QCOMPARE(cell(0, 4).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QCOMPARE(gridRows(), QStringList({ u"anna:11111111:v100:p100"_s, u"carl:11111110::"_s }));
    QCOMPARE(journalSteps(), 3);
    m_f->frame().undoAction()->trigger();
    QCOMPARE(gridRows(), QStringList({ u"anna:01011111:v100:p100"_s, u"carl:11011110::"_s }));
    selectGroup(11);
    QCOMPARE(gridRows(), QStringList({ u"bert:10100000::"_s }));
}

void PermissionViewTest::accountsAndPopupCommands()
{
    // Typing into carl's account cells (how the pool follows is the editor's
    // to test).
    typeInto(cell(3, PermissionTableModel::VoipIdColumn), u"v101"_s);
    typeInto(cell(3, PermissionTableModel::VoipPasswordColumn), u"secret"_s);
    QCOMPARE(gridRows().at(2), u"carl:11111110:v101:secret"_s);

    // The pop-up offers the frame's commands; the assignment's result is shown.
    QMenu *menu = openPopup(grid(), grid()->visualRect(cell(2, 5)).center());
    QVERIFY(menu);
    QCOMPARE(menuTexts(menu), QStringList({ u"删除 权限(&D)"_s, u"自动分配电话号码"_s }));
    QVERIFY(clickMenuItem(menu, u"自动分配电话号码"_s));
    QCOMPARE(m_f->messages().boxTexts(),
        QStringList({ u"已分配电话号码: 1 个会员; 没有可用号码: 2 个会员."_s }));
    QCOMPARE(m_f->messages().boxes().constFirst().icon, MessageService::Icon::Exclamation);
    QCOMPARE(gridRows().at(1), u"bert:10100001:v102:p102"_s);

    // "删除 权限" on bert's row, from the pop-up: back to the defaults.
    menu = openPopup(
        grid()->frozenColumnsView(), grid()->frozenColumnsView()->visualRect(cell(2, 0)).center());
    QVERIFY(menu && clickMenuItem(menu, u"删除 权限(&D)"_s));
    QCOMPARE(gridRows().at(1), u"bert:11111110::"_s);
    QCOMPARE(journalSteps(), 4);
}

void PermissionViewTest::followsDocument()
{
    CVelmarManagerDoc &doc = m_f->frame().document();
    const DirectoryNode *root = doc.directory()->treeData(false).root();
    const EditResult added = doc.editor().addGroup(false, root, u"Support"_s);
    QVERIFY(added.ok());
    // There at once, and members placed into it while it is shown appear.
    selectGroup(added.id);
    QCOMPARE(view()->groupTree()->currentIndex().data().toString(), u"Support"_s);
    QVERIFY(view()->gridModel()->shownMembers().isEmpty());
    const DirectoryNode *group = doc.directory()->treeData(false).findGroup(added.id);
    QVERIFY(doc.editor().placeMembers(false, group, { 4, 2 }).ok());
    QCOMPARE(gridRows(), QStringList({ u"dora:11111110::"_s, u"bert:10100000::"_s }));
    click(cell(2, 9));
    click(cell(0, 3));
    // The grid shows the document; what a save writes of it is the save's to test.
    QCOMPARE(gridRows().at(1), u"bert:11100001::"_s);
    const CAccessToken *bert = doc.permissions().token(2);
    QVERIFY(bert && bert->flag(CAccessToken::ChatOn) && bert->flag(CAccessToken::VoipOn));
}

QTEST_MAIN(PermissionViewTest)
#include "tst_permissionview.moc"
