#pragma once

#include "DbConnection.h"
#include "ImportSource.h"

// Any database unixODBC reaches: a data source name, or a connection string
// naming a driver of odbcinst.ini. Opened through the console's own
// database session (DbConnection), so that a DSN string reaches unixODBC as
// written and failures read as the console's database failures do.
class OdbcImportSource final : public ImportSource
{
public:
    struct DataSource
    {
        QString name;
        QString description; // the driver, as unixODBC describes it
        bool system = false; // from the system odbc.ini rather than the user's
    };

    static std::unique_ptr<OdbcImportSource> open(
        const ImportSourceAddress &address, QString *error);

    // The data sources unixODBC knows, the user's first, then the system's.
    static QList<DataSource> dataSources();

    QStringList tables() const override;
    std::unique_ptr<ImportCursor> cursor(const QString &table, QString *error) override;

private:
    OdbcImportSource(ImportSourceAddress address, DbConnection connection);

    DbConnection m_connection;
};
