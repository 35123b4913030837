#include "FolderRightsModel.h"

#include "AccessOverview.h"
#include "AuthorityCode.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "FileBoxEditor.h"

using namespace Qt::StringLiterals;

FolderRightsModel::FolderRightsModel(CVelmarManagerDoc &document, QObject *parent)
    : QAbstractTableModel(parent)
    , m_document(document)
{
    connect(
        document.undoStack(), &DocumentUndoStack::indexChanged, this, &FolderRightsModel::refresh);
    connect(&document, &CVelmarManagerDoc::adopted, this, [this] { setFolder(-1); });
}

void FolderRightsModel::setFolder(qint32 folderId)
{
    beginResetModel();
    m_folderId = folderId;
    m_rows = currentRows();
    endResetModel();
}

QList<FolderRightsModel::Row> FolderRightsModel::currentRows() const
{
    QList<Row> rows;
    if (m_folderId < 0)
        return rows;
    const FileBoxRights &rights = m_document.fileBox();
    for (const tagGroupAuthority &right : rights.groupRights()) {
        if (right.folderId == m_folderId)
            rows.append({ true, right.groupId });
    }
    for (const tagUserAuthority &right : rights.memberRights()) {
        if (right.folderId == m_folderId)
            rows.append({ false, right.memberId });
    }
    return rows;
}

qint32 FolderRightsModel::authorityOf(const Row &row) const
{
    const FileBoxRights &rights = m_document.fileBox();
    if (row.group) {
        for (const tagGroupAuthority &right : rights.groupRights()) {
            if (right.groupId == row.ownerId && right.folderId == m_folderId)
                return right.authority;
        }
    } else {
        for (const tagUserAuthority &right : rights.memberRights()) {
            if (right.memberId == row.ownerId && right.folderId == m_folderId)
                return right.authority;
        }
    }
    return AuthorityCode::None;
}

void FolderRightsModel::refresh()
{
    QList<Row> rows = currentRows();
    if (rows == m_rows) {
        if (!m_rows.isEmpty())
            Q_EMIT dataChanged(index(0, 0), index(int(m_rows.size()) - 1, ColumnCount - 1));
        return;
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int FolderRightsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int FolderRightsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FolderRightsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = m_rows.at(index.row());
    const Directory &directory = *m_document.directory();
    bool guest = false;
    const QString path
        = row.group ? AccessOverview::groupPath(directory, row.ownerId, &guest) : QString();
    const UserInfo *member = row.group ? nullptr : directory.findMember(row.ownerId);
    const bool missing = row.group ? path.isEmpty() : !member;
    switch (role) {
    case OwnerIdRole:
        return row.ownerId;
    case IsGroupRole:
        return row.group;
    case AuthorityRole:
        return authorityOf(row);
    case MissingRole:
        return missing;
    case Qt::ToolTipRole:
        if (!missing)
            return {};
        return row.group ? u"类别 %1 已不存在"_s.arg(row.ownerId)
                         : u"用户 %1 已不存在"_s.arg(row.ownerId);
    case Qt::DisplayRole:
    case Qt::EditRole:
        break;
    default:
        return {};
    }
    switch (index.column()) {
    case NameColumn:
        if (row.group)
            return missing ? u"(已删除的类别 %1)"_s.arg(row.ownerId) : path;
        return missing ? u"(已删除的用户 %1)"_s.arg(row.ownerId) : member->loginName;
    case KindColumn:
        return row.group ? (guest && !missing ? u"论坛类别"_s : u"类别"_s) : u"用户"_s;
    case AuthorityColumn:
        return AuthorityCode::displayText(authorityOf(row));
    case MemberNameColumn:
        return member ? member->displayName : QString();
    default:
        return {};
    }
}

QVariant FolderRightsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return u"名称"_s;
    case KindColumn:
        return u"类型"_s;
    case AuthorityColumn:
        return u"权限"_s;
    case MemberNameColumn:
        return u"姓名"_s;
    default:
        return {};
    }
}

Qt::ItemFlags FolderRightsModel::flags(const QModelIndex &index) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == AuthorityColumn)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool FolderRightsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    m_lastRefusal.reset();
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid)
        || index.column() != AuthorityColumn || (role != Qt::EditRole && role != AuthorityRole))
        return false;
    qint32 authority = -1;
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        for (const qint32 code :
            { AuthorityCode::None, AuthorityCode::ReadOnly, AuthorityCode::ReadWrite }) {
            if (AuthorityCode::displayText(code) == text)
                authority = code;
        }
    } else {
        bool ok = false;
        authority = value.toInt(&ok);
        if (!ok)
            authority = -1;
    }
    const Row row = m_rows.at(index.row());
    FileBoxEditor editor(m_document);
    const EditResult result = row.group ? editor.setGroupRight(row.ownerId, m_folderId, authority)
                                        : editor.setMemberRight(row.ownerId, m_folderId, authority);
    m_lastRefusal = result.refusal;
    return result.ok();
}
