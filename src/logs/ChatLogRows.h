#pragma once

#include "LogRows.h"
#include "LogSearch.h"

#include <memory>
#include <QList>
#include <QStringList>

// The chat log list: one row per accepted file, kept as its cells.
class ChatLogRows final : public LogRows
{
public:
    enum Column { TimeColumn, NoneColumn, UsersColumn, MessageColumn, FilenameColumn, ColumnCount };

    static QStringList captions(); // "Time", "none", "Users", "Message", "Filename"
    static QList<int> widths(); // 125, 0, 100, 805, 0

    // Reads every file the period accepts, in enumeration order; sorts
    // descending by label when the filter asks for newest first. Returns
    // nullptr when cancelled.
    static std::shared_ptr<ChatLogRows> search(
        const LogSearchRequest &request, const LogSearchControl &control = {});

    void append(QStringList cells);
    // Stable: rows with equal labels keep their reading order.
    void sortNewestFirst();

    int rowCount() const override { return int(m_rows.size()); }
    int columnCount() const override { return ColumnCount; }
    QString cell(int row, int column) const override;
    // The file the detail pane shows for a row (column "Filename").
    QString filePath(int row) const { return cell(row, FilenameColumn); }

private:
    QList<QStringList> m_rows;
};
