// A daemon's system log: any bytes, read as the log view reads them, and every
// cell the view would show.
#include "CodePage.h"
#include "SystemLogRows.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    SystemLogRows rows(CodePage("GBK"));
    rows.appendFile(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    rows.sortNewestFirst();
    qsizetype total = 0;
    for (int r = 0; r < rows.rowCount(); ++r)
        for (int c = 0; c < rows.columnCount(); ++c)
            total += rows.cell(r, c).size();
    return total == -1 ? 1 : 0;
}
