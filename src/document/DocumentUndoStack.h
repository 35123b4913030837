#pragma once

#include <functional>
#include <optional>
#include <QObject>
#include <QString>
#include <vector>

// The document's journal: the steps since the last save or load, each an
// edit and its reverse captured by the editor that checked it, so that
// neither can be refused. Undo and redo move through it; a new step drops
// the undone ones. A macro gathers the edits pushed while it is open into
// one step. Core only: velmarctl keeps a journal without a GUI library, and
// the console shows this one in its menu and journal dock.
class DocumentUndoStack final : public QObject
{
    Q_OBJECT

public:
    explicit DocumentUndoStack(QObject *parent = nullptr);
    ~DocumentUndoStack() override;

    // Runs redo now and keeps the pair: as a step of its own, or as part of
    // the open macro.
    void push(const QString &text, std::function<void()> redo, std::function<void()> undo);
    // Nested macros make one step, named by the outermost. A macro that
    // received no edit leaves no step.
    void beginMacro(const QString &text);
    void endMacro();

    int count() const { return int(m_steps.size()); }
    // How many steps are done: the next undo takes back step index() - 1.
    int index() const { return m_index; }
    QString text(int step) const;
    bool canUndo() const { return !m_macro && m_index > 0; }
    bool canRedo() const { return !m_macro && m_index < count(); }
    QString undoText() const { return canUndo() ? text(m_index - 1) : QString(); }
    QString redoText() const { return canRedo() ? text(m_index) : QString(); }

    // Clean: at the state of the last save or load. -1 once that state was
    // dropped by a new step after undoing past it.
    bool isClean() const { return !m_macro && m_cleanIndex == m_index; }
    int cleanIndex() const { return m_cleanIndex; }
    void setClean();
    // Forgets every step; the state now is the clean one.
    void clear();

public Q_SLOTS:
    void undo();
    void redo();
    // Undoes or redoes until index() is step.
    void setIndex(int step);

Q_SIGNALS:
    void indexChanged(int index);
    void cleanChanged(bool clean);
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);
    void undoTextChanged(const QString &undoText);
    void redoTextChanged(const QString &redoText);

private:
    struct Edit
    {
        std::function<void()> redo;
        std::function<void()> undo;
    };
    struct Step
    {
        QString text;
        std::vector<Edit> edits;
    };
    struct State
    {
        int index;
        bool clean;
        bool canUndo;
        bool canRedo;
        QString undoText;
        QString redoText;
    };

    State state() const;
    // Emits what differs from before.
    void announce(const State &before);
    // Drops the undone steps before a new one is recorded.
    void dropRedoTail();

    std::vector<Step> m_steps;
    int m_index = 0;
    int m_cleanIndex = 0;
    std::optional<Step> m_macro;
    int m_macroDepth = 0;
};
