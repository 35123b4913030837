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
    qint64 total = 0;
    for (const LogFileEntry &file : files)
        total += file.size;
    rows->m_store = std::make_unique<LogFileStore>(total);
    LogFileStore *const store = rows->m_store.get();
    qint64 taken = 0;
    const bool done = LogFileLoader::load<Part>(
        files, control,
        [store](const LogFileEntry &file) -> std::optional<Part> {
            std::optional<LogFileBytes> bytes = LogFileStore::read(file.path, file.size, store);
            if (!bytes)
                return std::nullopt;
            return parse(std::move(*bytes));
        },
        [&](Part &&part) {
            // Room for the rest at the rate seen so far, so that the list is
            // not copied again and again as it grows.
            taken += part.bytes.view.size();
            const double rest = taken > 0 ? double(std::max(total, taken)) / double(taken) : 1;
            const size_t wanted = rows->m_rows.size() + part.rows.size();
            if (rows->m_rows.capacity() < wanted)
                rows->m_rows.reserve(size_t(double(wanted) * rest * 1.05) + part.rows.size());
            rows->append(std::move(part));
        },
        [](const LogFileEntry &file) { return file.size; });
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
    LogFileBytes file;
    file.encoding = LogText::prepare(bytes, true);
    file.owned = std::move(bytes);
    file.view = file.owned;
    append(parse(std::move(file)));
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
    qint64 files = 0;
    for (const LogFileBytes &file : m_files)
        files += file.owned.capacity();
    if (m_store)
        files += m_store->capacity();
    return files + qint64(m_files.capacity() * sizeof(LogFileBytes))
        + qint64(m_rows.capacity() * sizeof(Row));
}
