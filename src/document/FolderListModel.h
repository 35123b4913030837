#pragma once

#include <QAbstractTableModel>
#include <QList>

class CVelmarManagerDoc;

// The file-box folders of the document, one row each in list order: path,
// folder id and how many rights (of groups and members) it carries. A view:
// folders change through FileBoxEditor, and the rows follow the document's
// undo stack.
class FolderListModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { PathColumn = 0, FolderIdColumn, RightsCountColumn, ColumnCount };
    enum Role {
        FolderIdRole = Qt::UserRole + 1, // qint32 OFolderID of the row
    };

    explicit FolderListModel(CVelmarManagerDoc &document, QObject *parent = nullptr);

    qint32 folderIdAt(int row) const { return m_folderIds.at(row); }
    // The row of a folder, -1 when it is not listed.
    int rowOfFolder(qint32 folderId) const { return int(m_folderIds.indexOf(folderId)); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<qint32> currentIds() const;
    void refresh();

    CVelmarManagerDoc &m_document;
    QList<qint32> m_folderIds;
};
