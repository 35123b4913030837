#include "ImportSourceAddress.h"

#include <ldap.h>
#include <memory>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

bool fail(QString *error, const QString &why)
{
    if (error)
        *error = why;
    return false;
}

QString fromLdap(const char *text)
{
    return text ? QString::fromUtf8(text) : QString();
}

// The URL's query parts after the DN (attributes, scope, filter,
// extensions), as written: libldap fills in a scope of its own when none is
// written, and the import's default differs.
QStringList urlQueryParts(const QString &url)
{
    const qsizetype question = url.indexOf(u'?');
    return question < 0 ? QStringList() : url.mid(question + 1).split(u'?');
}

bool parseLdap(const QString &text, ImportSourceAddress *address, QString *error)
{
    LDAPURLDesc *desc = nullptr;
    const QByteArray url = text.toUtf8();
    const int rc = ldap_url_parse(url.constData(), &desc);
    if (rc != LDAP_URL_SUCCESS || !desc)
        return fail(error,
            u"%1 不是 LDAP URL (RFC 4516: ldap://主机:端口/DN?属性?范围?过滤器)."_s.arg(text));
    const std::unique_ptr<LDAPURLDesc, void (*)(LDAPURLDesc *)> held(desc, ldap_free_urldesc);

    // The server part as written, so that an ldapi:// socket path keeps its
    // percent-encoding for ldap_initialize.
    const qsizetype schemeEnd = text.indexOf(u"://"_s);
    const qsizetype pathStart = text.indexOf(u'/', schemeEnd + 3);
    qsizetype serverEnd = pathStart;
    const qsizetype question = text.indexOf(u'?', schemeEnd + 3);
    if (question >= 0 && (serverEnd < 0 || question < serverEnd))
        serverEnd = question;
    address->kind = ImportSourceAddress::Kind::Ldap;
    address->location = serverEnd < 0 ? text : text.left(serverEnd);
    address->searchBase = fromLdap(desc->lud_dn);
    address->attributes.clear();
    for (char **attr = desc->lud_attrs; attr && *attr; ++attr)
        address->attributes.append(QString::fromUtf8(*attr));
    address->filter = fromLdap(desc->lud_filter);

    const QStringList parts = urlQueryParts(text);
    const QString scope = parts.value(1).toLower();
    if (scope.isEmpty() || scope == u"sub"_s)
        address->scope = ImportSourceAddress::Scope::Subtree;
    else if (scope == u"one"_s)
        address->scope = ImportSourceAddress::Scope::OneLevel;
    else if (scope == u"base"_s)
        address->scope = ImportSourceAddress::Scope::Base;
    else
        return fail(error, u"LDAP URL 的范围只能是 base, one 或 sub, 不能是 %1."_s.arg(scope));

    for (char **ext = desc->lud_exts; ext && *ext; ++ext) {
        QString extension = QString::fromUtf8(*ext);
        if (extension.startsWith(u'!'))
            extension.remove(0, 1);
        if (extension.startsWith(u"bindname="_s, Qt::CaseInsensitive))
            address->bindDn = QUrl::fromPercentEncoding(extension.mid(9).toUtf8());
    }
    return true;
}

} // namespace

ImportSourceAddress ImportSourceAddress::csv(const QString &file)
{
    ImportSourceAddress address;
    address.kind = Kind::Csv;
    address.location = file;
    return address;
}

ImportSourceAddress ImportSourceAddress::sqlite(const QString &file)
{
    ImportSourceAddress address;
    address.kind = Kind::Sqlite;
    address.location = file;
    return address;
}

ImportSourceAddress ImportSourceAddress::odbc(const QString &connectionString)
{
    ImportSourceAddress address;
    address.kind = Kind::Odbc;
    address.location = connectionString;
    return address;
}

std::optional<ImportSourceAddress> ImportSourceAddress::parse(const QString &text, QString *error)
{
    const auto withRest = [&](QStringView prefix, Kind kind) -> std::optional<ImportSourceAddress> {
        const QString rest = text.mid(prefix.size());
        if (rest.isEmpty()) {
            fail(error,
                u"%1 后面应写%2."_s.arg(
                    prefix, kind == Kind::Odbc ? u"连接字符串"_s : u"文件名"_s));
            return std::nullopt;
        }
        ImportSourceAddress address;
        address.kind = kind;
        address.location = rest;
        return address;
    };
    if (text.startsWith(u"csv:"_s, Qt::CaseInsensitive))
        return withRest(u"csv:", Kind::Csv);
    if (text.startsWith(u"sqlite:"_s, Qt::CaseInsensitive))
        return withRest(u"sqlite:", Kind::Sqlite);
    if (text.startsWith(u"odbc:"_s, Qt::CaseInsensitive))
        return withRest(u"odbc:", Kind::Odbc);
    if (text.startsWith(u"ldap://"_s, Qt::CaseInsensitive)
        || text.startsWith(u"ldaps://"_s, Qt::CaseInsensitive)
        || text.startsWith(u"ldapi://"_s, Qt::CaseInsensitive)) {
        ImportSourceAddress address;
        if (!parseLdap(text, &address, error))
            return std::nullopt;
        return address;
    }
    fail(error,
        u"无法识别的数据源 %1: 应为 csv:文件, sqlite:文件, odbc:连接字符串 或 "
        "ldap:// URL."_s.arg(text));
    return std::nullopt;
}

QString ImportSourceAddress::effectiveFilter() const
{
    return filter.isEmpty() ? u"(objectClass=*)"_s : filter;
}

QString ImportSourceAddress::toString() const
{
    switch (kind) {
    case Kind::Csv:
        return u"csv:"_s + location;
    case Kind::Sqlite:
        return u"sqlite:"_s + location;
    case Kind::Odbc:
        return u"odbc:"_s + location;
    case Kind::Ldap:
        break;
    }
    static const char *const scopes[] = { "base", "one", "sub" };
    return u"%1/%2?%3?%4?%5"_s.arg(location,
        QString::fromUtf8(QUrl::toPercentEncoding(searchBase, "=,")), attributes.join(u','),
        QString::fromLatin1(scopes[int(scope)]),
        QString::fromUtf8(QUrl::toPercentEncoding(filter, "()=*&|!")));
}
