#include "ImportTableModel.h"

ImportTableModel::ImportTableModel(QObject *parent)
    : QAbstractTableModel(parent)
{ }

void ImportTableModel::setTable(ImportTable table)
{
    beginResetModel();
    m_table = std::move(table);
    endResetModel();
}

int ImportTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_table.rows.size());
}

int ImportTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_table.columns.size());
}

QVariant ImportTableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
        return {};
    const QStringList &row = m_table.rows.at(index.row());
    return index.column() < row.size() ? row.at(index.column()) : QString();
}

QVariant ImportTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return section >= 0 && section < m_table.columns.size() ? m_table.columns.at(section)
                                                            : QVariant();
}
