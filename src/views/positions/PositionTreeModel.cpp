#include "PositionTreeModel.h"

#include "PositionListModel.h"

#include <QFont>

using namespace Qt::StringLiterals;

PositionTreeModel::PositionTreeModel(PositionListModel *positions, QObject *parent)
    : QAbstractItemModel(parent)
    , m_positions(positions)
{
    // The list's own changes, passed on under the root.
    connect(m_positions, &QAbstractItemModel::rowsAboutToBeInserted, this,
        [this](const QModelIndex &, int first, int last) {
            beginInsertRows(rootIndex(), first, last);
        });
    connect(
        m_positions, &QAbstractItemModel::rowsInserted, this, &PositionTreeModel::endInsertRows);
    connect(m_positions, &QAbstractItemModel::rowsAboutToBeRemoved, this,
        [this](const QModelIndex &, int first, int last) {
            beginRemoveRows(rootIndex(), first, last);
        });
    connect(m_positions, &QAbstractItemModel::rowsRemoved, this, &PositionTreeModel::endRemoveRows);
    connect(m_positions, &QAbstractItemModel::rowsAboutToBeMoved, this,
        [this](const QModelIndex &, int first, int last, const QModelIndex &, int target) {
            beginMoveRows(rootIndex(), first, last, rootIndex(), target);
        });
    connect(m_positions, &QAbstractItemModel::rowsMoved, this, &PositionTreeModel::endMoveRows);
    connect(m_positions, &QAbstractItemModel::modelAboutToBeReset, this,
        &PositionTreeModel::beginResetModel);
    connect(m_positions, &QAbstractItemModel::modelReset, this, &PositionTreeModel::endResetModel);
    connect(m_positions, &QAbstractItemModel::dataChanged, this,
        [this](
            const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles) {
            QList<int> shown = roles;
            // The default position is the one shown bold.
            if (roles.contains(PositionListModel::IsDefaultRole))
                shown.append(Qt::FontRole);
            Q_EMIT dataChanged(
                positionIndex(topLeft.row()), positionIndex(bottomRight.row()), shown);
        });
}

QModelIndex PositionTreeModel::positionIndex(int row) const
{
    if (row < 0 || row >= m_positions->rowCount())
        return {};
    return createIndex(row, 0, quintptr(PositionNode));
}

int PositionTreeModel::positionRow(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this || index.internalId() != PositionNode)
        return -1;
    return index.row();
}

QModelIndex PositionTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0)
        return {};
    if (!parent.isValid())
        return row == 0 ? rootIndex() : QModelIndex();
    if (parent.internalId() == RootNode)
        return positionIndex(row);
    return {};
}

QModelIndex PositionTreeModel::parent(const QModelIndex &child) const
{
    if (child.isValid() && child.internalId() == PositionNode)
        return rootIndex();
    return {};
}

int PositionTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return 1;
    if (parent.column() == 0 && parent.internalId() == RootNode)
        return m_positions->rowCount();
    return 0;
}

int PositionTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant PositionTreeModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const bool root = index.internalId() == RootNode;
    if (role == Qt::FontRole) {
        const bool bold = root
            || m_positions->index(index.row()).data(PositionListModel::IsDefaultRole).toBool();
        if (!bold)
            return {};
        QFont font;
        font.setBold(true);
        return font;
    }
    if (root) {
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
            return u"等级"_s;
        return {};
    }
    if (role == Qt::AccessibleTextRole)
        role = Qt::DisplayRole;
    return m_positions->index(index.row()).data(role);
}

Qt::ItemFlags PositionTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    if (index.internalId() == RootNode)
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemNeverHasChildren;
}

bool PositionTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const int row = positionRow(index);
    if (row < 0 || role != Qt::EditRole)
        return false;
    return m_positions->setData(m_positions->index(row), value, role);
}
