// The position view on a loaded frame (see LoadedFrame): the tree, its
// pop-ups and keys, the grid's pop-up and drop-down, each reaching the
// editor and showing its answer.

#include "CClassTreeCtrl.h"
#include "CommandIds.h"
#include "CPositionFormView.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "LoadedFrame.h"
#include "MembershipPositionModel.h"
#include "OutlookBar.h"
#include "PositionListModel.h"
#include "PositionTreeModel.h"
#include "ViewIds.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class PositionViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsListAndMemberships();
    void treePopupsAndLabelEditing();
    void deletionAndDefault();
    void gridPopupAndDropDown();
    void emptyListShowsTip();

private:
    CPositionFormView *view() const
    {
        return qobject_cast<CPositionFormView *>(m_f->frame().view(ViewId::Position));
    }
    CClassTreeCtrl *tree() const { return view()->tree(); }
    QTableView *grid() const { return view()->grid(); }
    QModelIndex position(int row) const { return tree()->positionModel()->positionIndex(row); }
    QStringList treeTexts() const;
    QStringList gridRows() const;
    int journalSteps() const { return m_f->frame().document().undoStack()->index(); }

    std::unique_ptr<LoadedFrame> m_f;
};

QStringList PositionViewTest::treeTexts() const
{
    // Each node as shown: its name, "*" when bold.
    QStringList texts;
    const PositionTreeModel *model = tree()->positionModel();
    const QModelIndex root = model->rootIndex();
    auto text = [](const QModelIndex &index) {
        return index.data().toString()
            + (index.data(Qt::FontRole).value<QFont>().bold() ? u"*"_s : QString());
    };
    texts << text(root);
    for (int row = 0; row < model->rowCount(root); ++row)
        texts << text(model->index(row, 0, root));
    return texts;
}

QStringList PositionViewTest::gridRows() const
{
    QStringList rows;
    const QAbstractItemModel *model = grid()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model->columnCount(); ++column)
            cells << model->index(row, column).data().toString();
        rows << cells.join(u'/');
    }
    return rows;
}

void PositionViewTest::init()
{
    OPEN_LOADED_FRAME(m_f);
    QVERIFY(m_f->frame().outlookBar()->isItemEnabled(ViewId::Position));
    QVERIFY(m_f->frame().showView(ViewId::Position));
    QVERIFY(view() && view()->isVisible());
}

void PositionViewTest::showsListAndMemberships()
{
    QAbstractItemModelTester tester(
        tree()->positionModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(treeTexts(), QStringList({ u"等级*"_s, u"职员"_s, u"经理*"_s, u"总监"_s }));
    QVERIFY(tree()->isExpanded(tree()->positionModel()->rootIndex()));
    // No position shows the second entry of the list.
    QCOMPARE(gridRows(),
        QStringList({ u"bert/East/职员"_s, u"anna/Sales/经理"_s, u"carl/Sales/经理"_s,
            u"dora/HQ/总监"_s }));
    QCOMPARE(grid()->columnWidth(MembershipPositionModel::LoginNameColumn), 100);
    QCOMPARE(grid()->columnWidth(MembershipPositionModel::PositionColumn), 100);
    QVERIFY(grid()->columnWidth(MembershipPositionModel::GroupColumn) > 100);
    QCOMPARE(tree()->accessibleName(), u"等级目录"_s);
    QCOMPARE(grid()->accessibleName(), u"登记编辑"_s);
    // Rename and delete need a position selected.
    tree()->setCurrentIndex(tree()->positionModel()->rootIndex());
    QVERIFY(!m_f->frame().commandAction(CommandId::RenameRank)->isEnabled());
    tree()->setCurrentIndex(position(1));
    QVERIFY(m_f->frame().commandAction(CommandId::RenameRank)->isEnabled());
    QVERIFY(m_f->messages().balloons().isEmpty());
}

void PositionViewTest::treePopupsAndLabelEditing()
{
    const QModelIndex root = tree()->positionModel()->rootIndex();
    QMenu *menu = openPopup(tree(), tree()->visualRect(root).center());
    QVERIFY(menu);
    QCOMPARE(menuTexts(menu), QStringList({ u"追加等级(&A)"_s }));
    QVERIFY(clickMenuItem(menu, u"追加等级(&A)"_s));
    // The new position goes straight into label editing.
    QLineEdit *label = nullptr;
    QTRY_VERIFY((label = tree()->findChild<QLineEdit *>()) && label->isVisible());
    QCOMPARE(label->text(), u"新等级"_s);
    label->selectAll();
    typeText(label, u"主管"_s);
    QTest::keyClick(label, Qt::Key_Return);
    // The delegate commits on the next turn of the event loop.
    QTRY_COMPARE(treeTexts().last(), u"主管"_s);

    // F2 on a position; the name of another one is refused.
    tree()->setCurrentIndex(position(0));
    QTest::keyClick(tree(), Qt::Key_F2);
    QTRY_VERIFY((label = tree()->findChild<QLineEdit *>()) && label->isVisible());
    label->selectAll();
    typeText(label, u"经理"_s);
    QTest::keyClick(label, Qt::Key_Return);
    QTRY_COMPARE(m_f->messages().boxTexts(), QStringList({ u"相同的等级已经存在."_s }));
    QCOMPARE(position(0).data().toString(), u"职员"_s);
    QCOMPARE(journalSteps(), 2);

    menu = openPopup(tree(), tree()->visualRect(position(1)).center());
    QVERIFY(menu);
    QCOMPARE(menuTexts(menu),
        QStringList({ u"追加等级(&A)"_s, u"等级名修改(&M)"_s, u"删除(&D)"_s, u"-"_s,
            u"向上移动(&U)"_s, u"向下移动(&W)"_s, u"-"_s, u"默认登记设置(&E)"_s }));
    QVERIFY(tree()->defaultPositionAction()->isChecked());
    QVERIFY(clickMenuItem(menu, u"向上移动(&U)"_s));
    QCOMPARE(treeTexts(), QStringList({ u"等级*"_s, u"经理*"_s, u"职员"_s, u"总监"_s, u"主管"_s }));
    // The grid follows the list at once: anna's 经理 is now the first entry.
    QCOMPARE(view()->gridModel()->index(1, 2).data(MembershipPositionModel::PositionIndexRole), 0);
}

void PositionViewTest::deletionAndDefault()
{
    // Which positions may go is the editor's to test; the Delete key asks first.
    m_f->messages().queueAnswer(MessageService::No);
    tree()->setCurrentIndex(position(2));
    QTest::keyClick(tree(), Qt::Key_Delete);
    QCOMPARE(m_f->messages().boxTexts(),
        QStringList({ u"删除等级将使用该登记的用户全部删除.\n确定要删除?"_s }));
    QCOMPARE(treeTexts().size(), 4);
    m_f->messages().queueAnswer(MessageService::Yes);
    m_f->frame().commandAction(CommandId::DeleteRank)->trigger();
    QCOMPARE(treeTexts(), QStringList({ u"等级*"_s, u"职员"_s, u"经理*"_s }));

    // The default goes to the file at once; the root means none.
    QMenu *menu = openPopup(tree(), tree()->visualRect(position(0)).center());
    QVERIFY(menu && clickMenuItem(menu, u"默认登记设置(&E)"_s));
    QCOMPARE(treeTexts(), QStringList({ u"等级*"_s, u"职员*"_s, u"经理"_s }));
    QVERIFY(m_f->fixture.dir.readFile(u"Serverinfo.ini"_s).contains("DefaultPositionID=1"));
    m_f->frame().undoAction()->trigger();
    QVERIFY(m_f->fixture.dir.readFile(u"Serverinfo.ini"_s).contains("DefaultPositionID=2"));
    QCOMPARE(treeTexts(), QStringList({ u"等级*"_s, u"职员"_s, u"经理*"_s }));
}

void PositionViewTest::gridPopupAndDropDown()
{
    // Two rows selected by clicks, the pop-up applies to both, in one step.
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {},
        grid()->visualRect(grid()->model()->index(0, 0)).center());
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::ControlModifier,
        grid()->visualRect(grid()->model()->index(2, 0)).center());
    QMenu *menu = openPopup(grid(), grid()->visualRect(grid()->model()->index(2, 1)).center());
    QVERIFY(menu);
    QCOMPARE(menuTexts(menu), QStringList({ u"无等级"_s, u"职员"_s, u"经理"_s, u"总监"_s }));
    QVERIFY(clickMenuItem(menu, u"总监"_s));
    QCOMPARE(journalSteps(), 1);
    QCOMPARE(grid()->selectionModel()->selectedRows().size(), 2);
    QCOMPARE(gridRows(),
        QStringList({ u"bert/East/总监"_s, u"anna/Sales/经理"_s, u"carl/Sales/总监"_s,
            u"dora/HQ/总监"_s }));

    // The drop-down of the position column.
    const QModelIndex anna = grid()->model()->index(1, MembershipPositionModel::PositionColumn);
    grid()->setCurrentIndex(anna);
    QTest::keyClick(grid(), Qt::Key_F2);
    auto *combo = grid()->findChild<QComboBox *>(u"positionCombo"_s);
    QVERIFY(combo);
    QCOMPARE(combo->currentText(), u"经理"_s);
    QTest::keyClick(combo, Qt::Key_Up);
    QCOMPARE(anna.data().toString(), u"职员"_s);
    QCOMPARE(journalSteps(), 2);

    // The grid shows the document's memberships; what a save writes of them is
    // the save's to test.
    const DirectoryTree &tree = m_f->frame().document().directory()->treeData(false);
    QCOMPARE(tree.findMembership(1, tree.findGroup(10), false)->rankId(), 1);
}

void PositionViewTest::emptyListShowsTip()
{
    CVelmarManagerDoc empty;
    ScriptedMessageService messages;
    CPositionFormView bare(empty, messages);
    bare.show();
    QCOMPARE(messages.balloonTexts(), QStringList({ u"按右边的按钮，增加等级."_s }));
    QCOMPARE(messages.balloons().first().title, u"Tip!"_s);
    QCOMPARE(messages.balloons().first().icon, MessageService::Icon::Question);
}

QTEST_MAIN(PositionViewTest)
#include "tst_positionview.moc"
