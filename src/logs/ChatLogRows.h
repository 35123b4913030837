#pragma once

#include "LogRows.h"
#include "LogSearch.h"

#include <memory>
#include <QList>
#include <QStringList>
#include <vector>

// The chat log list: one row per accepted file, kept as its cells. A month
// is 50,000 files: the cells of all rows share one text, and a file's folder
// is kept once for all the files in it.
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

    int rowCount() const override { return int(m_order.size()); }
    int columnCount() const override { return ColumnCount; }
    QString cell(int row, int column) const override;
    // The file the detail pane shows for a row (column "Filename").
    QString filePath(int row) const { return cell(row, FilenameColumn); }

private:
    static constexpr int StoredCells = 5; // as the reader gives them

    QString text(qsizetype row, int cell) const;

    // Cell c of row r is m_text[m_bounds[6r + c], m_bounds[6r + c + 1]).
    QString m_text;
    std::vector<quint32> m_bounds;
    // The folder of each row's Filename cell (the cell keeps the rest), -1
    // when it names none.
    std::vector<qint32> m_folderOfRow;
    QStringList m_folders;
    // Rows in list order, by their place in the text.
    std::vector<qint32> m_order;
};
