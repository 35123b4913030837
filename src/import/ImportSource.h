#pragma once

#include "ImportCursor.h"
#include "ImportSourceAddress.h"
#include "ImportTable.h"

#include <memory>
#include <QString>
#include <QStringList>

// An opened outside data source: CsvImportSource, SqliteImportSource,
// OdbcImportSource or LdapImportSource. Errors are texts for the
// administrator: which file, server or table, and what the system said.
// A source and its cursors belong to the thread that opened it (a database
// connection does); the ImportTable they give may go to any thread.
//
//   QString error;
//   auto source = ImportSource::open(*ImportSourceAddress::parse(u"csv:/tmp/staff.csv"_s), &error);
//   ImportTable table = source->read(source->tables().value(0), -1, &error);
//   ImportFields::Mapping mapping = ImportFields::guessMapping(table.columns);
class ImportSource
{
public:
    virtual ~ImportSource();

    // Opens the source the address names (the file read, the database connected,
    // the directory bound); nothing and the reason in error when it cannot.
    static std::unique_ptr<ImportSource> open(const ImportSourceAddress &address, QString *error);

    const ImportSourceAddress &address() const { return m_address; }
    // What can be imported: a CSV source lists its file, a database its
    // tables and views, a directory its one search.
    virtual QStringList tables() const = 0;
    // Reads a table from its first row; nothing and why in error when the
    // table cannot be read.
    virtual std::unique_ptr<ImportCursor> cursor(const QString &table, QString *error) = 0;

    // The first maxRows rows of a table (all when -1). On a failure part-way
    // the rows read so far are returned and error says why; error is
    // cleared on success.
    ImportTable read(const QString &table, qsizetype maxRows = -1, QString *error = nullptr);

protected:
    explicit ImportSource(ImportSourceAddress address);

private:
    ImportSourceAddress m_address;
};
