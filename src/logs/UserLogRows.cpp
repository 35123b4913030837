#include "UserLogRows.h"

#include "LogFileNames.h"
#include "LogHeaderExpression.h"
#include "UserLogReader.h"

#include <algorithm>
#include <QFile>

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
    rows->setNewestFirst(request.filter.newestFirst);
    return rows;
}

void UserLogRows::appendFile(QByteArray bytes)
{
    const LogTextEncoding encoding = LogText::prepare(bytes, true);
    UserLogReader::readRecords(bytes, [&](const UserLogReader::Record &read) {
        const auto recordIndex = quint32(m_records.size());
        m_records.push_back({ LogHeaderExpression::sortKey(read.header),
            m_arena.append(read.header), m_arena.append(read.data), encoding });
        const UserLogReader::Fields fields = UserLogReader::splitFields(read.header);
        auto file = [&](qint32 member, qint32 receiver) {
            const auto rowIndex = quint32(m_rows.size());
            m_rows.push_back({ recordIndex, receiver });
            m_byMember[member].push_back(rowIndex);
            if (!m_shownMember)
                m_listed.push_back(rowIndex);
        };
        file(memberId(fields.value(UserLogReader::SenderField)), -1);
        if (fields.value(UserLogReader::EventField) == MsgSent) {
            const QList<QByteArrayView> receivers
                = UserLogReader::splitReceivers(fields.value(UserLogReader::ReceiverField));
            for (qsizetype i = 0; i < receivers.size(); ++i)
                file(memberId(receivers[i]), qint32(i));
        }
    });
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
    if (m_shownMember) {
        const auto found = m_byMember.constFind(*m_shownMember);
        m_listed = found == m_byMember.constEnd() ? std::vector<quint32>() : *found;
    } else {
        m_listed.resize(m_rows.size());
        for (size_t i = 0; i < m_listed.size(); ++i)
            m_listed[i] = quint32(i);
    }
    if (m_newestFirst) {
        std::stable_sort(m_listed.begin(), m_listed.end(), [this](quint32 a, quint32 b) {
            return m_records[m_rows[a].record].key > m_records[m_rows[b].record].key;
        });
    }
}

UserLogReader::Fields UserLogRows::rowFields(const Row &row, QByteArrayView *data) const
{
    const Record &record = m_records[row.record];
    UserLogReader::Fields fields = UserLogReader::splitFields(m_arena.view(record.header));
    if (row.receiver >= 0) {
        const QList<QByteArrayView> receivers
            = UserLogReader::splitReceivers(fields.value(UserLogReader::ReceiverField));
        fields[UserLogReader::EventField] = MsgRecv;
        fields[UserLogReader::ReceiverField] = receivers.value(row.receiver);
    }
    *data = m_arena.view(record.data);
    return fields;
}

QString UserLogRows::decode(QByteArrayView bytes, const Record &record) const
{
    return m_decoder.decode(bytes, record.encoding);
}

QString UserLogRows::cell(int row, int column) const
{
    if (row < 0 || size_t(row) >= m_listed.size() || column < 0 || column >= ColumnCount)
        return {};
    const Row &r = m_rows[m_listed[size_t(row)]];
    QByteArrayView data;
    const UserLogReader::Fields fields = rowFields(r, &data);
    return cellOf(fields, data, m_records[r.record], column);
}

QString UserLogRows::cellOf(const QVarLengthArray<QByteArrayView, 16> &fields, QByteArrayView data,
    const Record &record, int column) const
{
    auto field = [&](qsizetype k) -> QString {
        if (k < fields.size())
            return decode(fields[k], record);
        return k == fields.size() ? decode(data, record) : QString();
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
    QByteArrayView data;
    const UserLogReader::Fields fields = rowFields(r, &data);
    for (int column = 0; column < ColumnCount; ++column)
        cells[column] = cellOf(fields, data, m_records[r.record], column);
}

QStringList UserLogRows::fields(int row) const
{
    QStringList result;
    if (row < 0 || size_t(row) >= m_listed.size())
        return result;
    const Row &r = m_rows[m_listed[size_t(row)]];
    const Record &record = m_records[r.record];
    QByteArrayView data;
    for (QByteArrayView f : rowFields(r, &data))
        result << decode(f, record);
    result << decode(data, record);
    return result;
}

qint64 UserLogRows::bytesHeld() const
{
    qint64 index = 0;
    for (const auto &rows : m_byMember)
        index += qint64(rows.capacity() * sizeof(quint32));
    return m_arena.bytesHeld() + qint64(m_records.capacity() * sizeof(Record))
        + qint64(m_rows.capacity() * sizeof(Row)) + qint64(m_listed.capacity() * sizeof(quint32))
        + index;
}
