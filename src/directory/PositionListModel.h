#pragma once

#include "PositionList.h"

#include <QAbstractListModel>

// The position list as a list model (one row per position, the name as text)
// with the list's editing rules. Owns its PositionList.
class PositionListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        PositionIdRole = Qt::UserRole + 1, // qint32 ORankID
        IsDefaultRole, // bool: the default position (shown bold)
    };

    enum class RemoveResult { Removed, PermanentDefault, LastPosition, NoSuchRow };
    enum class RenameResult { Renamed, Empty, NameInUse, NoSuchRow };

    explicit PositionListModel(QObject *parent = nullptr);

    void setList(PositionList list);
    const PositionList &list() const { return m_list; }

    // Appends a position with the next free name and id; returns its row.
    int addPosition();
    // Refuses id 1 (the permanent default) and the last remaining position.
    RemoveResult removePosition(int row);
    // Refuses an empty name and any name already used, the row's own included.
    RenameResult renamePosition(int row, const QString &name);
    // Moves a position one place up (-1) or down (+1).
    bool movePosition(int row, int delta);
    // Makes the id the default (-1: none); does not write the profile.
    void setDefaultPositionId(qint32 id);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole renames with the rules of renamePosition.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

Q_SIGNALS:
    // After any change of the list (the position grid rebuilds itself).
    void positionsChanged();

private:
    PositionList m_list;
};
