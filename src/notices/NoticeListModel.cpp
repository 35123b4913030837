#include "NoticeListModel.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

NoticeListModel::NoticeListModel(QObject *parent)
    : QAbstractTableModel(parent)
{ }

int NoticeListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_records.size());
}

int NoticeListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant NoticeListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.parent().isValid() || index.row() >= m_records.size())
        return {};
    const NoticeRecord &record = m_records.at(index.row());
    if (role == NoticeIdRole)
        return record.id;
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    switch (index.column()) {
    case SubjectColumn:
        return record.title;
    case PublisherColumn:
        return record.writerName + u'(' + record.writerMemberId + u')';
    case PublishedColumn:
        return record.written;
    case EndTimeColumn:
        return record.endDate;
    default:
        return {};
    }
}

QVariant NoticeListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case SubjectColumn:
        return u"主题管理"_s;
    case PublisherColumn:
        return u"发布者"_s;
    case PublishedColumn:
        return u"发布时间"_s;
    case EndTimeColumn:
        return u"结束时间"_s;
    default:
        return {};
    }
}

int NoticeListModel::initialColumnWidth(int column)
{
    switch (column) {
    case SubjectColumn:
        return 300;
    case PublisherColumn:
        return 100;
    case PublishedColumn:
        return 170;
    case EndTimeColumn:
        return 75;
    default:
        return 0;
    }
}

void NoticeListModel::setRecords(QList<NoticeRecord> records)
{
    beginResetModel();
    m_records = std::move(records);
    m_pending.clear();
    endResetModel();
}

QList<int> NoticeListModel::deleteRows(QList<int> rows)
{
    rows.removeIf([this](int row) { return row < 0 || row >= m_records.size(); });
    // Bottom-most first, so that the rows still to go keep their numbers.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (int row : std::as_const(rows)) {
        beginRemoveRows({}, row, row);
        m_pending.append(m_records.takeAt(row));
        endRemoveRows();
    }
    return rows;
}

void NoticeListModel::undeleteRows(const QList<int> &rows)
{
    // The last record taken is the top-most row: back in reverse order, each
    // row's number is right again when its turn comes.
    for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
        if (m_pending.isEmpty() || *row < 0 || *row > m_records.size())
            return;
        beginInsertRows({}, *row, *row);
        m_records.insert(*row, m_pending.takeLast());
        endInsertRows();
    }
}

QList<NoticeBoard::Failure> NoticeListModel::commit(
    DbConnection &connection, RegistryHives &hives, const QString &programDir, DbSession *session)
{
    // The list is taken first so that a failure that escapes cannot run the
    // same deletions twice.
    const QList<NoticeRecord> pending = std::exchange(m_pending, {});
    return NoticeBoard::deleteNotices(connection, pending, hives, programDir, session);
}
