#include "SystemLogRows.h"

#include "LogHeaderExpression.h"
#include "SystemLogReader.h"

#include <algorithm>
#include <QFile>

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
    qint64 done = 0;
    control.report(0, total);
    // One buffer for every file: its pages stay mapped from file to file.
    QByteArray buffer;
    for (const LogFileEntry &file : files) {
        if (control.isCancelled())
            return nullptr;
        QFile in(file.path);
        if (in.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            buffer.resize(std::max<qint64>(in.size(), 0));
            const qint64 got = in.read(buffer.data(), buffer.size());
            buffer.resize(std::max<qint64>(got, 0));
            rows->appendFile(buffer);
        }
        done += file.size;
        control.report(done, total);
    }
    if (control.isCancelled())
        return nullptr;
    if (request.filter.newestFirst)
        rows->sortNewestFirst();
    return rows;
}

void SystemLogRows::appendFile(QByteArray bytes)
{
    const LogTextEncoding encoding = LogText::prepare(bytes, true);
    SystemLogReader::readLines(bytes, [&](QByteArrayView line) {
        m_rows.push_back({ LogHeaderExpression::sortKey(line), m_arena.append(line), encoding });
    });
}

void SystemLogRows::sortNewestFirst()
{
    std::stable_sort(
        m_rows.begin(), m_rows.end(), [](const Row &a, const Row &b) { return a.key > b.key; });
}

QString SystemLogRows::cell(int row, int column) const
{
    if (row < 0 || size_t(row) >= m_rows.size())
        return {};
    const Row &r = m_rows[size_t(row)];
    const SystemLogReader::Fields fields = SystemLogReader::splitFields(m_arena.view(r.line));
    switch (column) {
    case TimeColumn:
        return m_decoder.decode(fields.value(0), r.encoding) + u' '
            + m_decoder.decode(fields.value(1), r.encoding);
    case ServiceColumn:
    case MessageColumn:
        return m_decoder.decode(fields.value(column), r.encoding);
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
    const SystemLogReader::Fields fields = SystemLogReader::splitFields(m_arena.view(r.line));
    cells[TimeColumn] = m_decoder.decode(fields.value(0), r.encoding) + u' '
        + m_decoder.decode(fields.value(1), r.encoding);
    cells[NoneColumn] = QString();
    cells[ServiceColumn] = m_decoder.decode(fields.value(2), r.encoding);
    cells[MessageColumn] = m_decoder.decode(fields.value(3), r.encoding);
}

qint64 SystemLogRows::bytesHeld() const
{
    return m_arena.bytesHeld() + qint64(m_rows.capacity() * sizeof(Row));
}
