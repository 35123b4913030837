#include "JournalView.h"

#include "DocumentUndoStack.h"
#include "JournalListModel.h"

JournalView::JournalView(DocumentUndoStack *stack, QWidget *parent)
    : QListView(parent)
    , m_stack(stack)
    , m_model(new JournalListModel(stack, this))
{
    setModel(m_model);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(m_model, &QAbstractItemModel::modelReset, this, &JournalView::showStackIndex);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, &JournalView::goToRow);
    showStackIndex();
}

void JournalView::setEmptyLabel(const QString &label)
{
    m_model->setEmptyLabel(label);
}

void JournalView::setCleanIcon(const QIcon &icon)
{
    m_model->setCleanIcon(icon);
}

void JournalView::showStackIndex()
{
    // Following the journal is not a choice of the administrator's.
    m_following = true;
    const QModelIndex current = m_model->index(m_stack->index(), 0);
    selectionModel()->setCurrentIndex(current, QItemSelectionModel::ClearAndSelect);
    scrollTo(current);
    m_following = false;
}

void JournalView::goToRow(const QModelIndex &current)
{
    if (!m_following && current.isValid())
        m_stack->setIndex(current.row());
}
