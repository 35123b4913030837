#include "ImportSource.h"

#include "CsvImportSource.h"
#include "LdapImportSource.h"
#include "OdbcImportSource.h"
#include "SqliteImportSource.h"

ImportSource::ImportSource(ImportSourceAddress address)
    : m_address(std::move(address))
{ }

ImportSource::~ImportSource() = default;

std::unique_ptr<ImportSource> ImportSource::open(const ImportSourceAddress &address, QString *error)
{
    switch (address.kind) {
    case ImportSourceAddress::Kind::Csv:
        return CsvImportSource::open(address, CodePage::system(), error);
    case ImportSourceAddress::Kind::Sqlite:
        return SqliteImportSource::open(address, error);
    case ImportSourceAddress::Kind::Odbc:
        return OdbcImportSource::open(address, error);
    case ImportSourceAddress::Kind::Ldap:
        return LdapImportSource::open(address, error);
    }
    return nullptr;
}

ImportTable ImportSource::read(const QString &table, qsizetype maxRows, QString *error)
{
    ImportTable result;
    QString why;
    const std::unique_ptr<ImportCursor> rows = cursor(table, &why);
    if (rows) {
        result.columns = rows->columns();
        if (!rows->fetch(&result.rows, maxRows))
            why = rows->errorString();
    }
    if (error)
        *error = why;
    return result;
}
