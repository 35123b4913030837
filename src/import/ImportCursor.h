#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Reads one table of a source from its first row on, a chunk at a time, so
// that a table of a million rows need not be held whole. A cursor belongs to
// the thread that made it (database connections do).
class ImportCursor
{
public:
    virtual ~ImportCursor();

    // The column names, in the source's order.
    virtual QStringList columns() const = 0;
    // Appends up to maxRows rows (every remaining row when -1) to rows, each
    // with exactly one value per column. False when reading failed; the rows
    // read before the failure stay appended.
    virtual bool fetch(QList<QStringList> *rows, qsizetype maxRows = -1) = 0;
    virtual bool atEnd() const = 0;
    // Why the last fetch failed.
    virtual QString errorString() const = 0;

protected:
    // Pads a short row with empty values and cuts a long one to the columns.
    static void fitToColumns(QStringList &row, qsizetype columnCount);
};
