#include "LogHeaderExpression.h"

using namespace Qt::StringLiterals;

const QRegularExpression &LogHeaderExpression::expression()
{
    static const QRegularExpression compiled = [] {
        QRegularExpression e(u"^\\d\\d\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d .*"_s);
        e.optimize();
        return e;
    }();
    return compiled;
}

bool LogHeaderExpression::matches(QByteArrayView line)
{
    // The expression reads the bytes as Latin-1, where the only decimal
    // digits are the ASCII ones and ".*" accepts any rest, so the fixed
    // shape of its first 20 bytes decides alone; checking it by hand spares
    // millions of lines the expression's run.
    static constexpr char Shape[PrefixLength + 1] = "dddd-dd-dd dd:dd:dd ";
    if (line.size() < PrefixLength)
        return false;
    for (qsizetype i = 0; i < PrefixLength; ++i) {
        const char c = line[i];
        if (Shape[i] == 'd' ? (c < '0' || c > '9') : c != Shape[i])
            return false;
    }
    return true;
}

quint64 LogHeaderExpression::sortKey(QByteArrayView headerLine)
{
    quint64 key = 0;
    for (qsizetype i = 0; i < PrefixLength - 1 && i < headerLine.size(); ++i) {
        const char c = headerLine[i];
        if (c >= '0' && c <= '9')
            key = key * 10 + quint64(c - '0');
    }
    return key;
}
