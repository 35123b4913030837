// A CSV or TSV file handed to the member import: decoded (byte-order mark,
// UTF-8 or the code page), its separator detected and every record read.
// The records written back with every field quoted must read back the same.
#include "CsvReader.h"

#include <cstddef>
#include <cstdint>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    CsvReader reader = CsvReader::fromBytes(bytes, CodePage("GBK"));
    QList<QStringList> records;
    qsizetype line = reader.line();
    while (!reader.atEnd()) {
        records.append(reader.next());
        // Every record moves on, so the loop ends.
        if (reader.line() <= line && !reader.atEnd())
            __builtin_trap();
        line = reader.line();
    }

    const QChar separator = reader.separator();
    QString written;
    for (const QStringList &record : std::as_const(records)) {
        for (qsizetype i = 0; i < record.size(); ++i) {
            if (i > 0)
                written += separator;
            written += u'"' + QString(record.at(i)).replace(u"\""_s, u"\"\""_s) + u'"';
        }
        written += u'\n';
    }
    CsvReader again(written, separator);
    for (const QStringList &record : std::as_const(records)) {
        if (again.next() != record)
            __builtin_trap();
    }
    if (!again.atEnd())
        __builtin_trap();
    return 0;
}
