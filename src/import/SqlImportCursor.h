#pragma once

#include "DbConnection.h"
#include "ImportCursor.h"
#include "Recordset.h"

// The rows of one table of a database, read forward as SELECT * gives them;
// every value as text (NULL as empty).
class SqlImportCursor final : public ImportCursor
{
public:
    // Nothing and why in error when the statement fails.
    static std::unique_ptr<SqlImportCursor> open(
        DbConnection connection, const QString &table, QString *error);

    QStringList columns() const override { return m_columns; }
    bool fetch(QList<QStringList> *rows, qsizetype maxRows = -1) override;
    bool atEnd() const override;
    QString errorString() const override { return m_error; }

private:
    SqlImportCursor(DbConnection connection, Recordset rows);

    DbConnection m_connection;
    Recordset m_rows;
    QStringList m_columns;
    QString m_error;
    bool m_failed = false;
};
