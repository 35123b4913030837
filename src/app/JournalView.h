#pragma once

#include <QListView>

class DocumentUndoStack;
class JournalListModel;

// The journal dock's list: the current row is the state the document is in;
// choosing another row undoes or redoes up to it.
class JournalView final : public QListView
{
    Q_OBJECT

public:
    explicit JournalView(DocumentUndoStack *stack, QWidget *parent = nullptr);

    void setEmptyLabel(const QString &label);
    void setCleanIcon(const QIcon &icon);

private:
    void showStackIndex();
    void goToRow(const QModelIndex &current);

    DocumentUndoStack *m_stack;
    JournalListModel *m_model;
    bool m_following = false;
};
