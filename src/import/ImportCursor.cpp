#include "ImportCursor.h"

ImportCursor::~ImportCursor() = default;

void ImportCursor::fitToColumns(QStringList &row, qsizetype columnCount)
{
    // Values past the last column have no name to be mapped by; a missing
    // value reads as an empty field, as an unmapped field does.
    if (row.size() > columnCount)
        row.resize(columnCount);
    while (row.size() < columnCount)
        row.append(QString());
}
