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
    const QList<LogFileEntry> files
        = LogSearch::keptFiles(LogSearch::Kind::Chat, request.logRoot, request.filter);
    const qint64 total = files.size();
    qint64 done = 0;
    control.report(0, total);
    for (const LogFileEntry &file : files) {
        if (control.isCancelled())
            return nullptr;
        if (std::optional<QStringList> cells
            = ChatLogReader::readRow(file.path, request.names, request.codePage))
            rows->append(std::move(*cells));
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
    m_rows.append(std::move(cells));
}

void ChatLogRows::sortNewestFirst()
{
    std::vector<std::pair<QString, qsizetype>> keys;
    keys.reserve(size_t(m_rows.size()));
    for (qsizetype i = 0; i < m_rows.size(); ++i)
        keys.emplace_back(cell(int(i), TimeColumn), i);
    std::stable_sort(keys.begin(), keys.end(),
        [](const auto &a, const auto &b) { return QString::compare(a.first, b.first) > 0; });
    QList<QStringList> sorted;
    sorted.reserve(m_rows.size());
    for (const auto &key : keys)
        sorted.append(std::move(m_rows[key.second]));
    m_rows = std::move(sorted);
}

QString ChatLogRows::cell(int row, int column) const
{
    if (row < 0 || row >= m_rows.size())
        return {};
    const QStringList &cells = m_rows.at(row);
    if (column == TimeColumn)
        return cells.value(0) + u' ' + cells.value(1);
    if (column == NoneColumn)
        return {};
    return cells.value(column);
}
