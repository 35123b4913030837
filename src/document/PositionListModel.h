#pragma once

#include "EditRefusal.h"
#include "PositionList.h"

#include <optional>
#include <QAbstractListModel>

class DirectoryEditor;

// The document's position list, and its view as a list model (one row per
// position, the name as text). Only the editor changes it.
class PositionListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        PositionIdRole = Qt::UserRole + 1, // qint32 ORankID
        IsDefaultRole, // bool: the default position (shown bold)
    };

    explicit PositionListModel(QObject *parent = nullptr);

    // Adopts a loaded list (model reset); no edit.
    void setList(PositionList list);
    const PositionList &list() const { return m_list; }
    void setEditor(DirectoryEditor *editor) { m_editor = editor; }
    // Why the last setData was refused.
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole renames through the editor (its rules and refusals).
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

Q_SIGNALS:
    // After any change of the list (the position grid rebuilds itself).
    void positionsChanged();

private:
    // The editor is the only writer; each of these keeps the views right.
    friend class DirectoryEditor;
    void insertPosition(int row, Position position);
    Position takePosition(int row);
    void setName(int row, const QString &name);
    void movePosition(int row, int target);
    void setDefaultPositionId(qint32 id);

    PositionList m_list;
    DirectoryEditor *m_editor = nullptr;
    std::optional<EditRefusal> m_lastRefusal;
};
