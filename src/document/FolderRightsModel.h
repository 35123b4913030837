#pragma once

#include "EditRefusal.h"

#include <optional>
#include <QAbstractTableModel>
#include <QList>

class CVelmarManagerDoc;

// The rights on one file-box folder: the groups' rights in list order, then
// the members'. Columns: the group's path in its tree or the member's user
// ID, whether it is a group or a member, the authority as shown ("只读",
// "读/写") and the member's name. A right whose group or member the
// directory no longer holds stays listed, marked (MissingRole, its text
// says so), so that it can be seen and removed. The authority cell edits
// through FileBoxEditor (none removes the right); the rows follow the
// document's undo stack.
class FolderRightsModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { NameColumn = 0, KindColumn, AuthorityColumn, MemberNameColumn, ColumnCount };
    enum Role {
        OwnerIdRole = Qt::UserRole + 1, // qint32 group id or member id
        IsGroupRole, // bool
        AuthorityRole, // qint32 AuthorityCode value
        MissingRole, // bool: the directory holds no such group or member
    };

    explicit FolderRightsModel(CVelmarManagerDoc &document, QObject *parent = nullptr);

    // -1: no folder, no rows.
    void setFolder(qint32 folderId);
    qint32 folderId() const { return m_folderId; }

    // Why the last setData was refused (empty after one that was taken).
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole (or AuthorityRole) on the authority cell: an AuthorityCode
    // value, or one of the shown texts ("只读", "读/写"; empty for none).
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

private:
    struct Row
    {
        bool group = false;
        qint32 ownerId = -1;

        bool operator==(const Row &) const = default;
    };

    QList<Row> currentRows() const;
    qint32 authorityOf(const Row &row) const;
    void refresh();

    CVelmarManagerDoc &m_document;
    qint32 m_folderId = -1;
    QList<Row> m_rows;
    std::optional<EditRefusal> m_lastRefusal;
};
