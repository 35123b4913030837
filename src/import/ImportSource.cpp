#include "ImportSource.h"

#include "CsvImportSource.h"
#include "LdapImportSource.h"
#include "OdbcImportSource.h"
#include "SqliteImportSource.h"

ImportSource::ImportSource(ImportSourceSpec spec)
    : m_spec(std::move(spec))
{ }

ImportSource::~ImportSource() = default;

std::unique_ptr<ImportSource> ImportSource::open(const ImportSourceSpec &spec, QString *error)
{
    switch (spec.kind) {
    case ImportSourceSpec::Kind::Csv:
        return CsvImportSource::open(spec, CodePage::system(), error);
    case ImportSourceSpec::Kind::Sqlite:
        return SqliteImportSource::open(spec, error);
    case ImportSourceSpec::Kind::Odbc:
        return OdbcImportSource::open(spec, error);
    case ImportSourceSpec::Kind::Ldap:
        return LdapImportSource::open(spec, error);
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
