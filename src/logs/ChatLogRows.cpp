#include "ChatLogRows.h"

#include "ChatLogReader.h"

#include <algorithm>

using namespace Qt::StringLiterals;

QStringList ChatLogRows::captions()
{
    return { u"Time"_s, u"none"_s, u"Users"_s, u"Message"_s, u"Filename"_s };
}

QList<int> ChatLogRows::widths()
{
    return { 125, 0, 100, 805, 0 };
}

std::shared_ptr<ChatLogRows> ChatLogRows::search(
    const LogSearchRequest &request, const LogSearchControl &control)
{
    auto rows = std::make_shared<ChatLogRows>();
    QList<LogFileEntry> files
        = LogSearch::keptFiles(LogSearch::Kind::Chat, request.logRoot, request.filter);
    const qint64 total = files.size();
    qint64 done = 0;
    control.report(0, total);
    for (LogFileEntry &file : files) {
        if (control.isCancelled())
            return nullptr;
        if (std::optional<QStringList> cells
            = ChatLogReader::readRow(file.path, request.names, request.codePage))
            rows->append(std::move(*cells));
        // The list of a month's files is as large as its rows: each path
        // goes once its row is made, so the two are never held whole at once.
        file.path = QString();
        if (++done % 256 == 0)
            control.report(done, total);
    }
    control.report(total, total);
    if (request.filter.newestFirst)
        rows->sortNewestFirst();
    return rows;
}

void ChatLogRows::append(QStringList cells)
{
    const qsizetype row = qsizetype(m_folderOfRow.size());
    // The folder part of the path is shared by the rows of its folder.
    qint32 folder = -1;
    if (cells.size() > FilenameColumn) {
        QString &path = cells[FilenameColumn];
        const qsizetype slash = path.lastIndexOf(u'/');
        if (slash >= 0) {
            const QStringView prefix = QStringView(path).left(slash + 1);
            if (m_folders.isEmpty() || m_folders.constLast() != prefix)
                m_folders.append(prefix.toString());
            folder = qint32(m_folders.size() - 1);
            path.remove(0, slash + 1);
        }
    }
    m_folderOfRow.push_back(folder);
    for (int c = 0; c < StoredCells; ++c) {
        m_bounds.push_back(quint32(m_text.size()));
        if (c < cells.size())
            m_text.append(cells.at(c));
    }
    m_bounds.push_back(quint32(m_text.size()));
    m_order.push_back(qint32(row));
}

QString ChatLogRows::text(qsizetype row, int cell) const
{
    const qsizetype at = row * (StoredCells + 1) + cell;
    const QString part
        = m_text.mid(m_bounds[size_t(at)], m_bounds[size_t(at) + 1] - m_bounds[size_t(at)]);
    if (cell != FilenameColumn || m_folderOfRow[size_t(row)] < 0)
        return part;
    return m_folders.at(m_folderOfRow[size_t(row)]) + part;
}

void ChatLogRows::sortNewestFirst()
{
    std::vector<std::pair<QString, qint32>> keys;
    keys.reserve(m_order.size());
    for (const qint32 row : m_order)
        keys.emplace_back(text(row, 0) + u' ' + text(row, 1), row);
    std::stable_sort(keys.begin(), keys.end(),
        [](const auto &a, const auto &b) { return QString::compare(a.first, b.first) > 0; });
    for (size_t i = 0; i < keys.size(); ++i)
        m_order[i] = keys[i].second;
}

QString ChatLogRows::cell(int row, int column) const
{
    if (row < 0 || size_t(row) >= m_order.size())
        return {};
    const qsizetype stored = m_order[size_t(row)];
    if (column == TimeColumn)
        return text(stored, 0) + u' ' + text(stored, 1);
    if (column == NoneColumn || column < 0 || column >= ColumnCount)
        return {};
    return text(stored, column);
}
