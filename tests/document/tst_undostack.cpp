// The document's journal on its own: steps and macros, the clean state and
// what the menu and the dock are told.
#include "DocumentUndoStack.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestUndoStack : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stepsMacrosAndClean();
    void signalsFollowTheState();
};

namespace {
// Pushes a step that appends its digit to the log and takes it back on undo.
void step(DocumentUndoStack &stack, QString &log, char digit)
{
    stack.push(
        QString(QLatin1Char(digit)), [&log, digit] { log += QLatin1Char(digit); },
        [&log] { log.chop(1); });
}
} // namespace

void TestUndoStack::stepsMacrosAndClean()
{
    DocumentUndoStack stack;
    QString log;
    step(stack, log, '1');
    stack.beginMacro(u"m"_s);
    step(stack, log, '2');
    stack.beginMacro(u"inner"_s);
    step(stack, log, '3');
    stack.endMacro();
    QVERIFY(!stack.canUndo()); // nothing to undo while a macro is open
    stack.endMacro();
    QCOMPARE(log, u"123"_s);
    QCOMPARE(stack.count(), 2);
    QCOMPARE(stack.text(1), u"m"_s);

    // A macro without edits leaves no step.
    stack.beginMacro(u"empty"_s);
    stack.endMacro();
    QCOMPARE(stack.count(), 2);

    stack.undo(); // the macro as one step, last edit first
    QCOMPARE(log, u"1"_s);
    QCOMPARE(stack.redoText(), u"m"_s);
    stack.setClean();
    stack.setIndex(0);
    QCOMPARE(log, QString());
    QVERIFY(!stack.isClean());
    stack.redo();
    QVERIFY(stack.isClean());

    // A new step drops the undone macro, and with it nothing reaches the
    // clean state any more.
    stack.undo();
    step(stack, log, '4');
    QCOMPARE(log, u"4"_s);
    QCOMPARE(stack.count(), 1);
    QCOMPARE(stack.cleanIndex(), -1);
    QVERIFY(!stack.isClean());
    stack.redo(); // nothing to redo
    QCOMPARE(log, u"4"_s);
    // Clean below the dropped steps stays reachable.
    stack.setClean();
    step(stack, log, '5');
    stack.undo();
    step(stack, log, '6');
    QCOMPARE(stack.cleanIndex(), 1);
    stack.undo();
    QVERIFY(stack.isClean());

    stack.clear();
    QCOMPARE(stack.count(), 0);
    QVERIFY(stack.isClean());
    QVERIFY(!stack.canUndo() && !stack.canRedo());
}

void TestUndoStack::signalsFollowTheState()
{
    DocumentUndoStack stack;
    QString log;
    QSignalSpy clean(&stack, &DocumentUndoStack::cleanChanged);
    QSignalSpy canUndo(&stack, &DocumentUndoStack::canUndoChanged);
    QSignalSpy undoText(&stack, &DocumentUndoStack::undoTextChanged);
    QSignalSpy index(&stack, &DocumentUndoStack::indexChanged);
    step(stack, log, '1');
    step(stack, log, '2');
    QCOMPARE(clean.size(), 1);
    QCOMPARE(clean.last().first().toBool(), false);
    QCOMPARE(canUndo.size(), 1);
    QCOMPARE(undoText.size(), 2);
    QCOMPARE(undoText.last().first().toString(), u"2"_s);
    QCOMPARE(index.size(), 2);
    stack.setIndex(0);
    QCOMPARE(clean.last().first().toBool(), true);
    QCOMPARE(canUndo.last().first().toBool(), false);
    QCOMPARE(undoText.last().first().toString(), QString());
    // Cleared, the views are told even though the index is 0 again.
    index.clear();
    stack.clear();
    QCOMPARE(index.size(), 1);
}

QTEST_GUILESS_MAIN(TestUndoStack)
#include "tst_undostack.moc"
