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
    // Only the first 20 bytes decide; a line that cannot be a header (most
    // data lines) is turned away before the expression runs.
    if (line.size() < PrefixLength || line[0] < '0' || line[0] > '9' || line[4] != '-')
        return false;
    // The bytes as Latin-1: a byte of a longer character never reads as a digit.
    const QString prefix = QString::fromLatin1(line.first(PrefixLength));
    return expression()
        .match(prefix, 0, QRegularExpression::NormalMatch,
            QRegularExpression::AnchorAtOffsetMatchOption)
        .hasMatch();
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
