#pragma once

#include <QByteArrayView>
#include <QRegularExpression>

// The record header of system and user logs: "^\d\d\d\d-\d\d-\d\d
// \d\d:\d\d:\d\d .*". Compiled on first use and kept for the program's life.
class LogHeaderExpression
{
public:
    static const QRegularExpression &expression();
    // Whether a trimmed line (the file's bytes) is a header. Digits are the
    // ASCII ones, as the daemons write them.
    static bool matches(QByteArrayView line);
    // The label key of a header line: its date and time digits as one number,
    // so that descending numbers are descending label texts.
    static quint64 sortKey(QByteArrayView headerLine);

    static constexpr qsizetype PrefixLength = 20; // "yyyy-mm-dd hh:mm:ss "
};
