#pragma once

#include "LogFileStore.h"
#include "LogRows.h"
#include "LogSearch.h"
#include "LogText.h"

#include <memory>
#include <optional>
#include <QVarLengthArray>
#include <vector>

// The user log: every row read (a sent message and one received row per
// receiver), an index from member id to that member's rows, and the rows the
// list shows (all of them, or one member's).
class UserLogRows final : public LogRows
{
public:
    enum Column {
        DateColumn, // the label: date and time
        TimeColumn,
        ServiceColumn,
        ServerIpColumn, // captioned "Service" as well
        ServerPortColumn,
        EventColumn,
        TypeColumn,
        SenderColumn,
        ReceiverColumn,
        SenderIpColumn,
        StatusColumn,
        SubStatusColumn,
        DataLenColumn,
        DataColumn,
        ColumnCount
    };

    static QStringList captions(); // "Date", "Time", "Service", "Service", "Server Port", ...
    static QList<int> widths(); // 125, 0, 0, 0, 0, 135, 50, 55, 65, 100, 0, 0, 0, 0

    explicit UserLogRows(LogMemberNames names = {}, const CodePage &codePage = CodePage::system());

    // nullptr when cancelled.
    static std::shared_ptr<UserLogRows> search(
        const LogSearchRequest &request, const LogSearchControl &control = {});

    void appendFile(QByteArray bytes);
    // Newest first sorts every listing from now on (stable, by label).
    void setNewestFirst(bool newestFirst);
    // Lists the rows filed under a member id, or all stored rows.
    void showMember(qint32 memberId);
    void showAll();
    std::optional<qint32> shownMember() const { return m_shownMember; }

    int rowCount() const override { return int(m_listed.size()); }
    int columnCount() const override { return ColumnCount; }
    // Sender and receiver columns show member names (unknown receivers are
    // left out; an unknown sender keeps its id).
    QString cell(int row, int column) const override;
    void rowCells(int row, QStringList &cells) const override;
    // The stored row of a listed row: the header fields as read (with the
    // event and receiver of a received row), the data block last.
    QStringList fields(int row) const;
    int storedRowCount() const { return int(m_rows.size()); }
    qint64 bytesHeld() const;

private:
    // The files' bytes are kept as read: a record is where its header and its
    // data block lie in them, so a search costs the bytes once and a few
    // words per row.
    struct Record
    {
        quint64 key;
        qint64 header; // offset of the trimmed header line in its file
        qint64 dataEnd;
        quint32 file;
        quint16 headerSize; // a header is one read of at most 1023 bytes
        quint16 dataGap; // from the header's end to the data block's beginning
    };
    struct Row
    {
        quint32 record;
        qint32 receiver; // -1: as read; else which receiver of the sent message
        qint32 member; // the sender, or that receiver
    };
    // One file read: its records and rows, numbered from 0 within the file.
    struct Part
    {
        LogFileBytes bytes;
        std::vector<Record> records;
        std::vector<Row> rows;
    };
    static Part parse(LogFileBytes bytes);
    void append(Part &&part);

    QVarLengthArray<QByteArrayView, 16> rowFields(const Row &row) const;
    QByteArrayView headerOf(const Record &record) const;
    QByteArray dataOf(const Record &record) const;
    QString decode(QByteArrayView bytes, const Record &record) const;
    QString cellOf(const QVarLengthArray<QByteArrayView, 16> &fields, const Record &record,
        int column) const;
    void relist();

    LogMemberNames m_names;
    // Where the files' bytes are, when the search read them into one block.
    std::unique_ptr<LogFileStore> m_store;
    std::vector<LogFileBytes> m_files;
    std::vector<Record> m_records;
    std::vector<Row> m_rows;
    std::vector<quint32> m_listed;
    std::optional<qint32> m_shownMember;
    bool m_newestFirst = false;
    LogTextDecoder m_decoder;
};
