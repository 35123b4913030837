#pragma once

#include <functional>
#include <QByteArrayView>
#include <QVarLengthArray>

// Reads the daemons' system logs: every trimmed line (1024-byte reads) that is
// not empty, not a "#" comment and matches the header expression is a row.
class SystemLogReader
{
public:
    // Calls row for each header line of bytes (the file's contents after
    // LogText::prepare), in file order; the view stays valid during the call.
    static void readLines(QByteArrayView bytes, const std::function<void(QByteArrayView)> &row);

    // The four fields of a line: split at its first three spaces, the last
    // field keeping any further spaces. Fewer fields when there are fewer spaces.
    using Fields = QVarLengthArray<QByteArrayView, 4>;
    static Fields splitFields(QByteArrayView line);

    static constexpr qsizetype LineBufferSize = 1024;
};
