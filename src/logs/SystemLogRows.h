#pragma once

#include "LogByteArena.h"
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
    struct Row
    {
        quint64 key;
        LogByteArena::Ref line;
        LogTextEncoding encoding;
    };
    LogByteArena m_arena;
    std::vector<Row> m_rows;
    LogTextDecoder m_decoder;
};
