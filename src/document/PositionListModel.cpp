#include "PositionListModel.h"

#include "DirectoryEditor.h"

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

void PositionListModel::insertPosition(int row, Position position)
{
    beginInsertRows({}, row, row);
    m_list.positions.insert(row, std::move(position));
    endInsertRows();
    Q_EMIT positionsChanged();
}

Position PositionListModel::takePosition(int row)
{
    beginRemoveRows({}, row, row);
    Position taken = m_list.positions.takeAt(row);
    endRemoveRows();
    Q_EMIT positionsChanged();
    return taken;
}

void PositionListModel::setName(int row, const QString &name)
{
    m_list.positions[row].name = name;
    const QModelIndex changed = index(row);
    Q_EMIT dataChanged(changed, changed, { Qt::DisplayRole, Qt::EditRole });
    Q_EMIT positionsChanged();
}

void PositionListModel::movePosition(int row, int target)
{
    if (!beginMoveRows({}, row, row, {}, target > row ? target + 1 : target))
        return;
    m_list.positions.move(row, target);
    endMoveRows();
    Q_EMIT positionsChanged();
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
    m_lastRefusal.reset();
    if (role != Qt::EditRole || !m_editor
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    const EditResult result = m_editor->renamePosition(index.row(), value.toString());
    m_lastRefusal = result.refusal;
    return result.ok();
}
