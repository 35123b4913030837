// Undo, redo and the journal panel of the main frame, on a frame that has
// loaded a real SQLite server database (see LoadedFrame): edits
// made through the document's editor, the edit menu's actions and shortcuts,
// the title's modified marker. (That a save empties the stack, and that the
// telephone number assignment is one step, are the document's to test; the
// panel shows the stack, and the permission view reaches the assignment.)

#include "CMainFrame.h"
#include "CommandIds.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "JournalView.h"
#include "LoadedFrame.h"

#include <memory>
#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The rows the journal view shows, the saved state first.
QStringList journalRows(const CMainFrame &frame)
{
    auto *view = frame.findChild<JournalView *>(u"journalView"_s);
    QStringList rows;
    if (!view)
        return rows;
    for (int row = 0; row < view->model()->rowCount(); ++row)
        rows.append(view->model()->index(row, 0).data().toString());
    return rows;
}

void addGroup(CMainFrame &frame, const QString &name)
{
    CVelmarManagerDoc &doc = frame.document();
    QVERIFY(doc.editor().addGroup(false, doc.directory()->treeData(false).root(), name).ok());
}

QStringList menuTexts(const CMainFrame &frame, const QString &menuName)
{
    return menuTexts(frame.menuBar()->findChild<QMenu *>(menuName));
}

} // namespace

class JournalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void menusAndPanelBeforeEditing();
    void undoRedoFollowTheStack();
    void journalViewUndoesToEntry();

private:
    CMainFrame &frame() { return m_f->frame(); }

    std::unique_ptr<LoadedFrame> m_f;
};

void JournalTest::init()
{
    OPEN_LOADED_FRAME(m_f);
}

void JournalTest::menusAndPanelBeforeEditing()
{
    QStringList edit = menuTexts(frame(), u"menuEdit"_s);
    QCOMPARE(edit.mid(0, 4), QStringList({ u"撤销"_s, u"重做"_s, u"-"_s, u"添加 类别(&A)"_s }));
    QCOMPARE(frame().undoAction()->shortcut(), QKeySequence(u"Ctrl+Z"_s));
    QCOMPARE(frame().redoAction()->shortcut(), QKeySequence(u"Ctrl+Y"_s));
    QVERIFY(!frame().undoAction()->isEnabled());
    QVERIFY(!frame().redoAction()->isEnabled());

    QDockWidget *dock = frame().journalDock();
    QCOMPARE(dock->windowTitle(), u"修改记录"_s);
    QVERIFY(dock->isVisible());
    QCOMPARE(frame().dockWidgetArea(dock), Qt::BottomDockWidgetArea);
    QCOMPARE(journalRows(frame()), QStringList { u"已保存"_s });

    // The view menu's toggle hides and shows the panel.
    QVERIFY(menuTexts(frame(), u"menuView"_s).contains(u"修改记录(&J)"_s));
    auto *toggle = frame().findChild<QAction *>(u"journalToggle"_s);
    QVERIFY(toggle);
    QVERIFY(toggle->isChecked());
    toggle->trigger();
    QVERIFY(dock->isHidden());
    toggle->trigger();
    QVERIFY(dock->isVisible());

    // Hidden at the close, hidden at the next start; and shown again likewise.
    for (const bool shown : { false, true }) {
        if (frame().journalDock()->isHidden() == shown)
            frame().findChild<QAction *>(u"journalToggle"_s)->trigger();
        QVERIFY(frame().close());
        m_f->fixture.makeFrame();
        QCOMPARE(frame().journalDock()->isHidden(), !shown);
        QVERIFY(showActive(&frame()));
        QTRY_VERIFY(frame().isStartupReady());
    }
}

void JournalTest::undoRedoFollowTheStack()
{
    QAction *undo = frame().undoAction();
    QAction *redo = frame().redoAction();
    addGroup(frame(), u"Ops"_s);
    addGroup(frame(), u"Support"_s);
    QVERIFY(undo->isEnabled());
    QCOMPARE(undo->text(), u"撤销 添加类别 Support"_s);
    QVERIFY(!redo->isEnabled());
    QCOMPARE(redo->text(), u"重做"_s);
    QVERIFY(frame().isWindowModified());

    // The administrator's shortcut, as typed on the window.
    QTest::keyClick(&frame(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(frame().document().journal(), QStringList { u"添加类别 Ops"_s });
    QCOMPARE(undo->text(), u"撤销 添加类别 Ops"_s);
    QVERIFY(redo->isEnabled());
    QCOMPARE(redo->text(), u"重做 添加类别 Support"_s);
    QVERIFY(frame().isWindowModified());

    // Back at the state that was loaded: the marker goes.
    QTest::keyClick(&frame(), Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(!undo->isEnabled());
    QCOMPARE(undo->text(), u"撤销"_s);
    QVERIFY(!frame().isWindowModified());

    QTest::keyClick(&frame(), Qt::Key_Y, Qt::ControlModifier);
    QCOMPARE(frame().document().journal(), QStringList { u"添加类别 Ops"_s });
    QVERIFY(frame().isWindowModified());
}

void JournalTest::journalViewUndoesToEntry()
{
    addGroup(frame(), u"Ops"_s);
    addGroup(frame(), u"Support"_s);
    QCOMPARE(journalRows(frame()),
        QStringList({ u"已保存"_s, u"添加类别 Ops"_s, u"添加类别 Support"_s }));

    // Choosing the saved state undoes every step.
    auto *view = frame().findChild<JournalView *>(u"journalView"_s);
    view->setCurrentIndex(view->model()->index(0, 0));
    QCOMPARE(frame().document().undoStack()->index(), 0);
    QVERIFY(!frame().isWindowModified());
    view->setCurrentIndex(view->model()->index(1, 0));
    QCOMPARE(frame().document().journal(), QStringList { u"添加类别 Ops"_s });
    QVERIFY(frame().isWindowModified());
}

QTEST_MAIN(JournalTest)
#include "JournalTest.moc"
