#include "SystemLogRows.h"

#include "LogFileLoader.h"
#include "LogHeaderExpression.h"
#include "NewestFirst.h"
#include "SystemLogReader.h"

#include <algorithm>

using namespace Qt::StringLiterals;

QStringList SystemLogRows::captions()
{
    return { u"Time"_s, u"none"_s, u"Service"_s, u"Message"_s };
}

QList<int> SystemLogRows::widths()
{
    return { 125, 0, 100, 405 };
}

SystemLogRows::SystemLogRows(const CodePage &codePage)
    : m_decoder(codePage)
{ }

std::shared_ptr<SystemLogRows> SystemLogRows::search(
    const LogSearchRequest &request, const LogSearchControl &control)
{
    auto rows = std::make_shared<SystemLogRows>(request.codePage);
    const QList<LogFileEntry> files
        = LogSearch::keptFiles(LogSearch::Kind::System, request.logRoot, request.filter);
    rows->m_store = std::make_unique<LogFileStore>(LogFileLoader::totalSize(files));
    const bool done = LogFileLoader::loadFiles<Part>(
        files, control, rows->m_store.get(), &parse, [&](Part &&part, double growth) {
            LogFileLoader::reserveAhead(rows->m_rows, part.rows.size(), growth);
            rows->append(std::move(part));
        });
    if (!done)
        return nullptr;
    if (request.filter.newestFirst)
        rows->sortNewestFirst();
    return rows;
}

SystemLogRows::Part SystemLogRows::parse(LogFileBytes bytes)
{
    Part part;
    const char *const base = bytes.view.data();
    SystemLogReader::readLines(bytes.view, [&](QByteArrayView line) {
        part.rows.push_back({ LogHeaderExpression::sortKey(line), qint64(line.data() - base), 0,
            quint32(line.size()) });
    });
    part.bytes = std::move(bytes);
    return part;
}

void SystemLogRows::append(Part &&part)
{
    const auto fileIndex = quint32(m_files.size());
    for (Row &row : part.rows) {
        row.file = fileIndex;
        m_rows.push_back(row);
    }
    m_files.push_back(std::move(part.bytes));
}

void SystemLogRows::appendFile(QByteArray bytes)
{
    append(parse(LogFileBytes::fromBytes(std::move(bytes))));
}

QByteArrayView SystemLogRows::lineOf(const Row &row) const
{
    return m_files[row.file].view.sliced(row.offset, row.size);
}

void SystemLogRows::sortNewestFirst()
{
    ::sortNewestFirst(m_rows, [](const Row &row) { return row.key; });
}

QString SystemLogRows::cell(int row, int column) const
{
    if (row < 0 || size_t(row) >= m_rows.size())
        return {};
    const Row &r = m_rows[size_t(row)];
    const SystemLogReader::Fields fields = SystemLogReader::splitFields(lineOf(r));
    const LogTextEncoding encoding = m_files[r.file].encoding;
    switch (column) {
    case TimeColumn:
        return m_decoder.decode(fields.value(0), encoding) + u' '
            + m_decoder.decode(fields.value(1), encoding);
    case ServiceColumn:
    case MessageColumn:
        return m_decoder.decode(fields.value(column), encoding);
    default:
        return {};
    }
}

void SystemLogRows::rowCells(int row, QStringList &cells) const
{
    cells.resize(ColumnCount);
    if (row < 0 || size_t(row) >= m_rows.size()) {
        cells.fill(QString());
        return;
    }
    const Row &r = m_rows[size_t(row)];
    const SystemLogReader::Fields fields = SystemLogReader::splitFields(lineOf(r));
    const LogTextEncoding encoding = m_files[r.file].encoding;
    cells[TimeColumn] = m_decoder.decode(fields.value(0), encoding) + u' '
        + m_decoder.decode(fields.value(1), encoding);
    cells[NoneColumn] = QString();
    cells[ServiceColumn] = m_decoder.decode(fields.value(2), encoding);
    cells[MessageColumn] = m_decoder.decode(fields.value(3), encoding);
}

qint64 SystemLogRows::bytesHeld() const
{
    return LogFileStore::bytesHeld(m_store.get(), m_files)
        + qint64(m_rows.capacity() * sizeof(Row));
}
