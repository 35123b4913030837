#pragma once

#include "EditRefusal.h"

#include <optional>
#include <QAbstractTableModel>
#include <vector>

class CVelmarManagerDoc;
class DirectoryNode;

// The position view's grid: every membership of the organisation tree in
// tree order, with the member's user ID, the group holding it and its
// position. A view over the document, rebuilt whenever the tree or the
// position list changes; the position column edits through the editor.
class MembershipPositionModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { LoginNameColumn, GroupColumn, PositionColumn, ColumnCount };
    enum Role {
        RankIdRole = Qt::UserRole + 1, // the membership's position id, -1 = none
        // The entry of the position list the drop-down shows: no position
        // shows the second entry and an id not in the list the last, as the
        // grid has always shown them.
        PositionIndexRole,
    };

    explicit MembershipPositionModel(CVelmarManagerDoc &document, QObject *parent = nullptr);

    const DirectoryNode *membership(int row) const { return m_rows.at(size_t(row)); }
    // The list entry shown for a position id (see PositionIndexRole).
    int shownIndex(qint32 rankId) const;

    // The grid's pop-up command over the selected rows: 200 means no position,
    // 201 + k the k-th position of the list.
    EditResult setPosition(const QList<int> &rows, int command);
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // The position column takes a position name (exact match, anything else
    // is no position) or a list index.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

private:
    void rebuild();

    CVelmarManagerDoc &m_document;
    std::vector<const DirectoryNode *> m_rows;
    std::optional<EditRefusal> m_lastRefusal;
};
