#pragma once

#include <QAbstractItemModel>

class PositionListModel;

// The position list as the position tree shows it: one root "等级" whose
// children are the positions in list order. A view over the document's
// PositionListModel; the root and the default position read bold.
class PositionTreeModel final : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit PositionTreeModel(PositionListModel *positions, QObject *parent = nullptr);

    PositionListModel *positions() const { return m_positions; }
    QModelIndex rootIndex() const { return createIndex(0, 0, quintptr(RootNode)); }
    QModelIndex positionIndex(int row) const;
    // The list row of a position index; -1 for the root or an invalid index.
    int positionRow(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole on a position renames it through the list (the editor's rules).
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

private:
    enum Node : quintptr { RootNode = 0, PositionNode = 1 };

    PositionListModel *m_positions;
};
