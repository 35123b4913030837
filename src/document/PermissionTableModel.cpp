#include "PermissionTableModel.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "PermissionEditor.h"

using namespace Qt::StringLiterals;

namespace {

bool checkedValue(const QVariant &value)
{
    // Views hand over Qt::CheckState; scripts may hand over a bool.
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    return value.toInt() == Qt::Checked;
}

} // namespace

PermissionTableModel::PermissionTableModel(CVelmarManagerDoc &document, QObject *parent)
    : QAbstractTableModel(parent)
    , m_document(document)
{
    // Every change of the permissions is a step of the stack: pushed, undone
    // or redone, the rows shown may read differently.
    connect(document.undoStack(), &DocumentUndoStack::indexChanged, this,
        &PermissionTableModel::repaintMembers);
    connect(&document, &CVelmarManagerDoc::adopted, this, &PermissionTableModel::documentAdopted);
}

QString PermissionTableModel::columnTitle(int column)
{
    if (isFeatureColumn(column))
        return CAccessToken::title(featureOfColumn(column));
    switch (column) {
    case LoginNameColumn:
        return u"用户ID"_s;
    case DisplayNameColumn:
        return u"姓名"_s;
    case VoipIdColumn:
        return u"用 户 ID "_s;
    case VoipPasswordColumn:
        return u"用户密码"_s;
    default:
        return {};
    }
}

void PermissionTableModel::showGroup(bool guest, const DirectoryNode *node)
{
    if (!node || node->isMembership())
        return;
    const Directory &directory = *m_document.directory();
    const DirectoryNode *top = node;
    while (top->parent())
        top = top->parent();
    if (top != directory.treeData(guest).root())
        return;

    QList<qint32> members;
    if (node->isRoot()) {
        for (const bool guestList : { false, true }) {
            const MemberRows &rows = directory.memberRows(guestList);
            for (int row = 0; row < rows.count(); ++row)
                members.append(rows.at(row).id);
        }
    } else {
        for (int row = 0; row < node->childCount(); ++row) {
            const DirectoryNode *child = node->child(row);
            if (child->isMembership() && directory.findMember(child->id()))
                members.append(child->id());
        }
    }
    PermissionEditor(m_document).ensureRecords(members);
    beginResetModel();
    m_members = std::move(members);
    endResetModel();
}

int PermissionTableModel::rowOfMember(qint32 memberId) const
{
    const qsizetype at = m_members.indexOf(memberId);
    return at < 0 ? -1 : int(at) + 1;
}

int PermissionTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_members.size()) + 1;
}

int PermissionTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PermissionTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return {};
    const int column = index.column();
    if (index.row() == CheckAllRow) {
        if (role == MemberIdRole)
            return -1;
        if (!isFeatureColumn(column))
            return {};
        if (role == Qt::DisplayRole)
            return u"Check all"_s;
        if (role == Qt::CheckStateRole)
            return m_checkAll[featureOfColumn(column)] ? Qt::Checked : Qt::Unchecked;
        return {};
    }

    const qint32 id = m_members.at(index.row() - 1);
    if (role == MemberIdRole)
        return id;
    if (isFeatureColumn(column)) {
        if (role == Qt::DisplayRole)
            return u"使用"_s;
        if (role != Qt::CheckStateRole)
            return {};
        // A record undone away since the member was shown reads as the
        // defaults it will get when shown again.
        const CAccessToken *token = m_document.permissions().token(id);
        const CAccessToken flags = token ? *token : CAccessToken::defaults();
        return flags.flag(featureOfColumn(column)) ? Qt::Checked : Qt::Unchecked;
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    switch (column) {
    case LoginNameColumn:
    case DisplayNameColumn: {
        // A member undone away shows empty until the rows are filled again.
        const UserInfo *member = m_document.directory()->findMember(id);
        if (!member)
            return QString();
        return column == LoginNameColumn ? member->loginName : member->displayName;
    }
    case VoipIdColumn:
    case VoipPasswordColumn: {
        const VoipAccount *account = m_document.permissions().voipAccount(id);
        if (!account)
            return QString();
        return column == VoipIdColumn ? account->id : account->password;
    }
    default:
        return {};
    }
}

QVariant PermissionTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
        || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    return columnTitle(section);
}

Qt::ItemFlags PermissionTableModel::flags(const QModelIndex &index) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return Qt::NoItemFlags;
    const int column = index.column();
    if (index.row() == CheckAllRow)
        return isFeatureColumn(column) ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable
                                       : Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (isFeatureColumn(column))
        flags |= Qt::ItemIsUserCheckable;
    else if (column == VoipIdColumn || column == VoipPasswordColumn)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool PermissionTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    m_lastRefusal.reset();
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return false;
    const int column = index.column();
    PermissionEditor editor(m_document);
    EditResult result;
    if (role == Qt::CheckStateRole && isFeatureColumn(column)) {
        const bool on = checkedValue(value);
        if (index.row() == CheckAllRow) {
            // The box keeps the state it was given, whatever the members had.
            m_checkAll[featureOfColumn(column)] = on;
            Q_EMIT dataChanged(index, index, { Qt::CheckStateRole });
            result = editor.setFlagForMembers(m_members, featureOfColumn(column), on);
        } else {
            result = editor.setFlag(m_members.at(index.row() - 1), featureOfColumn(column), on);
        }
    } else if (role == Qt::EditRole && index.row() != CheckAllRow
        && (column == VoipIdColumn || column == VoipPasswordColumn)) {
        result = editor.setVoipAccount(m_members.at(index.row() - 1),
            column == VoipIdColumn ? AccessTokenTable::VoipField::Id
                                   : AccessTokenTable::VoipField::Password,
            value.toString());
    } else {
        return false;
    }
    m_lastRefusal = result.refusal;
    return result.ok();
}

void PermissionTableModel::repaintMembers()
{
    if (m_members.isEmpty())
        return;
    Q_EMIT dataChanged(index(1, 0), index(int(m_members.size()), ColumnCount - 1));
}

void PermissionTableModel::documentAdopted()
{
    // A reload: the group tree the rows came from is gone; the view fills
    // the grid again from its new selection.
    beginResetModel();
    m_members.clear();
    m_checkAll = {};
    endResetModel();
}
