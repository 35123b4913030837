#pragma once

#include <QString>
#include <QStringList>

// The rows one search of a log view found, in list order (after the
// newest-first sort when it was asked for), as the cell texts the list shows.
class LogRows
{
public:
    virtual ~LogRows() = default;
    virtual int rowCount() const = 0;
    virtual int columnCount() const = 0;
    // Column 0 is the label: the date, one space and the time.
    virtual QString cell(int row, int column) const = 0;
    // Every cell of a row (cells is overwritten); cheaper than cell() per
    // column where a row is parsed again for each cell.
    virtual void rowCells(int row, QStringList &cells) const
    {
        cells.resize(columnCount());
        for (int column = 0; column < columnCount(); ++column)
            cells[column] = cell(row, column);
    }

protected:
    LogRows() = default;
    LogRows(const LogRows &) = default;
    LogRows &operator=(const LogRows &) = default;
};
