#pragma once

#include "DbConnection.h"
#include "ImportSource.h"

// An SQLite database file, opened read-only: its tables and views.
class SqliteImportSource final : public ImportSource
{
public:
    static std::unique_ptr<SqliteImportSource> open(
        const ImportSourceAddress &address, QString *error);

    QStringList tables() const override;
    std::unique_ptr<ImportCursor> cursor(const QString &table, QString *error) override;

private:
    SqliteImportSource(ImportSourceAddress address, DbConnection connection);

    DbConnection m_connection;
};
