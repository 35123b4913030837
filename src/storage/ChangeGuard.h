#pragma once

#include "DatabaseFingerprint.h"
#include "SqlStatementText.h"

#include <QList>
#include <QString>

class DbConnection;

// Tells whether another program saved since the working copy was read. The
// save rewrites whole tables from memory, so without this check the last
// writer would silently erase everything a colleague saved in between.
// Reading the fingerprint costs one aggregate query per rewritten table,
// computed by the database (row count, sums of the numbers and of the text
// lengths); a save by the console or velmarctl also moves the version.
class ChangeGuard final
{
public:
    struct TableChange
    {
        QString table;
        qint64 rowsThen = 0;
        qint64 rowsNow = 0;
    };
    struct Report
    {
        QString versionThen;
        QString versionNow;
        QList<TableChange> tables; // the tables whose rows differ
        bool changed() const { return versionThen != versionNow || !tables.isEmpty(); }
    };

    // The tables the save rewrites, as the statements name them.
    static QStringList tableNames();
    // The aggregate query of one table for a dialect.
    static QString checksumQuery(const QString &table, SqlDialect dialect);

    // Raises DbException.
    static DatabaseFingerprint read(DbConnection &connection, const QString &profilePath);
    static Report compare(const DatabaseFingerprint &then, const DatabaseFingerprint &now);

    // One line per change: the version, then each table with its row counts.
    static QString describe(const Report &report);
    // The console's question: reload (Yes), save anyway (No) or cancel.
    static QString questionText(const Report &report);
};
