#include "AccessOverviewModel.h"

#include "AuthorityCode.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"

using namespace Qt::StringLiterals;

AccessOverviewModel::AccessOverviewModel(const CVelmarManagerDoc &document, QObject *parent)
    : QAbstractTableModel(parent)
    , m_document(document)
{
    connect(document.undoStack(), &DocumentUndoStack::indexChanged, this,
        &AccessOverviewModel::recompute);
    connect(&document, &CVelmarManagerDoc::adopted, this, &AccessOverviewModel::clear);
}

void AccessOverviewModel::showMember(qint32 memberId)
{
    beginResetModel();
    m_mode = Mode::Member;
    m_subject = memberId;
    m_origins.clear();
    m_entries = AccessOverview(*m_document.directory(), m_document.fileBox()).forMember(memberId);
    endResetModel();
}

void AccessOverviewModel::showFolder(qint32 folderId)
{
    beginResetModel();
    m_mode = Mode::Folder;
    m_subject = folderId;
    m_origins.clear();
    m_entries = AccessOverview(*m_document.directory(), m_document.fileBox()).forFolder(folderId);
    endResetModel();
}

void AccessOverviewModel::clear()
{
    beginResetModel();
    m_mode = Mode::None;
    m_subject = -1;
    m_origins.clear();
    m_entries.clear();
    endResetModel();
}

void AccessOverviewModel::recompute()
{
    if (m_mode == Mode::Member)
        showMember(m_subject);
    else if (m_mode == Mode::Folder)
        showFolder(m_subject);
}

int AccessOverviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_entries.size());
}

int AccessOverviewModel::columnCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return m_mode == Mode::Folder ? 4 : 3;
}

QStringList AccessOverviewModel::headerCells() const
{
    if (m_mode == Mode::Folder)
        return { u"用户ID"_s, u"姓名"_s, u"权限"_s, u"来源"_s };
    return { u"文件夹"_s, u"权限"_s, u"来源"_s };
}

QString AccessOverviewModel::origin(const AccessEntry &entry) const
{
    if (entry.ownRight())
        return AccessOverview::ownRightText();
    auto found = m_origins.constFind(entry.groupId);
    if (found == m_origins.cend()) {
        found = m_origins.insert(entry.groupId,
            AccessOverview(*m_document.directory(), m_document.fileBox()).originText(entry));
    }
    return *found;
}

QString AccessOverviewModel::cell(const AccessEntry &entry, int column) const
{
    if (m_mode == Mode::Folder) {
        const UserInfo *member = m_document.directory()->findMember(entry.memberId);
        switch (column) {
        case 0:
            return member ? member->loginName : QString::number(entry.memberId);
        case 1:
            return member ? member->displayName : QString();
        case 2:
            return AuthorityCode::displayText(entry.authority);
        case 3:
            return origin(entry);
        default:
            return {};
        }
    }
    switch (column) {
    case 0: {
        const QString path = m_document.fileBox().pathByFolderId(entry.folderId);
        return path.isEmpty() ? u"(%1)"_s.arg(entry.folderId) : path;
    }
    case 1:
        return AuthorityCode::displayText(entry.authority);
    case 2:
        return origin(entry);
    default:
        return {};
    }
}

QStringList AccessOverviewModel::rowCells(int row) const
{
    QStringList cells;
    const AccessEntry &entry = m_entries.at(row);
    for (int column = 0; column < columnCount(); ++column)
        cells.append(cell(entry, column));
    return cells;
}

QVariant AccessOverviewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return {};
    const AccessEntry &entry = m_entries.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return cell(entry, index.column());
    case FolderIdRole:
        return entry.folderId;
    case MemberIdRole:
        return entry.memberId;
    case GroupIdRole:
        return entry.groupId;
    case AuthorityRole:
        return entry.authority;
    default:
        return {};
    }
}

QVariant AccessOverviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    return headerCells().value(section);
}

namespace {

QString csvField(const QString &text)
{
    if (!text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n')
        && !text.contains(u'\r'))
        return text;
    QString quoted = text;
    quoted.replace(u"\""_s, u"\"\""_s);
    return u'"' + quoted + u'"';
}

QString csvLine(const QStringList &cells)
{
    QStringList fields;
    fields.reserve(cells.size());
    for (const QString &cell : cells)
        fields.append(csvField(cell));
    return fields.join(u',') + u"\r\n"_s;
}

} // namespace

QString AccessOverviewModel::toCsv() const
{
    QString text = csvLine(headerCells());
    for (int row = 0; row < rowCount(); ++row)
        text += csvLine(rowCells(row));
    return text;
}
