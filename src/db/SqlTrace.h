#pragma once

#include <QFile>
#include <QMutex>
#include <QString>

// Writes every statement executed, one per line, in order (line breaks inside
// a statement are written as the two characters "\n"). Shared by all
// connections of one process; thread-safe.
class SqlTrace
{
public:
    explicit SqlTrace(const QString &path);
    bool isOpen() const;
    QString errorString() const;
    void record(const QString &statement);

private:
    mutable QMutex m_mutex;
    QFile m_file;
};
