#pragma once

#include "ImportFields.h"
#include "ImportTable.h"

#include <cstdio>
#include <QString>
#include <QStringList>

class CVelmarManagerDoc;
class QCommandLineParser;

// velmarctl import SOURCE [--table T] [--map FIELD=COLUMN]... [--skip-refused]
//                         [--bind-dn DN] [--dry-run]
// Adds the rows of an outside table as members, as the console's import
// does, then saves as velmarctl edit saves. The source is read whole before
// the server data is loaded: an unreadable source costs no load.
class ImportCommand final
{
public:
    struct Options
    {
        QString source; // csv:FILE, sqlite:FILE, odbc:CONNECTION-STRING or ldap://...
        QString table; // empty: the source's only (or first) table
        QStringList maps; // FIELD=COLUMN
        bool skipRefused = false;
        QString bindDn; // LDAP; the password comes from VELMAR_LDAP_PASSWORD
    };

    // The rows and where each field comes from.
    struct Prepared
    {
        ImportTable table;
        ImportFields::Mapping mapping = ImportFields::emptyMapping();
    };

    static void addOptions(QCommandLineParser &parser);
    // positional: "import" SOURCE. False with message on a usage error.
    static bool readOptions(const QCommandLineParser &parser, const QStringList &positional,
        Options *options, QString *message);

    // Opens the source, reads the table and builds the mapping. False with
    // error.
    static bool prepare(const Options &options, Prepared *prepared, QString *error);
    // The mapping for these columns: each --map pair's field from its column
    // (none for FIELD=), every other field as guessed from the names. False
    // with error for an unknown field or column.
    static bool mappingFrom(const QStringList &maps, const QStringList &columns,
        ImportFields::Mapping *mapping, QString *error);

    // Adds the rows: one line per member added on out, "row N: " and the
    // refusal on err for a refused row. Returns how many were added;
    // stopped tells whether a refused row ended the import (never with
    // skipRefused).
    static int apply(const Options &options, const Prepared &prepared, CVelmarManagerDoc &document,
        FILE *out, FILE *err, bool *stopped);
};
