#pragma once

#include "CAccessToken.h"
#include "EditRefusal.h"

#include <array>
#include <optional>
#include <QAbstractTableModel>
#include <QList>

class CVelmarManagerDoc;
class DirectoryNode;

// The permission grid as a view over the document: row 0 is the "Check all"
// row, then one row per member shown (the members of the group selected in
// the group tree). Twelve columns: user ID, name, the eight feature check
// boxes, the VoIP account id and password. Check boxes and the two account
// cells edit through PermissionEditor; a refused edit leaves its refusal.
// Follows the document's undo stack, so undo and redo repaint the rows.
class PermissionTableModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        LoginNameColumn = 0,
        DisplayNameColumn = 1,
        FirstFeatureColumn = 2, // MessageOn; the features follow in their order
        LastFeatureColumn = 9, // VoipOn
        VoipIdColumn = 10,
        VoipPasswordColumn = 11,
        ColumnCount = 12
    };
    static constexpr int CheckAllRow = 0;
    enum Role {
        MemberIdRole = Qt::UserRole + 1, // qint32 OMemberID of a member row; -1 on row 0
    };

    explicit PermissionTableModel(CVelmarManagerDoc &document, QObject *parent = nullptr);

    // The group tree's selection changed. The root: every member of the
    // directory (member list, then guest list, in row order). A group: the
    // members placed directly under it, in tree order, that the directory
    // holds. A membership (or a node of another tree): nothing changes.
    // Members shown get their default records (not an edit); the "Check all"
    // row keeps its state.
    void showGroup(bool guest, const DirectoryNode *node);
    const QList<qint32> &shownMembers() const { return m_members; }
    // The row of a member shown, -1 when it is not.
    int rowOfMember(qint32 memberId) const;
    bool checkAllState(CAccessToken::Feature feature) const { return m_checkAll[feature]; }

    // Why the last setData was refused (empty after one that was taken).
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // CheckStateRole on a feature cell: row 0 sets the column for every member
    // shown (one step), a member row sets the member's flag. EditRole on the
    // account cells of a member row edits the account.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // "用户ID", "姓名", the feature titles, "用 户 ID ", "用户密码".
    static QString columnTitle(int column);
    static bool isFeatureColumn(int column)
    {
        return column >= FirstFeatureColumn && column <= LastFeatureColumn;
    }
    static CAccessToken::Feature featureOfColumn(int column)
    {
        return CAccessToken::Feature(column - FirstFeatureColumn);
    }

private:
    void repaintMembers();
    void documentAdopted();

    CVelmarManagerDoc &m_document;
    QList<qint32> m_members;
    std::array<bool, CAccessToken::FeatureCount> m_checkAll {};
    std::optional<EditRefusal> m_lastRefusal;
};
