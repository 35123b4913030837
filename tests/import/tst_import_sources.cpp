#include "CsvImportSource.h"
#include "ImportFields.h"
#include "ImportSource.h"
#include "LdapImportSource.h"
#include "OdbcImportSource.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringDecoder>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(bytes);
    return file.fileName();
}

ImportTable readWhole(const ImportSourceAddress &address, const QString &table = {})
{
    QString error;
    const std::unique_ptr<ImportSource> source = ImportSource::open(address, &error);
    if (!source) {
        qWarning() << error;
        return {};
    }
    const ImportTable read
        = source->read(table.isEmpty() ? source->tables().value(0) : table, -1, &error);
    if (!error.isEmpty())
        qWarning() << error;
    return read;
}

const QStringList StaffColumns { u"用户ID"_s, u"姓名"_s, u"邮箱"_s };
const QList<QStringList> StaffRows {
    { u"alice"_s, u"王丽"_s, u"a@x.cn"_s },
    { u"bob"_s, u"Bob, Jr."_s, u""_s },
    { u"carl"_s, u"Carl \"C\"\nline 2"_s, u"c@x.cn"_s },
};

// An SQLite file with the staff table, written by Qt's own driver.
bool writeStaffDatabase(const QString &path)
{
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"staff"_s);
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        ok = ok
            && query.exec(
                u"CREATE TABLE \"员工 名单\" (\"用户ID\" TEXT, \"姓名\" TEXT, \"邮箱\" TEXT)"_s);
        ok = ok && query.exec(u"CREATE TABLE other (x INTEGER)"_s);
        for (const QStringList &row : StaffRows) {
            ok = ok && query.prepare(u"INSERT INTO \"员工 名单\" VALUES (?, ?, ?)"_s);
            for (const QString &value : row)
                query.addBindValue(value.isEmpty() ? QVariant() : QVariant(value));
            ok = ok && query.exec();
        }
    }
    QSqlDatabase::removeDatabase(u"staff"_s);
    return ok;
}

// A private OpenLDAP server: slapd with an mdb database in a temporary
// folder, on a Unix socket and a free TCP port of 127.0.0.1.
class Slapd
{
public:
    explicit Slapd(const QByteArray &ldif)
    {
        const QString conf = u"include /etc/ldap/schema/core.schema\n"
                             "include /etc/ldap/schema/cosine.schema\n"
                             "include /etc/ldap/schema/inetorgperson.schema\n"
                             "modulepath /usr/lib/ldap\n"
                             "moduleload back_mdb\n"
                             "pidfile %1/slapd.pid\n"
                             // 500 entries per request, any number in pages,
                             // as directories that limit requests are set up.
                             "sizelimit size.soft=500 size.hard=500 size.prtotal=unlimited\n"
                             "database mdb\n"
                             "suffix \"dc=example,dc=cn\"\n"
                             "rootdn \"cn=admin,dc=example,dc=cn\"\n"
                             "rootpw secret\n"
                             "directory %1/db\n"
                             "maxsize 10485760\n"_s.arg(m_dir.path());
        QDir(m_dir.path()).mkdir(u"db"_s);
        const QString confPath = writeFile(m_dir, u"slapd.conf"_s, conf.toUtf8());
        const QString ldifPath = writeFile(m_dir, u"data.ldif"_s, ldif);
        QProcess add;
        add.start(u"/usr/sbin/slapadd"_s, { u"-f"_s, confPath, u"-l"_s, ldifPath });
        if (!add.waitForFinished(60000) || add.exitCode() != 0) {
            m_error = u"slapadd: "_s + QString::fromUtf8(add.readAllStandardError());
            return;
        }
        {
            QTcpServer probe;
            probe.listen(QHostAddress::LocalHost, 0);
            m_port = probe.serverPort();
        }
        m_socketUrl = u"ldapi://"_s
            + QString::fromLatin1(QUrl::toPercentEncoding(m_dir.filePath(u"ldapi"_s)));
        m_slapd.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // -d keeps slapd in the foreground, where the test can stop it.
        m_slapd.start(u"/usr/sbin/slapd"_s,
            { u"-f"_s, confPath, u"-d"_s, u"0"_s, u"-h"_s,
                u"%1 ldap://127.0.0.1:%2/"_s.arg(m_socketUrl, QString::number(m_port)) });
        for (int i = 0; i < 100; ++i) {
            QTcpSocket socket;
            socket.connectToHost(QHostAddress::LocalHost, m_port);
            if (socket.waitForConnected(100))
                return;
            if (m_slapd.state() == QProcess::NotRunning)
                break;
            QTest::qWait(100);
        }
        m_error = u"slapd did not start"_s;
    }
    ~Slapd()
    {
        m_slapd.terminate();
        if (!m_slapd.waitForFinished(10000))
            m_slapd.kill();
        m_slapd.waitForFinished();
    }

    QString error() const { return m_error; }
    QString socketUrl() const { return m_socketUrl; }
    QString tcpUrl() const { return u"ldap://127.0.0.1:%1"_s.arg(m_port); }

private:
    QTemporaryDir m_dir;
    QProcess m_slapd;
    quint16 m_port = 0;
    QString m_socketUrl;
    QString m_error;
};

QByteArray directoryLdif(int extraPeople)
{
    QByteArray ldif
        = "dn: dc=example,dc=cn\nobjectClass: dcObject\nobjectClass: organization\n"
          "o: Example\ndc: example\n\n"
          "dn: ou=people,dc=example,dc=cn\nobjectClass: organizationalUnit\nou: people\n\n"
          "dn: uid=alice,ou=people,dc=example,dc=cn\nobjectClass: inetOrgPerson\n"
          "uid: alice\ncn:: 546L5Li9\nsn: Wang\nmail: alice@example.cn\n"
          "mail: alice2@example.cn\ntelephoneNumber: 010-1234\nuserPassword: pa\n\n"
          "dn: uid=bob,ou=people,dc=example,dc=cn\nobjectClass: inetOrgPerson\n"
          "uid: bob\ncn: Bob\nsn: B\n\n";
    for (int i = 0; i < extraPeople; ++i) {
        ldif
            += QStringLiteral("dn: uid=p%1,ou=people,dc=example,dc=cn\nobjectClass: inetOrgPerson\n"
                              "uid: p%1\ncn: Person %1\nsn: P\n\n")
                   .arg(i, 4, 10, QLatin1Char('0'))
                   .toUtf8();
    }
    return ldif;
}

} // namespace

class TestImportSources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void csvEncodingsAndQuoting_data();
    void csvEncodingsAndQuoting();
    void csvChunksAndErrors();
    void databases();
    void ldap();
    void addresses();
    void fields();
};

void TestImportSources::csvEncodingsAndQuoting_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<CodePage::FileEncoding>("encoding");
    QTest::addColumn<QChar>("separator");

    // The staff rows with a separator, a doubled quote and a line break
    // inside quoted fields, a missing last field and a blank line.
    const QString crlf = u"用户ID,姓名,邮箱\r\nalice,王丽,a@x.cn\r\n"
                         "bob,\"Bob, Jr.\"\r\n\r\n"
                         "carl,\"Carl \"\"C\"\"\nline 2\",c@x.cn\r\n"_s;
    const QString lf = QString(crlf).replace(u"\r\n"_s, u"\n"_s);
    const QString tabs = u"用户ID\t姓名\t邮箱\nalice\t王丽\ta@x.cn\nbob\tBob, Jr.\t\n"
                         "carl\t\"Carl \"\"C\"\"\nline 2\"\tc@x.cn"_s;
    // Every encoding the server's files come in is the code page's
    // (tst_profilefile); here one with and two without a byte-order mark.
    QStringEncoder gbk("GBK");
    QStringEncoder utf16be(QStringConverter::Utf16BE);
    QTest::newRow("utf-8 crlf") << crlf.toUtf8() << CodePage::FileEncoding::Utf8 << QChar(u',');
    QTest::newRow("gbk lf") << QByteArray(gbk.encode(lf)) << CodePage::FileEncoding::CodePage
                            << QChar(u',');
    QTest::newRow("utf-16be bom tsv") << "\xFE\xFF" + QByteArray(utf16be.encode(tabs))
                                      << CodePage::FileEncoding::Utf16BeBom << QChar(u'\t');
}

void TestImportSources::csvEncodingsAndQuoting()
{
    QFETCH(QByteArray, bytes);
    QFETCH(CodePage::FileEncoding, encoding);
    QFETCH(QChar, separator);
    QTemporaryDir dir;
    const QString path = writeFile(dir, u"staff.csv"_s, bytes);
    QString error;
    const auto source
        = CsvImportSource::open(ImportSourceAddress::csv(path), CodePage("GBK"), &error);
    QVERIFY2(source, qPrintable(error));
    QCOMPARE(source->encoding(), encoding);
    QCOMPARE(source->separator(), separator);
    QCOMPARE(source->tables(), QStringList { u"staff.csv"_s });
    const ImportTable table = source->read(u"staff.csv"_s, -1, &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QCOMPARE(table.columns, StaffColumns);
    QCOMPARE(table.rows, StaffRows);
}

void TestImportSources::csvChunksAndErrors()
{
    QTemporaryDir dir;
    QByteArray bytes = "uid,cn\n";
    for (int i = 0; i < 25; ++i)
        bytes += "u" + QByteArray::number(i) + ",n" + QByteArray::number(i) + ",extra\n";
    const QString path = writeFile(dir, u"big.csv"_s, bytes);
    QString error;
    const auto source = ImportSource::open(ImportSourceAddress::csv(path), &error);
    QVERIFY2(source, qPrintable(error));
    // Chunks of ten, the last one short; values past the header's columns go.
    const auto cursor = source->cursor(u"big.csv"_s, &error);
    QVERIFY(cursor);
    QList<QStringList> rows;
    for (const qsizetype expected : { 10, 20, 25, 25 }) {
        QVERIFY(cursor->fetch(&rows, 10));
        QCOMPARE(rows.size(), expected);
    }
    QVERIFY(cursor->atEnd());
    QCOMPARE(rows.last(), QStringList({ u"u24"_s, u"n24"_s }));
    QCOMPARE(source->read(u"big.csv"_s, 3).rows.size(), 3);

    QVERIFY(!source->cursor(u"other.csv"_s, &error));
    QVERIFY(error.contains(u"other.csv"_s));
    QVERIFY(!ImportSource::open(ImportSourceAddress::csv(dir.filePath(u"none.csv"_s)), &error));
    QVERIFY2(error.contains(u"none.csv"_s), qPrintable(error));
}

// The same rows from an SQLite file read directly and through the SQLite
// ODBC driver; the file stays as it was (no WAL switched on).
void TestImportSources::databases()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"staff.db"_s);
    QVERIFY(writeStaffDatabase(path));
    const QByteArray before = [&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();

    QString error;
    const auto sqlite = ImportSource::open(ImportSourceAddress::sqlite(path), &error);
    QVERIFY2(sqlite, qPrintable(error));
    QStringList tables = sqlite->tables();
    tables.sort();
    QCOMPARE(tables, QStringList({ u"other"_s, u"员工 名单"_s }));
    ImportTable table = sqlite->read(u"员工 名单"_s, -1, &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QCOMPARE(table.columns, StaffColumns);
    QCOMPARE(table.rows, StaffRows);
    QVERIFY(!sqlite->cursor(u"missing"_s, &error));
    QVERIFY2(error.contains(u"missing"_s), qPrintable(error));

    const ImportSourceAddress odbc
        = *ImportSourceAddress::parse(u"odbc:DRIVER=SQLite3;Database=%1;"_s.arg(path));
    const auto viaOdbc = ImportSource::open(odbc, &error);
    QVERIFY2(viaOdbc, qPrintable(error));
    QVERIFY(viaOdbc->tables().contains(u"员工 名单"_s));

    QVERIFY(!QFile::exists(path + u"-wal"_s));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);

    QVERIFY(!ImportSource::open(*ImportSourceAddress::parse(u"odbc:NoSuchDsn"_s), &error));
    QVERIFY2(error.contains(u"NoSuchDsn"_s), qPrintable(error));

    // A data source of the user's odbc.ini: listed by the driver manager,
    // and opened by its bare name.
    const QString odbcIni = writeFile(dir, u"odbc.ini"_s,
        u"[staffdsn]\nDescription=staff\nDriver=SQLite3\nDatabase=%1\n"_s.arg(path).toUtf8());
    qputenv("ODBCINI", odbcIni.toLocal8Bit());
    const QList<OdbcImportSource::DataSource> sources = OdbcImportSource::dataSources();
    const auto listed = std::find_if(sources.cbegin(), sources.cend(),
        [](const OdbcImportSource::DataSource &source) { return source.name == u"staffdsn"_s; });
    QVERIFY(listed != sources.cend());
    QCOMPARE(listed->description, u"SQLite3"_s);
    QVERIFY(!listed->system);
    const auto byName = ImportSource::open(*ImportSourceAddress::parse(u"odbc:staffdsn"_s), &error);
    QVERIFY2(byName, qPrintable(error));
    const ImportTable viaDsn = byName->read(u"员工 名单"_s);
    QCOMPARE(viaDsn.columns, StaffColumns);
    QCOMPARE(viaDsn.rows, StaffRows);
    qunsetenv("ODBCINI");
}

void TestImportSources::ldap()
{
    if (!QFile::exists(u"/usr/sbin/slapd"_s))
        QSKIP("slapd is not installed: run scripts/install-deps.sh");
    // More people than the server gives in one request: only a paged search
    // reads them all.
    Slapd server(directoryLdif(600));
    QVERIFY2(server.error().isEmpty(), qPrintable(server.error()));

    QString error;
    std::optional<ImportSourceAddress> address = ImportSourceAddress::parse(
        server.socketUrl() + u"/ou=people,dc=example,dc=cn??one?(objectClass=inetOrgPerson)"_s,
        &error);
    QVERIFY2(address, qPrintable(error));
    ImportTable table = readWhole(*address);
    QCOMPARE(table.rows.size(), 602);
    QCOMPARE(table.columns.first(), u"dn"_s);
    const int uid = int(table.columns.indexOf(u"uid"_s));
    const int cn = int(table.columns.indexOf(u"cn"_s));
    const int mail = int(table.columns.indexOf(u"mail"_s));
    QVERIFY(uid > 0 && cn > 0 && mail > 0);
    const auto alice = std::find_if(table.rows.cbegin(), table.rows.cend(),
        [uid](const QStringList &row) { return row.at(uid) == u"alice"_s; });
    QVERIFY(alice != table.rows.cend());
    QCOMPARE(alice->at(0), u"uid=alice,ou=people,dc=example,dc=cn"_s);
    QCOMPARE(alice->at(cn), u"王丽"_s);
    // The first of two values.
    QCOMPARE(alice->at(mail), u"alice@example.cn"_s);

    // Over TCP, bound as the administrator, with the URL's attributes as
    // the columns in their order.
    address = ImportSourceAddress::parse(
        server.tcpUrl() + u"/dc=example,dc=cn?uid,mail,userPassword?sub?(uid=alice)"_s);
    QVERIFY(address);
    address->bindDn = u"cn=admin,dc=example,dc=cn"_s;
    address->password = u"secret"_s;
    table = readWhole(*address);
    QCOMPARE(table.columns, QStringList({ u"dn"_s, u"uid"_s, u"mail"_s, u"userPassword"_s }));
    QCOMPARE(table.rows,
        QList<QStringList>({ { u"uid=alice,ou=people,dc=example,dc=cn"_s, u"alice"_s,
            u"alice@example.cn"_s, u"pa"_s } }));

    address->password = u"wrong"_s;
    QVERIFY(!ImportSource::open(*address, &error));
    QVERIFY2(
        error.contains(u"cn=admin,dc=example,dc=cn"_s) && error.contains(u"Invalid credentials"_s),
        qPrintable(error));
    address = ImportSourceAddress::parse(server.tcpUrl()
        + u"/dc=example,dc=cn??"
          u"?(uid="_s);
    QVERIFY(address);
    const auto source = ImportSource::open(*address, &error);
    QVERIFY2(source, qPrintable(error));
    QVERIFY(!source->cursor({}, &error));
    QVERIFY2(error.contains(u"(uid="_s), qPrintable(error));
}

void TestImportSources::addresses()
{
    QString error;
    QCOMPARE(ImportSourceAddress::parse(u"csv:/tmp/a b.csv"_s),
        ImportSourceAddress::csv(u"/tmp/a b.csv"_s));
    QCOMPARE(ImportSourceAddress::parse(u"sqlite:x.db"_s), ImportSourceAddress::sqlite(u"x.db"_s));
    QCOMPARE(ImportSourceAddress::parse(u"odbc:DSN=hr;UID=a"_s)->location, u"DSN=hr;UID=a"_s);
    for (const QString &bad : { u"csv:"_s, u"excel:x.xls"_s, u"/tmp/x.csv"_s,
             u"ldap://host/dc=x?cn?nowhere"_s, u"ldap://[::1"_s }) {
        error.clear();
        QVERIFY2(!ImportSourceAddress::parse(bad, &error), qPrintable(bad));
        QVERIFY(!error.isEmpty());
    }

    const std::optional<ImportSourceAddress> ldap = ImportSourceAddress::parse(
        u"ldap://dir.example.cn:3890/ou=%E4%BA%BA,dc=example?uid,cn??"
        u"(&(objectClass=person)(uid=a*))?bindname=cn%3Dreader%2Cdc%3Dexample"_s);
    QVERIFY(ldap);
    QCOMPARE(ldap->kind, ImportSourceAddress::Kind::Ldap);
    QCOMPARE(ldap->location, u"ldap://dir.example.cn:3890"_s);
    QCOMPARE(ldap->searchBase, u"ou=人,dc=example"_s);
    QCOMPARE(ldap->attributes, QStringList({ u"uid"_s, u"cn"_s }));
    QCOMPARE(ldap->scope, ImportSourceAddress::Scope::Subtree);
    QCOMPARE(ldap->filter, u"(&(objectClass=person)(uid=a*))"_s);
    QCOMPARE(ldap->bindDn, u"cn=reader,dc=example"_s);
    // The command-line form again reads back the same search.
    std::optional<ImportSourceAddress> again = ImportSourceAddress::parse(ldap->toString());
    QVERIFY(again);
    again->bindDn = ldap->bindDn;
    QCOMPARE(*again, *ldap);
    QCOMPARE(ImportSourceAddress::parse(u"ldapi://%2Frun%2Fslapd/dc=x?cn?base"_s)->scope,
        ImportSourceAddress::Scope::Base);
}

void TestImportSources::fields()
{
    QCOMPARE(ImportFields::fieldList(),
        u"用户ID,姓名,密码,邮箱,手机,电话,地址,性别,管理权限,办公电话,出生年月,自我介绍,是否阳历,信息公开,"_s);
    QCOMPARE(ImportFields::fieldNamed(u"OfficePhone"), ImportFields::OfficePhone);
    QCOMPARE(ImportFields::fieldNamed(u"是否阳历"), ImportFields::Solar);
    QCOMPARE(ImportFields::fieldNamed(u"nickname"), std::nullopt);

    // "name" wins 姓名 over the earlier "cn"; "E-Mail" and "user_id" are
    // their fields whatever their spelling; a column fills one field.
    const QStringList columns { u"cn"_s, u"E-Mail"_s, u"name"_s, u"User_ID"_s, u"sex"_s,
        u"Mobile"_s, u"telephoneNumber"_s, u"备注"_s };
    ImportFields::Mapping expected = ImportFields::emptyMapping();
    expected[ImportFields::UserId] = 3;
    expected[ImportFields::Name] = 2;
    expected[ImportFields::Email] = 1;
    expected[ImportFields::Mobile] = 5;
    expected[ImportFields::Phone] = 6;
    expected[ImportFields::Gender] = 4;
    QCOMPARE(ImportFields::guessMapping(columns), expected);
    QCOMPARE(ImportFields::columnNamed(columns, u"user id"_s), 3);
    QCOMPARE(ImportFields::columnNamed(columns, u"8"_s), 7);
    QCOMPARE(ImportFields::columnNamed(columns, u"9"_s), -1);
}

QTEST_GUILESS_MAIN(TestImportSources)
#include "tst_import_sources.moc"
