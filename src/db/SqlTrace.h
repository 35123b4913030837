#pragma once

#include <QFile>
#include <QMutex>
#include <QString>
#include <QStringList>

// Writes every statement executed, one per line, in order, escaped as
// LineEscape writes texts, so that every line reads back to exactly one
// statement. Shared by
// all connections of one process; thread-safe.
class SqlTrace
{
public:
    explicit SqlTrace(const QString &path);
    bool isOpen() const;
    QString errorString() const;
    void record(const QString &statement);

    // One line of a trace back to the statement it was written for.
    static QString decode(QStringView line);
    // The statements of a trace file, in order; empty when it cannot be read.
    static QStringList readStatements(const QString &path, QString *errorString = nullptr);

private:
    mutable QMutex m_mutex;
    QFile m_file;
};
