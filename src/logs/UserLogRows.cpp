#include "UserLogRows.h"

#include "LogFileLoader.h"
#include "LogFileNames.h"
#include "LogHeaderExpression.h"
#include "NewestFirst.h"
#include "UserLogReader.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView MsgSent("MSG_SENT");
constexpr QByteArrayView MsgRecv("MSG_RECV");

qint32 memberId(QByteArrayView text)
{
    return qint32(LogFileNames::decimalPrefix(text));
}

} // namespace

QStringList UserLogRows::captions()
{
    return { u"Date"_s, u"Time"_s, u"Service"_s, u"Service"_s, u"Server Port"_s, u"Event"_s,
        u"Type"_s, u"Sender"_s, u"Receiver"_s, u"Sender IP"_s, u"Status"_s, u"SubStatus"_s,
        u"DataLen"_s, u"Data"_s };
}

QList<int> UserLogRows::widths()
{
    return { 125, 0, 0, 0, 0, 135, 50, 55, 65, 100, 0, 0, 0, 0 };
}

UserLogRows::UserLogRows(LogMemberNames names, const CodePage &codePage)
    : m_names(std::move(names))
    , m_decoder(codePage)
{ }

std::shared_ptr<UserLogRows> UserLogRows::search(
    const LogSearchRequest &request, const LogSearchControl &control)
{
    auto rows = std::make_shared<UserLogRows>(request.names, request.codePage);
    const QList<LogFileEntry> files
        = LogSearch::keptFiles(LogSearch::Kind::User, request.logRoot, request.filter);
    rows->m_store = std::make_unique<LogFileStore>(LogFileLoader::totalSize(files));
    const bool done = LogFileLoader::loadFiles<Part>(
        files, control, rows->m_store.get(), &parse, [&](Part &&part, double growth) {
            LogFileLoader::reserveAhead(rows->m_records, part.records.size(), growth);
            LogFileLoader::reserveAhead(rows->m_rows, part.rows.size(), growth);
            rows->append(std::move(part));
        });
    if (!done)
        return nullptr;
    rows->setNewestFirst(request.filter.newestFirst);
    return rows;
}

UserLogRows::Part UserLogRows::parse(LogFileBytes bytes)
{
    Part part;
    const char *const base = bytes.view.data();
    UserLogReader::readRecords(bytes.view, [&](const UserLogReader::Record &read) {
        const auto recordIndex = quint32(part.records.size());
        const qint64 header = read.header.data() - base;
        part.records.push_back({ LogHeaderExpression::sortKey(read.header), header, read.dataEnd, 0,
            quint16(read.header.size()), quint16(read.dataBegin - header - read.header.size()) });
        const UserLogReader::Fields fields = UserLogReader::splitFields(read.header);
        part.rows.push_back(
            { recordIndex, -1, memberId(fields.value(UserLogReader::SenderField)) });
        if (fields.value(UserLogReader::EventField) == MsgSent) {
            const QByteArrayView receivers = fields.value(UserLogReader::ReceiverField);
            qint32 receiver = 0;
            qsizetype from = 0;
            // The ids split on ";", empty items left out (splitReceivers).
            while (from <= receivers.size()) {
                qsizetype semicolon = receivers.indexOf(';', from);
                if (semicolon < 0)
                    semicolon = receivers.size();
                if (semicolon > from) {
                    part.rows.push_back({ recordIndex, receiver++,
                        memberId(receivers.sliced(from, semicolon - from)) });
                }
                from = semicolon + 1;
            }
        }
    });
    part.bytes = std::move(bytes);
    return part;
}

void UserLogRows::append(Part &&part)
{
    const auto fileIndex = quint32(m_files.size());
    const auto recordBase = quint32(m_records.size());
    for (Record &record : part.records) {
        record.file = fileIndex;
        m_records.push_back(record);
    }
    for (Row &row : part.rows) {
        row.record += recordBase;
        m_rows.push_back(row);
    }
    m_files.push_back(std::move(part.bytes));
}

void UserLogRows::appendFile(QByteArray bytes)
{
    append(parse(LogFileBytes::fromBytes(std::move(bytes))));
    relist();
}

void UserLogRows::setNewestFirst(bool newestFirst)
{
    m_newestFirst = newestFirst;
    relist();
}

void UserLogRows::showMember(qint32 memberId)
{
    m_shownMember = memberId;
    relist();
}

void UserLogRows::showAll()
{
    m_shownMember.reset();
    relist();
}

void UserLogRows::relist()
{
    m_listed.clear();
    if (m_shownMember) {
        for (size_t i = 0; i < m_rows.size(); ++i) {
            if (m_rows[i].member == *m_shownMember)
                m_listed.push_back(quint32(i));
        }
    } else {
        m_listed.resize(m_rows.size());
        for (size_t i = 0; i < m_listed.size(); ++i)
            m_listed[i] = quint32(i);
    }
    if (m_newestFirst) {
        sortNewestFirst(
            m_listed, [this](quint32 row) { return m_records[m_rows[row].record].key; });
    }
}

QByteArrayView UserLogRows::headerOf(const Record &record) const
{
    return m_files[record.file].view.sliced(record.header, record.headerSize);
}

QByteArray UserLogRows::dataOf(const Record &record) const
{
    const QByteArrayView bytes = m_files[record.file].view;
    const qint64 begin = record.header + record.headerSize + record.dataGap;
    return UserLogReader::dataText(bytes, headerOf(record), begin, record.dataEnd);
}

UserLogReader::Fields UserLogRows::rowFields(const Row &row) const
{
    UserLogReader::Fields fields = UserLogReader::splitFields(headerOf(m_records[row.record]));
    if (row.receiver >= 0) {
        const QList<QByteArrayView> receivers
            = UserLogReader::splitReceivers(fields.value(UserLogReader::ReceiverField));
        fields[UserLogReader::EventField] = MsgRecv;
        fields[UserLogReader::ReceiverField] = receivers.value(row.receiver);
    }
    return fields;
}

QString UserLogRows::decode(QByteArrayView bytes, const Record &record) const
{
    return m_decoder.decode(bytes, m_files[record.file].encoding);
}

QString UserLogRows::cell(int row, int column) const
{
    if (row < 0 || size_t(row) >= m_listed.size() || column < 0 || column >= ColumnCount)
        return {};
    const Row &r = m_rows[m_listed[size_t(row)]];
    return cellOf(rowFields(r), m_records[r.record], column);
}

QString UserLogRows::cellOf(
    const QVarLengthArray<QByteArrayView, 16> &fields, const Record &record, int column) const
{
    auto field = [&](qsizetype k) -> QString {
        if (k < fields.size())
            return decode(fields[k], record);
        return k == fields.size() ? decode(dataOf(record), record) : QString();
    };
    switch (column) {
    case DateColumn:
        return field(UserLogReader::DateField) + u' ' + field(UserLogReader::TimeField);
    case TimeColumn:
        return {};
    case SenderColumn: {
        if (fields.size() <= UserLogReader::SenderField)
            return field(column);
        const auto known = m_names.constFind(memberId(fields[UserLogReader::SenderField]));
        return known != m_names.constEnd() ? *known : field(column);
    }
    case ReceiverColumn: {
        if (fields.size() <= UserLogReader::ReceiverField)
            return field(column);
        QString names;
        bool first = true;
        for (QByteArrayView id :
            UserLogReader::splitReceivers(fields[UserLogReader::ReceiverField])) {
            const auto known = m_names.constFind(memberId(id));
            if (known == m_names.constEnd())
                continue;
            if (!first)
                names += u';';
            names += *known;
            first = false;
        }
        return names;
    }
    default:
        return field(column);
    }
}

void UserLogRows::rowCells(int row, QStringList &cells) const
{
    cells.resize(ColumnCount);
    if (row < 0 || size_t(row) >= m_listed.size()) {
        cells.fill(QString());
        return;
    }
    const Row &r = m_rows[m_listed[size_t(row)]];
    const UserLogReader::Fields fields = rowFields(r);
    for (int column = 0; column < ColumnCount; ++column)
        cells[column] = cellOf(fields, m_records[r.record], column);
}

QStringList UserLogRows::fields(int row) const
{
    QStringList result;
    if (row < 0 || size_t(row) >= m_listed.size())
        return result;
    const Row &r = m_rows[m_listed[size_t(row)]];
    const Record &record = m_records[r.record];
    for (QByteArrayView f : rowFields(r))
        result << decode(f, record);
    result << decode(dataOf(record), record);
    return result;
}

qint64 UserLogRows::bytesHeld() const
{
    return LogFileStore::bytesHeld(m_store.get(), m_files)
        + qint64(m_records.capacity() * sizeof(Record)) + qint64(m_rows.capacity() * sizeof(Row))
        + qint64(m_listed.capacity() * sizeof(quint32));
}
