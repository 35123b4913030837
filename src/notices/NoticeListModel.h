#pragma once

#include "NoticeBoard.h"
#include "NoticeRecord.h"

#include <QAbstractTableModel>
#include <QList>

class DbConnection;
class DbSession;
class RegistryHives;

// The working copy of the notice board: the listed notices in result order
// (one row each, four columns) and the notices removed from the list but not
// yet deleted from the database. Only NoticeEditor removes rows.
class NoticeListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { SubjectColumn = 0, PublisherColumn, PublishedColumn, EndTimeColumn, ColumnCount };
    // The notice id of a row (Qt::UserRole).
    static constexpr int NoticeIdRole = Qt::UserRole;

    explicit NoticeListModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The initial width of a column in pixels: 300, 100, 170, 75.
    static int initialColumnWidth(int column);

    // Adopts freshly loaded records (a reload): the list is replaced and the
    // pending deletions are dropped.
    void setRecords(QList<NoticeRecord> records);
    const QList<NoticeRecord> &records() const { return m_records; }
    const NoticeRecord &record(int row) const { return m_records.at(row); }

    const QList<NoticeRecord> &pendingDeletions() const { return m_pending; }
    bool hasPendingDeletions() const { return !m_pending.isEmpty(); }
    // After a save has deleted them (or tried to: a failed DELETE is not
    // retried by the next save, as the notice is gone from the list).
    void clearPendingDeletions() { m_pending.clear(); }

    // Deletes the pending notices from the database with their uploaded files
    // (NoticeBoard::deleteNotices) and empties the pending list. Returns the
    // DELETEs that failed.
    QList<NoticeBoard::Failure> commit(DbConnection &connection, RegistryHives &hives,
        const QString &programDir, DbSession *session = nullptr);

private:
    // Deleting notices is an edit of the document: NoticeEditor makes it one
    // step of the undo stack through these.
    friend class NoticeEditor;

    // Removes the given rows (any order, duplicates and bad rows ignored),
    // bottom-most first, each record going to the end of the pending-deletion
    // list. Returns the rows removed, in the order they went.
    QList<int> deleteRows(QList<int> rows);
    // Takes back a deleteRows: rows as it returned them; the records come off
    // the end of the pending-deletion list and go back where they stood.
    void undeleteRows(const QList<int> &rows);

    QList<NoticeRecord> m_records;
    QList<NoticeRecord> m_pending;
};
