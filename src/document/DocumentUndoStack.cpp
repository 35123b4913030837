#include "DocumentUndoStack.h"

#include <algorithm>

DocumentUndoStack::DocumentUndoStack(QObject *parent)
    : QObject(parent)
{ }

DocumentUndoStack::~DocumentUndoStack() = default;

QString DocumentUndoStack::text(int step) const
{
    return step >= 0 && step < count() ? m_steps[size_t(step)].text : QString();
}

void DocumentUndoStack::push(
    const QString &text, std::function<void()> redo, std::function<void()> undo)
{
    redo();
    if (m_macro) {
        m_macro->edits.push_back({ std::move(redo), std::move(undo) });
        return;
    }
    const State before = state();
    dropRedoTail();
    Step step { text, {} };
    step.edits.push_back({ std::move(redo), std::move(undo) });
    m_steps.push_back(std::move(step));
    ++m_index;
    announce(before);
}

void DocumentUndoStack::beginMacro(const QString &text)
{
    if (m_macroDepth++ == 0)
        m_macro = Step { text, {} };
}

void DocumentUndoStack::endMacro()
{
    if (m_macroDepth == 0 || --m_macroDepth > 0)
        return;
    Step step = std::move(*m_macro);
    m_macro.reset();
    if (step.edits.empty())
        return;
    const State before = state();
    dropRedoTail();
    m_steps.push_back(std::move(step));
    ++m_index;
    announce(before);
}

void DocumentUndoStack::dropRedoTail()
{
    m_steps.erase(m_steps.begin() + m_index, m_steps.end());
    // The saved state was among the dropped steps: no undo or redo reaches it again.
    if (m_cleanIndex > m_index)
        m_cleanIndex = -1;
}

void DocumentUndoStack::undo()
{
    if (!canUndo())
        return;
    const State before = state();
    const Step &step = m_steps[size_t(--m_index)];
    std::for_each(step.edits.rbegin(), step.edits.rend(), [](const Edit &edit) { edit.undo(); });
    announce(before);
}

void DocumentUndoStack::redo()
{
    if (!canRedo())
        return;
    const State before = state();
    const Step &step = m_steps[size_t(m_index++)];
    for (const Edit &edit : step.edits)
        edit.redo();
    announce(before);
}

void DocumentUndoStack::setIndex(int step)
{
    step = std::clamp(step, 0, count());
    while (m_index > step && canUndo())
        undo();
    while (m_index < step && canRedo())
        redo();
}

void DocumentUndoStack::setClean()
{
    if (m_macro)
        return;
    const State before = state();
    m_cleanIndex = m_index;
    announce(before);
}

void DocumentUndoStack::clear()
{
    const State before = state();
    // The edits hold what they change; they go before anything else does.
    m_macro.reset();
    m_macroDepth = 0;
    m_steps.clear();
    m_index = 0;
    m_cleanIndex = 0;
    announce(before);
}

DocumentUndoStack::State DocumentUndoStack::state() const
{
    return { m_index, isClean(), canUndo(), canRedo(), undoText(), redoText() };
}

void DocumentUndoStack::announce(const State &before)
{
    const State now = state();
    // The index signal goes out even when the index is the same again (a
    // clear after edits): the views listening to it rebuild on it.
    Q_EMIT indexChanged(now.index);
    if (now.clean != before.clean)
        Q_EMIT cleanChanged(now.clean);
    if (now.canUndo != before.canUndo)
        Q_EMIT canUndoChanged(now.canUndo);
    if (now.canRedo != before.canRedo)
        Q_EMIT canRedoChanged(now.canRedo);
    if (now.undoText != before.undoText)
        Q_EMIT undoTextChanged(now.undoText);
    if (now.redoText != before.redoText)
        Q_EMIT redoTextChanged(now.redoText);
}
