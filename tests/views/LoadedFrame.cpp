#include "LoadedFrame.h"

#include "CommandIds.h"
#include "CProgressDlg.h"
#include "CVelmarManagerDoc.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

bool LoadedFrame::open(QString *error)
{
    if (!fixture.dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\nDefaultPositionID=2\r\n")) {
        *error = u"Serverinfo.ini"_s;
        return false;
    }
    return open(sqlFile(u"organisation.sql"_s), error);
}

bool LoadedFrame::open(const QStringList &statements, QString *error)
{
    db = serverDatabase(fixture.dir, statements, error);
    return db && reopen(error);
}

bool LoadedFrame::reopen(QString *error)
{
    fixture.frame.reset();
    fixture.messages.clear();
    MainFrameContext context = fixture.context();
    context.loadServerData = true;
    fixture.frame = std::make_unique<CMainFrame>(context);
    frame().resize(1200, 760);
    if (!showActive(&frame()))
        return false;
    // A ceiling for the worker; nothing is timed.
    const bool loaded = QTest::qWaitFor(
        [this] {
            return frame().document().loadState() == CVelmarManagerDoc::LoadState::Complete
                && !frame().findChild<CProgressDlg *>();
        },
        60000);
    if (!loaded || !messages().boxes().isEmpty()) {
        *error = u"load: "_s + messages().boxTexts().join(u'\n');
        return false;
    }
    return showActive(&frame());
}

bool LoadedFrame::save()
{
    frame().commandAction(CommandId::Save)->trigger();
    return !frame().document().isModified();
}

void typeText(QWidget *widget, const QString &text)
{
    for (const QChar ch : text)
        QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(ch), Qt::NoModifier);
}

void typeIntoCell(QAbstractItemView *grid, const QString &text)
{
    QTest::keyClicks(grid, text.left(1));
    QPointer<QWidget> editor = QApplication::focusWidget();
    QVERIFY(editor && editor != grid);
    QTest::keyClicks(editor, text.mid(1));
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits on the next turn of the event loop; a new member's
    // row takes the caret after that.
    QTRY_VERIFY(editor.isNull() || !editor->isVisible());
    QApplication::processEvents();
}

QMenu *openPopup(QAbstractItemView *view, const QPoint &pos)
{
    QContextMenuEvent event(
        QContextMenuEvent::Mouse, pos, view->viewport()->mapToGlobal(pos), Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &event);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QStringList menuTexts(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *action : menu->actions())
        texts << (action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

bool clickMenuItem(QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text() == text && action->isEnabled()) {
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            return true;
        }
    }
    return false;
}
