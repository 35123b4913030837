#pragma once

#include "GeneratedData.h"
#include "Rng.h"

#include <QByteArray>
#include <QDate>
#include <QString>
#include <vector>

// A month of daemon logs at the volume of a busy server, in the formats
// LogWriter writes: hourly user logs of VelmarD (about userBytes in all),
// hourly system logs of the six daemons (about systemBytes), and chatFiles
// conversation files of ChatD, for the thirty days up to and including today.
// Writes bytes directly (GBK text encoded once) so that a gigabyte takes
// seconds, not minutes.
class BenchLogWriter
{
public:
    struct Volume
    {
        int days = 30;
        qint64 userBytes = 1000LL * 1000 * 1000;
        qint64 systemBytes = 300LL * 1000 * 1000;
        int chatFiles = 50000;
    };

    BenchLogWriter(
        QString root, const GeneratedData &data, QDate today, quint64 seed, Volume volume);

    bool write(QString *error);

private:
    struct Person
    {
        qint32 id;
        QByteArray name; // GBK
        QByteArray login;
    };
    bool writeUserLogs(QString *error);
    bool writeSystemLogs(QString *error);
    bool writeChatLogs(QString *error);
    bool save(const QString &folder, const QString &name, const QByteArray &bytes, QString *error);
    const Person &person();
    const QByteArray &pick(const std::vector<QByteArray> &items);

    QString m_root;
    QDate m_today;
    Rng m_rng;
    Volume m_volume;
    std::vector<Person> m_people;
    std::vector<QByteArray> m_lines; // chat lines, GBK
    std::vector<QByteArray> m_rtfLines; // the same as RTF bodies
    std::vector<QByteArray> m_files; // file names, GBK
    std::vector<QByteArray> m_events; // system events, GBK
};
