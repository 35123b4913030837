#pragma once

#include <QList>
#include <QStringList>

// Rows read from an outside data source. Every value is text, as the import
// reads every mapped field as text: numbers and dates as the source writes
// them, NULL as empty. Each row has exactly one value per column.
struct ImportTable
{
    QStringList columns;
    QList<QStringList> rows;

    qsizetype rowCount() const { return rows.size(); }
};
