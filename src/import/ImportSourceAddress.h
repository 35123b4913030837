#pragma once

#include <optional>
#include <QString>
#include <QStringList>

// Where an import reads from. The command-line form names the kind first:
//
//   csv:FILE                 a CSV or TSV file (header row first)
//   sqlite:FILE              an SQLite database file, opened read-only
//   odbc:CONNECTION-STRING   a DSN name or any string unixODBC accepts
//                            ("DSN=hr", "DRIVER=SQLite3;Database=/x.db")
//   ldap://HOST[:PORT]/BASE?ATTRS?SCOPE?FILTER   (also ldaps://, ldapi://)
//
// An LDAP URL (RFC 4516) may carry the search base, the attributes to read,
// the scope and the filter; the "bindname" extension names the bind DN. The
// bind DN and password may also be set directly (velmarctl's --bind-dn and
// VELMAR_LDAP_PASSWORD); no DN binds anonymously.
struct ImportSourceAddress
{
    enum class Kind { Csv, Sqlite, Odbc, Ldap };
    enum class Scope { Base, OneLevel, Subtree };

    Kind kind = Kind::Csv;
    // The file, the ODBC connection string, or the LDAP server's URI
    // (scheme, host and port: "ldap://127.0.0.1:3890", "ldapi://%2Frun%2Fslapd").
    QString location;

    // LDAP only.
    QString bindDn;
    QString password;
    QString searchBase;
    // Empty: every entry, "(objectClass=*)".
    QString filter;
    // Empty: every user attribute each entry has.
    QStringList attributes;
    // A URL without a scope searches the whole subtree below the base: an
    // import wants the entries there, not the base entry itself (RFC 4516
    // would take the base alone).
    Scope scope = Scope::Subtree;

    static ImportSourceAddress csv(const QString &file);
    static ImportSourceAddress sqlite(const QString &file);
    static ImportSourceAddress odbc(const QString &connectionString);

    // The command-line form above; nothing (and why in error) when the text
    // is none of them.
    static std::optional<ImportSourceAddress> parse(const QString &text, QString *error = nullptr);
    // The command-line form again, without the password.
    QString toString() const;
    QString effectiveFilter() const;

    friend bool operator==(const ImportSourceAddress &, const ImportSourceAddress &) = default;
};
