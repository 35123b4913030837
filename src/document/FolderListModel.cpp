#include "FolderListModel.h"

#include "CVelmarManagerDoc.h"
#include "DocumentUndoStack.h"

using namespace Qt::StringLiterals;

FolderListModel::FolderListModel(CVelmarManagerDoc &document, QObject *parent)
    : QAbstractTableModel(parent)
    , m_document(document)
    , m_folderIds(currentIds())
{
    connect(
        document.undoStack(), &DocumentUndoStack::indexChanged, this, &FolderListModel::refresh);
    connect(&document, &CVelmarManagerDoc::adopted, this, &FolderListModel::refresh);
}

QList<qint32> FolderListModel::currentIds() const
{
    QList<qint32> ids;
    for (const tagFolderData &folder : m_document.fileBox().folders())
        ids.append(folder.folderId);
    return ids;
}

void FolderListModel::refresh()
{
    QList<qint32> ids = currentIds();
    if (ids == m_folderIds) {
        // The same folders: only their rights counts can have changed.
        if (!m_folderIds.isEmpty())
            Q_EMIT dataChanged(index(0, 0), index(int(m_folderIds.size()) - 1, ColumnCount - 1));
        return;
    }
    beginResetModel();
    m_folderIds = std::move(ids);
    endResetModel();
}

int FolderListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_folderIds.size());
}

int FolderListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FolderListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return {};
    const qint32 id = m_folderIds.at(index.row());
    if (role == FolderIdRole)
        return id;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case PathColumn:
        return m_document.fileBox().pathByFolderId(id);
    case FolderIdColumn:
        return id;
    case RightsCountColumn:
        return m_document.fileBox().rightsCountOfFolder(id);
    default:
        return {};
    }
}

QVariant FolderListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case PathColumn:
        return u"文件夹"_s;
    case FolderIdColumn:
        return u"编号"_s;
    case RightsCountColumn:
        return u"权限数"_s;
    default:
        return {};
    }
}
