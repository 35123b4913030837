#pragma once

#include "ImportSource.h"

#include <memory>

// An LDAP directory (OpenLDAP's libldap): connected and bound when opened
// (simple bind; anonymous without a bind DN), its one table the search of
// the address. The search is read in pages of 500 entries where the server
// offers paging (RFC 2696), so that a server's size limit per request does
// not cut the list. Each attribute is a column, named as the first entry
// carrying it names it, after a first column "dn"; the URL's attribute list,
// when given, fixes the columns and their order. A multi-valued attribute
// gives its first value: the value the directory lists first is the one a
// single-valued field (a mail address, a phone number) wants, and a joined
// list would not pass as a user ID or a phone number either.
class LdapImportSource final : public ImportSource
{
public:
    ~LdapImportSource() override;

    static std::unique_ptr<LdapImportSource> open(
        const ImportSourceAddress &address, QString *error);

    // One name for the search: "BASE FILTER".
    QStringList tables() const override;
    std::unique_ptr<ImportCursor> cursor(const QString &table, QString *error) override;

private:
    struct Connection;
    LdapImportSource(ImportSourceAddress address, std::unique_ptr<Connection> connection);

    std::unique_ptr<Connection> m_connection;
};
