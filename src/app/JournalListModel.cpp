#include "JournalListModel.h"

#include "DocumentUndoStack.h"

JournalListModel::JournalListModel(DocumentUndoStack *stack, QObject *parent)
    : QAbstractListModel(parent)
    , m_stack(stack)
{
    // Every change of the journal moves its index or its clean mark; the
    // rows are few, so the list is simply read again.
    connect(m_stack, &DocumentUndoStack::indexChanged, this, &JournalListModel::restack);
    connect(m_stack, &DocumentUndoStack::cleanChanged, this, &JournalListModel::restack);
}

void JournalListModel::setEmptyLabel(const QString &label)
{
    m_emptyLabel = label;
    restack();
}

void JournalListModel::setCleanIcon(const QIcon &icon)
{
    m_cleanIcon = icon;
    restack();
}

void JournalListModel::restack()
{
    beginResetModel();
    endResetModel();
}

int JournalListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_stack->count() + 1;
}

QVariant JournalListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const int row = index.row();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return row == 0 ? m_emptyLabel : m_stack->text(row - 1);
    case Qt::DecorationRole:
        if (row == m_stack->cleanIndex() && !m_cleanIcon.isNull())
            return m_cleanIcon;
        return {};
    default:
        return {};
    }
}
