#pragma once

#include "AppTestSupport.h"
#include "LoadedServer.h"
#include "TestDatabase.h"

#include <memory>
#include <QStringList>
#include <QTest>

class QMenu;
class QAbstractItemView;

// A main window that has loaded a real SQLite server database
// (tests/data/views/organisation.sql):
//
//   Member: anna(1) bert(2) carl(3) dora(4); guest gina(5)
//   tree: Sales(10) { anna 经理, East(11) { bert 职员 }, carl (none) }, HQ(20) { dora 总监 }
//   Rank: 1 职员, 2 经理, 3 总监; DefaultPositionID 2
//   AccessToken: anna 11111111, bert 10100000, dora 11111110 (carl and gina none)
//   VoipInfo: anna v100/p100; VoipNumberList: v100 (anna), v101, v102 (free)
//
// The save notifies the server's ports; what arrives there is the frame's
// tests' business, so nothing listens here.
struct LoadedFrame
{
    FrameFixture fixture;
    std::unique_ptr<TestDatabase> db;

    // False with the reason in error when the database or the load failed.
    bool open(QString *error);
    // The same on a database holding only these rows, without a Serverinfo.ini.
    bool open(const QStringList &statements, QString *error);
    CMainFrame &frame() { return *fixture.frame; }
    ScriptedMessageService &messages() { return fixture.messages; }
    // The save command, as the menu runs it; true when nothing is left to save.
    bool save();
    // A new main window on the same folder, loaded (the console started again).
    bool reopen(QString *error);
};

// Opens f afresh with the arguments of LoadedFrame::open (the last test's
// window goes before the next one opens); a database or load that fails
// fails the test.
#define OPEN_LOADED_FRAME(f, ...)                                                                  \
    do {                                                                                           \
        f.reset();                                                                                 \
        f = std::make_unique<LoadedFrame>();                                                       \
        QString openError;                                                                         \
        QVERIFY2(f->open(__VA_ARGS__ __VA_OPT__(, ) & openError), qPrintable(openError));          \
    } while (false)

// Types text into a widget key by key, each key carrying its character
// (CJK included), as an input method hands them over.
void typeText(QWidget *widget, const QString &text);
// Types text into a grid's current cell as a person does: the first key
// opens the editor, the others go to it, Enter ends the edit. Returns once
// the delegate has committed and the grid has moved on.
void typeIntoCell(QAbstractItemView *grid, const QString &text);
// The pop-up a view opens for a right click at pos (viewport coordinates).
QMenu *openPopup(QAbstractItemView *view, const QPoint &pos);
// The texts of a menu's items, separators as "-".
QStringList menuTexts(const QMenu *menu);
// Clicks the item of an open menu with this text; false when there is none.
bool clickMenuItem(QMenu *menu, const QString &text);
