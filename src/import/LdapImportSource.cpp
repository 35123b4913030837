#include "LdapImportSource.h"

#include <ldap.h>
#include <QHash>
#include <sys/time.h>

using namespace Qt::StringLiterals;

namespace {

// Entries per page of a paged search.
constexpr int PageSize = 500;
// A server that does not answer is given up after these.
constexpr int ConnectSeconds = 10;
constexpr int PageSeconds = 60;

QString ldapText(LDAP *ld, int rc)
{
    QString text = QString::fromUtf8(ldap_err2string(rc));
    char *diagnostic = nullptr;
    if (ld && ldap_get_option(ld, LDAP_OPT_DIAGNOSTIC_MESSAGE, &diagnostic) == LDAP_OPT_SUCCESS
        && diagnostic) {
        if (*diagnostic)
            text += u" (%1)"_s.arg(QString::fromUtf8(diagnostic));
        ldap_memfree(diagnostic);
    }
    return text;
}

int ldapScope(ImportSourceAddress::Scope scope)
{
    switch (scope) {
    case ImportSourceAddress::Scope::Base:
        return LDAP_SCOPE_BASE;
    case ImportSourceAddress::Scope::OneLevel:
        return LDAP_SCOPE_ONELEVEL;
    case ImportSourceAddress::Scope::Subtree:
        break;
    }
    return LDAP_SCOPE_SUBTREE;
}

// The search's entries, already read whole: the columns are the union of
// the attributes, known only once the last entry is in.
class LdapCursor final : public ImportCursor
{
public:
    LdapCursor(QStringList columns, QList<QStringList> rows)
        : m_columns(std::move(columns))
        , m_rows(std::move(rows))
    { }

    QStringList columns() const override { return m_columns; }
    bool fetch(QList<QStringList> *rows, qsizetype maxRows) override
    {
        const qsizetype end
            = maxRows < 0 ? m_rows.size() : std::min(m_rows.size(), m_next + maxRows);
        for (; m_next < end; ++m_next)
            rows->append(std::move(m_rows[m_next]));
        return true;
    }
    bool atEnd() const override { return m_next >= m_rows.size(); }
    QString errorString() const override { return {}; }

private:
    QStringList m_columns;
    QList<QStringList> m_rows;
    qsizetype m_next = 0;
};

} // namespace

struct LdapImportSource::Connection
{
    ~Connection()
    {
        if (ld)
            ldap_unbind_ext_s(ld, nullptr, nullptr);
    }
    LDAP *ld = nullptr;
};

LdapImportSource::LdapImportSource(
    ImportSourceAddress address, std::unique_ptr<Connection> connection)
    : ImportSource(std::move(address))
    , m_connection(std::move(connection))
{ }

LdapImportSource::~LdapImportSource() = default;

std::unique_ptr<LdapImportSource> LdapImportSource::open(
    const ImportSourceAddress &address, QString *error)
{
    const auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        return nullptr;
    };
    auto connection = std::make_unique<Connection>();
    const QByteArray uri = address.location.toUtf8();
    int rc = ldap_initialize(&connection->ld, uri.constData());
    if (rc != LDAP_SUCCESS)
        return fail(u"无法使用 LDAP 服务器 %1: %2"_s.arg(address.location, ldapText(nullptr, rc)));
    LDAP *ld = connection->ld;
    const int version = LDAP_VERSION3;
    ldap_set_option(ld, LDAP_OPT_PROTOCOL_VERSION, &version);
    ldap_set_option(ld, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
    const timeval connectTimeout { ConnectSeconds, 0 };
    ldap_set_option(ld, LDAP_OPT_NETWORK_TIMEOUT, &connectTimeout);
    // A server that takes the connection and never answers the bind would
    // otherwise hold the wizard's open for ever.
    const timeval answerTimeout { PageSeconds, 0 };
    ldap_set_option(ld, LDAP_OPT_TIMEOUT, &answerTimeout);

    // A simple bind; without a DN an anonymous one (RFC 4513 5.1.1).
    const QByteArray dn = address.bindDn.toUtf8();
    QByteArray password = address.bindDn.isEmpty() ? QByteArray() : address.password.toUtf8();
    berval credentials { ber_len_t(password.size()), password.data() };
    rc = ldap_sasl_bind_s(ld, address.bindDn.isEmpty() ? nullptr : dn.constData(), LDAP_SASL_SIMPLE,
        &credentials, nullptr, nullptr, nullptr);
    password.fill('\0');
    if (rc != LDAP_SUCCESS) {
        return fail(u"无法%2登录 LDAP 服务器 %1: %3"_s.arg(address.location,
            address.bindDn.isEmpty() ? u"匿名"_s : u"以 %1 "_s.arg(address.bindDn),
            ldapText(ld, rc)));
    }
    return std::unique_ptr<LdapImportSource>(new LdapImportSource(address, std::move(connection)));
}

QStringList LdapImportSource::tables() const
{
    return { (address().searchBase + u' ' + address().effectiveFilter()).trimmed() };
}

std::unique_ptr<ImportCursor> LdapImportSource::cursor(const QString &table, QString *error)
{
    const auto fail = [&](const QString &why) -> std::unique_ptr<ImportCursor> {
        if (error)
            *error = why;
        return nullptr;
    };
    if (!table.isEmpty() && table != tables().constFirst())
        return fail(u"LDAP 数据源只有一个数据表 (搜索 \"%1\"), 没有 \"%2\"."_s.arg(
            tables().constFirst(), table));

    LDAP *ld = m_connection->ld;
    const QByteArray base = address().searchBase.toUtf8();
    const QByteArray filter = address().effectiveFilter().toUtf8();
    QList<QByteArray> attributeNames;
    std::vector<char *> attributes;
    for (const QString &name : address().attributes)
        attributeNames.append(name.toUtf8());
    for (QByteArray &name : attributeNames)
        attributes.push_back(name.data());
    attributes.push_back(nullptr);

    // Columns: "dn", then each attribute under the name the first entry
    // carrying it gives (names compare without case), or the URL's list.
    QStringList columns { u"dn"_s };
    QHash<QString, int> columnOf; // lower-case name -> column
    for (const QString &name : address().attributes) {
        columnOf.insert(name.toLower(), int(columns.size()));
        columns.append(name);
    }
    const bool fixedColumns = !address().attributes.isEmpty();
    QList<QHash<int, QString>> entries;

    berval cookie { 0, nullptr };
    for (;;) {
        LDAPControl *pageControl = nullptr;
        int rc = ldap_create_page_control(
            ld, PageSize, cookie.bv_val ? &cookie : nullptr, 0, &pageControl);
        if (cookie.bv_val) {
            ber_memfree(cookie.bv_val);
            cookie = { 0, nullptr };
        }
        if (rc != LDAP_SUCCESS)
            return fail(u"无法在 %1 上搜索: %2"_s.arg(address().location, ldapText(ld, rc)));
        LDAPControl *controls[] = { pageControl, nullptr };
        timeval pageTimeout { PageSeconds, 0 };
        LDAPMessage *result = nullptr;
        rc = ldap_search_ext_s(ld, base.isEmpty() ? nullptr : base.constData(),
            ldapScope(address().scope), filter.constData(),
            fixedColumns ? attributes.data() : nullptr, 0, controls, nullptr, &pageTimeout,
            LDAP_NO_LIMIT, &result);
        ldap_control_free(pageControl);
        const std::unique_ptr<LDAPMessage, int (*)(LDAPMessage *)> held(result, ldap_msgfree);
        if (rc != LDAP_SUCCESS && rc != LDAP_SIZELIMIT_EXCEEDED) {
            return fail(u"在 %1 的 \"%2\" 下搜索 %3 失败: %4"_s.arg(address().location,
                address().searchBase, address().effectiveFilter(), ldapText(ld, rc)));
        }
        for (LDAPMessage *entry = ldap_first_entry(ld, result); entry;
             entry = ldap_next_entry(ld, entry)) {
            QHash<int, QString> values;
            if (char *entryDn = ldap_get_dn(ld, entry)) {
                values.insert(0, QString::fromUtf8(entryDn));
                ldap_memfree(entryDn);
            }
            BerElement *ber = nullptr;
            for (char *attribute = ldap_first_attribute(ld, entry, &ber); attribute;
                 attribute = ldap_next_attribute(ld, entry, ber)) {
                const QString name = QString::fromUtf8(attribute);
                berval **found = ldap_get_values_len(ld, entry, attribute);
                ldap_memfree(attribute);
                int column = columnOf.value(name.toLower(), -1);
                if (column < 0 && !fixedColumns) {
                    column = int(columns.size());
                    columnOf.insert(name.toLower(), column);
                    columns.append(name);
                }
                if (column >= 0 && found && found[0])
                    values.insert(
                        column, QString::fromUtf8(found[0]->bv_val, qsizetype(found[0]->bv_len)));
                if (found)
                    ldap_value_free_len(found);
            }
            if (ber)
                ber_free(ber, 0);
            entries.append(std::move(values));
        }
        if (rc == LDAP_SIZELIMIT_EXCEEDED) {
            return fail(u"LDAP 服务器 %1 在 %2 个条目后达到其数量上限, 停止了搜索. 请缩小搜索范围 "
                        "(DN 或过滤器), 或请服务器为此客户端提高上限."_s.arg(
                            address().location, QString::number(entries.size())));
        }

        // The next page's cookie; an empty one (or none: no paging) ends it.
        LDAPControl **returned = nullptr;
        int resultCode = LDAP_SUCCESS;
        rc = ldap_parse_result(ld, result, &resultCode, nullptr, nullptr, nullptr, &returned, 0);
        if (rc == LDAP_SUCCESS && resultCode != LDAP_SUCCESS) {
            ldap_controls_free(returned);
            return fail(u"在 %1 上的搜索失败: %2"_s.arg(
                address().location, QString::fromUtf8(ldap_err2string(resultCode))));
        }
        LDAPControl *response
            = returned ? ldap_control_find(LDAP_CONTROL_PAGEDRESULTS, returned, nullptr) : nullptr;
        ber_int_t estimate = 0;
        if (response)
            ldap_parse_pageresponse_control(ld, response, &estimate, &cookie);
        ldap_controls_free(returned);
        if (!cookie.bv_val || cookie.bv_len == 0) {
            if (cookie.bv_val)
                ber_memfree(cookie.bv_val);
            break;
        }
    }

    QList<QStringList> rows;
    rows.reserve(entries.size());
    for (const QHash<int, QString> &values : std::as_const(entries)) {
        QStringList row(columns.size());
        for (auto it = values.cbegin(); it != values.cend(); ++it)
            row[it.key()] = it.value();
        rows.append(std::move(row));
    }
    return std::make_unique<LdapCursor>(std::move(columns), std::move(rows));
}
