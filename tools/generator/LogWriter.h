#pragma once

#include "GeneratedData.h"
#include "Rng.h"

#include <QDate>
#include <QString>

// A few days of the daemons' log files below a log root: chat logs of ChatD,
// system logs of every daemon and user logs of VelmarD, in the line formats
// and encodings the daemons write (GBK, some files UTF-8).
class LogWriter
{
public:
    LogWriter(QString root, const GeneratedData &data, QDate today, quint64 seed);

    bool write(QString *error);

private:
    bool writeFile(const QString &folder, const QString &name, const QString &text,
        const QByteArray &encoding, QString *error);
    bool writeChatLogs(QString *error);
    bool writeSystemLogs(QString *error);
    bool writeUserLogs(QString *error);
    const GenMember &randomMember();

    QString m_root;
    const GeneratedData &m_data;
    QDate m_today;
    Rng m_rng;
};
