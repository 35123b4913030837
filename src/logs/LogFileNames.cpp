#include "LogFileNames.h"

namespace {

char16_t unit(QChar c)
{
    return c.unicode();
}

char16_t unit(char c)
{
    return char16_t(static_cast<unsigned char>(c));
}

template<typename View> qint64 decimalPrefixOf(const View &text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    auto at = [&](qsizetype k) { return unit(text[k]); };
    while (i < n && (at(i) == u' ' || (at(i) >= u'\t' && at(i) <= u'\r')))
        ++i;
    bool negative = false;
    if (i < n && (at(i) == u'+' || at(i) == u'-')) {
        negative = at(i) == u'-';
        ++i;
    }
    qint64 value = 0;
    for (; i < n && at(i) >= u'0' && at(i) <= u'9'; ++i) {
        // Clamp instead of overflowing; no part of a name gets anywhere near.
        if (value < (qint64(1) << 40))
            value = value * 10 + (at(i) - u'0');
    }
    return negative ? -value : value;
}

int part(const QString &name, qsizetype from, qsizetype length)
{
    return int(LogFileNames::decimalPrefix(QStringView(name).mid(from, length)));
}

} // namespace

qint64 LogFileNames::decimalPrefix(QStringView text)
{
    return decimalPrefixOf(text);
}

qint64 LogFileNames::decimalPrefix(QByteArrayView text)
{
    return decimalPrefixOf(text);
}

std::optional<QDateTime> LogFileNames::chatStamp(const QString &fileName)
{
    if (fileName.size() < 17)
        return std::nullopt;
    return QDateTime(QDate(part(fileName, 1, 4), part(fileName, 5, 2), part(fileName, 7, 2)),
        QTime(part(fileName, 9, 2), part(fileName, 11, 2), 0));
}

std::optional<QDateTime> LogFileNames::hourlyStamp(const QString &fileName)
{
    if (fileName.size() != 15)
        return std::nullopt;
    return QDateTime(QDate(part(fileName, 1, 4), part(fileName, 5, 2), part(fileName, 7, 2)),
        QTime(part(fileName, 9, 2), 0, 0));
}
