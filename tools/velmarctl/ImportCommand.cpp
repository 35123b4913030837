#include "ImportCommand.h"

#include "ConsoleOutput.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "ImportSource.h"
#include "MemberImporter.h"
#include "ServerDataSaver.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace { } // namespace

void ImportCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        QCommandLineOption(u"table"_s,
            u"import: the table to read (default: the source's only or first table)."_s,
            u"table"_s),
        QCommandLineOption(u"map"_s,
            u"import: fill FIELD (用户ID, 姓名, ... or userid, name, ...) from COLUMN (a name, "
            "or a number from 1; empty: none); repeat for each field. Fields not named are "
            "guessed from the column names."_s,
            u"FIELD=COLUMN"_s),
        QCommandLineOption(u"skip-refused"_s,
            u"import: go on past refused rows (each is listed) instead of stopping at the "
            "first."_s),
        QCommandLineOption(u"bind-dn"_s,
            u"import: the DN to bind to the LDAP server as (password from "
            "VELMAR_LDAP_PASSWORD); anonymous without it."_s,
            u"dn"_s),
    });
}

bool ImportCommand::readOptions(const QCommandLineParser &parser, const QStringList &positional,
    Options *options, QString *message)
{
    if (positional.size() != 2) {
        *message = u"expected import SOURCE (csv:FILE, sqlite:FILE, odbc:CONNECTION-STRING or "
                   "ldap://...)"_s;
        return false;
    }
    options->source = positional.at(1);
    QString why;
    if (!ImportSourceAddress::parse(options->source, &why)) {
        *message = why;
        return false;
    }
    options->table = parser.value(u"table"_s);
    options->maps = parser.values(u"map"_s);
    for (const QString &map : std::as_const(options->maps)) {
        const qsizetype equals = map.indexOf(u'=');
        if (equals <= 0 || !ImportFields::fieldNamed(map.left(equals))) {
            *message = u"--map needs FIELD=COLUMN with FIELD one of %1 or %2, not %3"_s.arg(
                ImportFields::names().join(u' '), ImportFields::englishNames().join(u' '), map);
            return false;
        }
    }
    options->skipRefused = parser.isSet(u"skip-refused"_s);
    options->bindDn = parser.value(u"bind-dn"_s);
    return true;
}

bool ImportCommand::mappingFrom(const QStringList &maps, const QStringList &columns,
    ImportFields::Mapping *mapping, QString *error)
{
    // The guess stands for every field no --map names; a column a --map
    // takes is no longer guessed for another field.
    *mapping = ImportFields::guessMapping(columns);
    for (const QString &map : maps) {
        const qsizetype equals = map.indexOf(u'=');
        const std::optional<ImportFields::Field> field
            = equals > 0 ? ImportFields::fieldNamed(map.left(equals)) : std::nullopt;
        if (!field) {
            *error = u"unknown field in --map %1"_s.arg(map);
            return false;
        }
        const QString columnName = map.mid(equals + 1);
        if (columnName.isEmpty()) {
            (*mapping)[*field] = -1; // FIELD= leaves the field empty
            continue;
        }
        const int column = ImportFields::columnNamed(columns, columnName);
        if (column < 0) {
            *error = u"--map %1: the table has no column %2 (its columns: %3)"_s.arg(
                map, columnName, columns.join(u", "_s));
            return false;
        }
        for (int &other : *mapping) {
            if (other == column)
                other = -1;
        }
        (*mapping)[*field] = column;
    }
    return true;
}

bool ImportCommand::prepare(const Options &options, Prepared *prepared, QString *error)
{
    std::optional<ImportSourceAddress> address = ImportSourceAddress::parse(options.source, error);
    if (!address)
        return false;
    if (address->kind == ImportSourceAddress::Kind::Ldap) {
        if (!options.bindDn.isEmpty())
            address->bindDn = options.bindDn;
        address->password = qEnvironmentVariable("VELMAR_LDAP_PASSWORD");
    }
    const std::unique_ptr<ImportSource> source = ImportSource::open(*address, error);
    if (!source)
        return false;
    QString table = options.table;
    if (table.isEmpty()) {
        const QStringList tables = source->tables();
        if (tables.isEmpty()) {
            *error = u"%1 holds no table"_s.arg(options.source);
            return false;
        }
        table = tables.constFirst();
    }
    prepared->table = source->read(table, -1, error);
    if (!error->isEmpty())
        return false;
    if (!mappingFrom(options.maps, prepared->table.columns, &prepared->mapping, error))
        return false;
    if (prepared->mapping[ImportFields::UserId] < 0) {
        *error = u"no column gives the user ID (用户ID); name one with --map userid=COLUMN "
                 "(columns: %1)"_s.arg(prepared->table.columns.join(u", "_s));
        return false;
    }
    return true;
}

int ImportCommand::apply(const Options &options, const Prepared &prepared,
    CVelmarManagerDoc &document, FILE *out, FILE *err, bool *stopped)
{
    MemberImporter importer(document);
    const MemberImporter::Result result
        = importer.apply(prepared.table, prepared.mapping, options.skipRefused);
    // Refused rows first when the import stopped: the members listed after
    // are those before the refused row.
    for (const MemberImporter::RefusedRow &refused : result.refused)
        printTo(err, u"row %1: %2\n"_s.arg(refused.row).arg(refused.refusal.text));
    const Directory &directory = *document.directory();
    for (const qint32 id : result.ids) {
        const UserInfo *member = directory.findMember(id);
        if (!member)
            continue;
        printTo(out, u"added %1 (id %2)\n"_s.arg(member->loginName, QString::number(id)));
        // Said before the save refuses them, and by a dry run, which does
        // not save.
        if (member->password.isEmpty())
            printTo(err,
                u"%1 has no password: a save refuses members without one (%2)\n"_s.arg(
                    member->loginName, ServerDataSaver::memberErrorText()));
    }
    *stopped = !options.skipRefused && result.stopped();
    return result.added;
}
