#pragma once

#include <optional>
#include <QDateTime>
#include <QString>

// The daemons put the hour (system and user logs) or the minute (chat logs)
// a file was begun in its name; the views date files by that alone.
class LogFileNames
{
public:
    // A chat log name "c" + yyyyMMddhhmm + ...: nullopt when the name is
    // shorter than 17 characters. Each part converts like atoi (a part that
    // does not start with digits is 0), so the result may be an invalid
    // QDateTime, which no period accepts.
    static std::optional<QDateTime> chatStamp(const QString &fileName);
    // A system or user log name (one letter + yyyyMMddhh + ".txt"): nullopt
    // unless the name is exactly 15 characters long.
    static std::optional<QDateTime> hourlyStamp(const QString &fileName);

    // Plain decimal-prefix conversion: leading white space, an optional sign,
    // then digits up to the first other character; 0 when there are none.
    static qint64 decimalPrefix(QStringView text);
    static qint64 decimalPrefix(QByteArrayView text);
};
