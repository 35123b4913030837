#include "PositionListModel.h"

PositionListModel::PositionListModel(QObject *parent)
    : QAbstractListModel(parent)
{ }

void PositionListModel::setList(PositionList list)
{
    beginResetModel();
    m_list = std::move(list);
    endResetModel();
    Q_EMIT positionsChanged();
}

int PositionListModel::addPosition()
{
    const int row = m_list.count();
    beginInsertRows({}, row, row);
    m_list.positions.append({ m_list.newPositionId(), m_list.newPositionName() });
    endInsertRows();
    Q_EMIT positionsChanged();
    return row;
}

PositionListModel::RemoveResult PositionListModel::removePosition(int row)
{
    if (row < 0 || row >= m_list.count())
        return RemoveResult::NoSuchRow;
    // Id 1 is the permanent default whatever the configured default is.
    if (m_list.positions.at(row).id == 1)
        return RemoveResult::PermanentDefault;
    if (m_list.count() == 1)
        return RemoveResult::LastPosition;
    beginRemoveRows({}, row, row);
    m_list.positions.removeAt(row);
    endRemoveRows();
    Q_EMIT positionsChanged();
    return RemoveResult::Removed;
}

PositionListModel::RenameResult PositionListModel::renamePosition(int row, const QString &name)
{
    if (row < 0 || row >= m_list.count())
        return RenameResult::NoSuchRow;
    if (name.isEmpty())
        return RenameResult::Empty;
    // Compared with every name, the row's own included: confirming an
    // unchanged name is refused as well.
    if (m_list.indexOfName(name) >= 0)
        return RenameResult::NameInUse;
    m_list.positions[row].name = name;
    const QModelIndex changed = index(row);
    Q_EMIT dataChanged(changed, changed, { Qt::DisplayRole, Qt::EditRole });
    Q_EMIT positionsChanged();
    return RenameResult::Renamed;
}

bool PositionListModel::movePosition(int row, int delta)
{
    const int target = row + delta;
    if (row < 0 || row >= m_list.count() || target < 0 || target >= m_list.count() || delta == 0)
        return false;
    if (!beginMoveRows({}, row, row, {}, target > row ? target + 1 : target))
        return false;
    m_list.positions.move(row, target);
    endMoveRows();
    Q_EMIT positionsChanged();
    return true;
}

void PositionListModel::setDefaultPositionId(qint32 id)
{
    if (m_list.defaultId == id)
        return;
    m_list.defaultId = id;
    if (m_list.count() > 0)
        Q_EMIT dataChanged(index(0), index(m_list.count() - 1), { IsDefaultRole });
    Q_EMIT positionsChanged();
}

int PositionListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_list.count();
}

QVariant PositionListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Position &position = m_list.positions.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return position.name;
    case PositionIdRole:
        return position.id;
    case IsDefaultRole:
        return position.id == m_list.defaultId;
    default:
        return {};
    }
}

Qt::ItemFlags PositionListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemNeverHasChildren;
}

bool PositionListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !index.isValid())
        return false;
    return renamePosition(index.row(), value.toString()) == RenameResult::Renamed;
}
