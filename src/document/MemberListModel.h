#pragma once

#include "EditRefusal.h"
#include "MemberColumns.h"
#include "UserInfo.h"

#include <optional>
#include <QAbstractTableModel>

class Directory;
class DirectoryEditor;
class MemberRows;

// One member list (regular or guest) as the member grid shows it: a row per
// member in list order, the fifteen grid columns, and the blank new-member
// row last. A view over the directory's rows: edits go through the editor
// (setData on the blank row's user ID creates a member, on a member's cell
// edits it; removeRows deletes members), and a refused edit leaves its
// refusal for the grid to show.
class MemberListModel : public QAbstractTableModel, public MemberColumns
{
    Q_OBJECT

public:
    enum Role {
        MemberIdRole = Qt::UserRole + 1, // qint32 OMemberID of the row
        UserInfoRole, // the whole record (QVariant of UserInfo)
        // The row icon: 0 male placed, 1 female placed, 2 male unplaced,
        // 3 female unplaced (first column of member rows).
        IconIndexRole,
        IsBlankRowRole, // bool
    };

    MemberListModel(const Directory &directory, bool guest, QObject *parent = nullptr);

    bool isGuest() const { return m_guest; }
    void setEditor(DirectoryEditor *editor) { m_editor = editor; }

    // Member rows, without the blank row.
    int memberCount() const;
    const UserInfo &member(int row) const;
    MemberList members() const;
    int blankRow() const { return memberCount(); }

    // The first row of the member id, -1 when absent.
    int rowOfId(qint32 id) const;
    // The first row whose login name equals loginName exactly, -1 when absent.
    int rowOfLoginName(const QString &loginName) const;
    bool containsId(qint32 id) const;
    bool containsLoginName(const QString &loginName) const;

    // Why the last setData or removeRows was refused (empty after one that
    // was taken).
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole: text columns take text; the four choice columns take the flag
    // (bool/int) or one of their two choice texts. The login name is taken
    // only in the blank row, where it creates the member; other cells of the
    // blank row take nothing.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    // Deletes the members of the rows (the blank row is never removed).
    bool removeRows(int row, int count, const QModelIndex &parent = {}) override;

    Qt::DropActions supportedDragActions() const override;
    QStringList mimeTypes() const override;
    // The member-drag block of the member rows among indexes, in row order.
    QMimeData *mimeData(const QModelIndexList &indexes) const override;

    // The title of a column ("用户ID", ...).
    static QString columnTitle(int column);
    // The choice texts of the four drop-down columns: {set, cleared}.
    static QString choiceText(int column, bool set);
    // Puts a grid value into a record's cell: text for the text columns, the
    // flag (bool/int) or one of the two choice texts for the choice columns.
    // False (record unchanged) when the value does not fit the column or the
    // column is the user ID. A stored flag other than 0 and 1 keeps its value
    // while its meaning stays.
    static bool putCell(UserInfo &member, int column, const QVariant &value);

private:
    friend class Directory;

    const MemberRows &rows() const;

    const Directory &m_directory;
    bool m_guest;
    DirectoryEditor *m_editor = nullptr;
    std::optional<EditRefusal> m_lastRefusal;
};
