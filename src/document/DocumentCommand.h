#pragma once

#include <functional>
#include <QUndoCommand>

// One step of the document's undo stack: an edit and its reverse, each a
// function that captured what it needs. The editor builds both when it has
// checked the edit, so that neither can be refused.
class DocumentCommand final : public QUndoCommand
{
public:
    DocumentCommand(const QString &text, std::function<void()> redo, std::function<void()> undo)
        : QUndoCommand(text)
        , m_redo(std::move(redo))
        , m_undo(std::move(undo))
    { }

    void redo() override { m_redo(); }
    void undo() override { m_undo(); }

private:
    std::function<void()> m_redo;
    std::function<void()> m_undo;
};
