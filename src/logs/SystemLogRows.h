#pragma once

#include "LogFileStore.h"
#include "LogRows.h"
#include "LogSearch.h"
#include "LogText.h"

#include <memory>
#include <vector>

// The system log list: one row per header line, kept as the line's own bytes.
class SystemLogRows final : public LogRows
{
public:
    enum Column { TimeColumn, NoneColumn, ServiceColumn, MessageColumn, ColumnCount };

    static QStringList captions(); // "Time", "none", "Service", "Message"
    static QList<int> widths(); // 125, 0, 100, 405

    explicit SystemLogRows(const CodePage &codePage = CodePage::system());

    // nullptr when cancelled.
    static std::shared_ptr<SystemLogRows> search(
        const LogSearchRequest &request, const LogSearchControl &control = {});

    // Reads one file's bytes (as read from disk) and appends its rows.
    void appendFile(QByteArray bytes);
    void sortNewestFirst();

    int rowCount() const override { return int(m_rows.size()); }
    int columnCount() const override { return ColumnCount; }
    QString cell(int row, int column) const override;
    void rowCells(int row, QStringList &cells) const override;
    qint64 bytesHeld() const;

private:
    // The files' bytes are kept as read; a row is where its line lies in them.
    struct Row
    {
        quint64 key;
        qint64 offset;
        quint32 file;
        quint32 size;
    };
    // One file read, its rows numbered from 0 within the file.
    struct Part
    {
        LogFileBytes bytes;
        std::vector<Row> rows;
    };
    static Part parse(LogFileBytes bytes);
    void append(Part &&part);
    QByteArrayView lineOf(const Row &row) const;

    // Where the files' bytes are, when the search read them into one block.
    std::unique_ptr<LogFileStore> m_store;
    std::vector<LogFileBytes> m_files;
    std::vector<Row> m_rows;
    LogTextDecoder m_decoder;
};
