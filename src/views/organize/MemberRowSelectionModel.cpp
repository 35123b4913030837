#include "MemberRowSelectionModel.h"

#include "MemberGridProxy.h"
#include "MemberListModel.h"
#include "MemberRules.h"

#include <QTimer>

MemberRowSelectionModel::MemberRowSelectionModel(MemberGridProxy *grid, QObject *parent)
    : QItemSelectionModel(grid, parent)
    , m_grid(grid)
{ }

int MemberRowSelectionModel::guardedRow(int row) const
{
    const QModelIndex current = currentIndex();
    if (!current.isValid() || current.row() == row || m_grid->isBlankRow(current.row()))
        return -1;
    // Several rows selected: the rule is for one row being left.
    const QModelIndexList rows = selectedRows();
    if (rows.size() > 1)
        return -1;
    const QString password = m_grid->index(current.row(), MemberListModel::PasswordColumn)
                                 .data(Qt::EditRole)
                                 .toString();
    return MemberRules::checkPasswordOnLeave(password) ? current.row() : -1;
}

void MemberRowSelectionModel::setCurrentIndex(
    const QModelIndex &index, QItemSelectionModel::SelectionFlags command)
{
    if (index.isValid()) {
        const int row = guardedRow(index.row());
        if (row >= 0) {
            m_refusing = true;
            QTimer::singleShot(0, this, [this] { m_refusing = false; });
            Q_EMIT leaveRefused(m_grid->index(row, MemberListModel::PasswordColumn));
            return;
        }
    }
    QItemSelectionModel::setCurrentIndex(index, command);
}

void MemberRowSelectionModel::select(
    const QItemSelection &selection, QItemSelectionModel::SelectionFlags command)
{
    if (m_refusing)
        return;
    QItemSelectionModel::select(selection, command);
}
