#include "ConnectionString.h"
#include "DbConnection.h"
#include "DbError.h"
#include "DbSession.h"
#include "Recordset.h"
#include "ScriptedMessageService.h"
#include "SqlStatementText.h"
#include "SqlTemplate.h"
#include "SqlTrace.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QFile>
#include <QLibrary>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(SqlDialect)

using namespace Qt::StringLiterals;

// The session layer: connection strings, where they come from, how failures
// reach the administrator, and the error text format.
class TstDbSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // unixODBC reads the user's data sources once per process: the test's own
        // are in place before anything connects.
        QVERIFY(m_odbcFolder.isValid());
        QFile ini(m_odbcFolder.filePath(u"odbc.ini"_s));
        QVERIFY(ini.open(QIODevice::WriteOnly));
        ini.write("[velmar-test-dsn]\nDriver=SQLite3\nDatabase="
            + m_odbcFolder.filePath(u"dsn.db"_s).toUtf8() + "\n");
        ini.close();
        qputenv("ODBCINI", QFile::encodeName(ini.fileName()));

        // The SQLite ODBC driver loads and unloads libodbcinst to read a data
        // source; what that library caches would then count as leaked under
        // LeakSanitizer. Kept loaded, it stays reachable.
        QLibrary odbcinst(u"odbcinst"_s, 2);
        odbcinst.setLoadHints(QLibrary::PreventUnloadHint);
        odbcinst.load();
    }

    void errorText_data()
    {
        QTest::addColumn<quint32>("hresult");
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("systemMessage");

        QTest::newRow("unspecified")
            << 0x80004005u << u"QSQLITE"_s << u"no such table: Foo"_s << u"Unspecified error"_s;
        QTest::newRow("invalid pointer, no source")
            << 0x80004003u << QString() << QString() << u"Invalid pointer"_s;
        QTest::newRow("dispatch range start")
            << 0x80040200u << u"X"_s << u"d"_s << u"IDispatch error #0"_s;
        QTest::newRow("dispatch 0x80040e14")
            << 0x80040E14u << u"X"_s << u"d"_s << u"IDispatch error #3092"_s;
        QTest::newRow("dispatch range end")
            << 0x8004FFFFu << u"X"_s << u"d"_s << u"IDispatch error #65023"_s;
        QTest::newRow("below dispatch range")
            << 0x800401FFu << u"X"_s << u"d"_s << u"Unknown error 0x800401FF"_s;
        QTest::newRow("no leading zeros") << 0x1u << u"X"_s << u"d"_s << u"Unknown error 0x1"_s;
        QTest::newRow("placeholders in the text stay")
            << 0x80004005u << u"QODBC: PostgreSQL Unicode"_s << u"near \"%1\": syntax error %2"_s
            << u"Unspecified error"_s;
    }

    void errorText()
    {
        QFETCH(quint32, hresult);
        QFETCH(QString, source);
        QFETCH(QString, description);
        QFETCH(QString, systemMessage);

        // The code in lower-case hex without leading zeros.
        const QString formatted = u"(%1) %2\r\nSource - %3\r\nDesc - %4"_s.arg(
            QString::number(hresult, 16), systemMessage, source, description);
        const DbError error { hresult, source, description };
        QCOMPARE(error.systemMessage(), systemMessage);
        QCOMPARE(error.formatted(), formatted);
        QCOMPARE(QString::fromUtf8(DbException(error).what()), formatted);
    }

    void connectionTarget_data()
    {
        QTest::addColumn<QString>("connectionString");
        QTest::addColumn<QString>("qtDriver");
        QTest::addColumn<QString>("databaseName");
        QTest::addColumn<QString>("odbcDriver");

        QTest::newRow("access driver")
            << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=/srv/velmar/VelmarDB.mdb;"_s
            << u"QSQLITE"_s << u"/srv/velmar/VelmarDB.mdb"_s
            << u"Microsoft Access Driver (*.mdb)"_s;
        QTest::newRow("access driver, other spelling")
            << u" driver = {microsoft access driver (*.mdb)} ; dbq = /srv/v/VelmarDB.mdb "_s
            << u"QSQLITE"_s << u"/srv/v/VelmarDB.mdb"_s << u"microsoft access driver (*.mdb)"_s;
        QTest::newRow("access driver, accdb")
            << u"Driver={Microsoft Access Driver (*.mdb, *.accdb)};Dbq=/a/b.mdb"_s << u"QSQLITE"_s
            << u"/a/b.mdb"_s << u"Microsoft Access Driver (*.mdb, *.accdb)"_s;
        QTest::newRow("access driver, braced path")
            << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ={/a;b/数据.mdb};"_s << u"QSQLITE"_s
            << u"/a;b/数据.mdb"_s << u"Microsoft Access Driver (*.mdb)"_s;
        QTest::newRow("sqlite odbc") << u"DRIVER=SQLite3;Database=/a/b.db;"_s << u"QODBC"_s
                                     << u"DRIVER=SQLite3;Database=/a/b.db;"_s << u"SQLite3"_s;
        QTest::newRow("postgresql")
            << u"DRIVER={PostgreSQL Unicode};Server=127.0.0.1;Port=5432;Database=velmar;Uid=postgres;Pwd=;"_s
            << u"QODBC"_s
            << u"DRIVER={PostgreSQL Unicode};Server=127.0.0.1;Port=5432;Database=velmar;Uid=postgres;Pwd=;"_s
            << u"PostgreSQL Unicode"_s;
        QTest::newRow("data source name") << u"DSN=Velmar;UID=sa;PWD=x;"_s << u"QODBC"_s
                                          << u"DSN=Velmar;UID=sa;PWD=x;"_s << QString();
    }

    void connectionTarget()
    {
        QFETCH(QString, connectionString);
        QFETCH(QString, qtDriver);
        QFETCH(QString, databaseName);
        QFETCH(QString, odbcDriver);

        const ConnectionTarget target = connectionTargetFor(connectionString);
        QCOMPARE(target.qtDriver, qtDriver);
        QCOMPARE(target.databaseName, databaseName);
        QCOMPARE(target.odbcDriver, odbcDriver);
    }

    void secondStatement_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<SqlDialect>("dialect");
        QTest::addColumn<bool>("refused");

        const QString insert = u"INSERT INTO Rank (ORankID,RankName) VALUES  ('%1' ,'%2')"_s;
        for (const SqlDialect dialect : { SqlDialect::Sqlite, SqlDialect::PostgreSql,
                 SqlDialect::MySql, SqlDialect::SqlServer, SqlDialect::Unknown }) {
            const QByteArray d = QByteArray::number(int(dialect));
            QTest::newRow("plain " + d) << insert.arg(1).arg(u"经理"_s) << dialect << false;
            QTest::newRow("trailing semicolon " + d)
                << u"DELETE FROM CONTENTS where OCONTENTSID=5;"_s << dialect << false;
            QTest::newRow("trailing semicolon and blanks " + d)
                << u"DELETE FROM CONTENTS where OCONTENTSID=5; \r\n\t"_s << dialect << false;
            QTest::newRow("semicolon inside a value " + d)
                << insert.arg(1).arg(u"a;b; c"_s) << dialect << false;
            QTest::newRow("quote in a value smuggles a statement " + d)
                << insert.arg(1).arg(u"x'); DELETE FROM Member; --"_s) << dialect << true;
            QTest::newRow("second statement after a value " + d)
                << insert.arg(1).arg(u"x')  ;DROP TABLE Rank"_s) << dialect << true;
            QTest::newRow("doubled quote keeps the literal open " + d)
                << insert.arg(1).arg(u"it''s; fine"_s) << dialect << false;
            QTest::newRow("semicolon in a line comment " + d)
                << u"SELECT 1 -- a; b\n"_s << dialect << false;
            QTest::newRow("semicolon in a block comment " + d)
                << u"SELECT 1 /* a; b */"_s << dialect << false;
            QTest::newRow("a comment after the semicolon " + d)
                << u"SELECT 1; -- nothing"_s << dialect << true;
            // Where a database may read backslashes as escapes (PostgreSQL with
            // standard_conforming_strings off, MySQL), the quote after one does
            // not end the literal and the text holds a second statement.
            const bool backslashReading = dialect == SqlDialect::PostgreSql
                || dialect == SqlDialect::MySql || dialect == SqlDialect::Unknown;
            QTest::newRow("backslash before a quote " + d)
                << insert.arg(1).arg(u"a\\'b'; DELETE FROM Member; '"_s) << dialect
                << backslashReading;
        }
        QTest::newRow("postgres escape string holding a semicolon")
            << u"SELECT E'a\\'; b'"_s << SqlDialect::PostgreSql << false;
        QTest::newRow("postgres escape string ends later")
            << u"SELECT E'a\\'b' ; DELETE FROM member; '"_s << SqlDialect::PostgreSql << true;
        QTest::newRow("postgres dollar quoting")
            << u"SELECT $x$ a ' ; b $x$"_s << SqlDialect::PostgreSql << false;
        QTest::newRow("postgres nested comment")
            << u"SELECT 1 /* a /* b */ ; c */"_s << SqlDialect::PostgreSql << false;
        QTest::newRow("mysql hash comment") << u"SELECT 1 # a; b"_s << SqlDialect::MySql << false;
        QTest::newRow("sqlite bracketed name")
            << u"SELECT [a;b] FROM t"_s << SqlDialect::Sqlite << false;
        QTest::newRow("unknown database, any reading")
            << u"SELECT 1 # a; b"_s << SqlDialect::Unknown << true;
    }

    void secondStatement()
    {
        QFETCH(QString, sql);
        QFETCH(SqlDialect, dialect);
        QFETCH(bool, refused);
        QCOMPARE(SqlStatementText::hasSecondStatement(sql, dialect), refused);
    }

    void bracketRewrite_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<SqlDialect>("dialect");
        QTest::addColumn<QString>("rewritten");

        QTest::newRow("load") << u"SELECT COUNT(*) FROM [Group]"_s << SqlDialect::PostgreSql
                              << u"SELECT COUNT(*) FROM \"Group\""_s;
        QTest::newRow("insert with a bracket in a value")
            << u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  ('1' ,'[Group]' ,'-1','0','1', 0)"_s
            << SqlDialect::PostgreSql
            << u"INSERT INTO \"Group\" (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  ('1' ,'[Group]' ,'-1','0','1', 0)"_s;
        QTest::newRow("mysql") << u"DELETE FROM [Group] where IsGuestGroup=1"_s << SqlDialect::MySql
                               << u"DELETE FROM `Group` where IsGuestGroup=1"_s;
        QTest::newRow("subscript stays") << u"SELECT a[1] FROM [Group]"_s << SqlDialect::PostgreSql
                                         << u"SELECT a[1] FROM \"Group\""_s;
        QTest::newRow("comment stays")
            << u"SELECT 1 -- [Group]\n FROM [Group]"_s << SqlDialect::PostgreSql
            << u"SELECT 1 -- [Group]\n FROM \"Group\""_s;
        QTest::newRow("no brackets") << u"SELECT OMemberID FROM Member"_s << SqlDialect::PostgreSql
                                     << u"SELECT OMemberID FROM Member"_s;
    }

    void bracketRewrite()
    {
        QFETCH(QString, sql);
        QFETCH(SqlDialect, dialect);
        QFETCH(QString, rewritten);
        const QChar quote = dialect == SqlDialect::MySql ? u'`' : u'"';
        const auto quoteName = [quote](const QString &name) { return quote + name + quote; };
        QCOMPARE(SqlStatementText::rewriteBrackets(sql, dialect, quoteName), rewritten);
    }

    void scriptSplitting()
    {
        const QString script
            = u"-- heading; with a semicolon\nCREATE TABLE a (x text DEFAULT ';');\n"
              "/* block; */ CREATE INDEX i ON a (x);\n;\n  \nCREATE TABLE b (y integer)"_s;
        const QStringList statements = SqlStatementText::splitScript(script, SqlDialect::Sqlite);
        QCOMPARE(statements,
            QStringList({ u"CREATE TABLE a (x text DEFAULT ';')"_s, u"CREATE INDEX i ON a (x)"_s,
                u"CREATE TABLE b (y integer)"_s }));
    }

    void sqlTemplateKeepsPercentInValues()
    {
        const SqlTemplate insert(u"INSERT INTO T VALUES  ('%d' ,'%s')");
        QCOMPARE(insert.placeholderCount(), 2);
        QCOMPARE(insert.format({ qint64(-2147483648LL), QStringView(u"100%d %s") }),
            u"INSERT INTO T VALUES  ('-2147483648' ,'100%d %s')"_s);
        const SqlTemplate plain(u"DELETE FROM Rank");
        QCOMPARE(plain.format({}), u"DELETE FROM Rank"_s);
    }

    void remoteAddressDisablesTheConsole()
    {
        TempServerDir dir;
        QVERIFY(dir.writeFile(
            u"Serverinfo.ini"_s, "[ServerInfo]\r\nPort=5000\r\n[DBInfo]\r\nDBAddr=10.1.2.3\r\n"));
        // Opening this would fail with a message box: nothing may try.
        QVERIFY(TestDatabase::storeConnectionString(
            dir.hives(), u"DRIVER={Velmar No Such Driver};Database=x;"_s));

        ScriptedMessageService messages;
        const QString tracePath = dir.filePath(u"trace.sql"_s);
        SqlTrace trace(tracePath);
        DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages, &trace);

        QTest::ignoreMessage(QtDebugMsg, "OpenDBConnection() \n");
        DbConnection connection = session.OpenDBConnection();
        QVERIFY(connection.isNull());
        QVERIFY(messages.boxes().isEmpty());
        QVERIFY(session.lastErrorText().isEmpty());
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());
        QCOMPARE(dir.readFile(u"trace.sql"_s), QByteArray());

        // Without the address the same session does try, and says so once.
        QVERIFY(dir.writeFile(u"Serverinfo.ini"_s, "[DBInfo]\r\nDBAddr=\r\n"));
        QVERIFY(session.OpenDBConnection().isNull());
        QCOMPARE(messages.boxes().size(), 1);
    }

    // Without a connection string the local VelmarDB.mdb serves; the string in
    // the machine hive is used even where no local database exists.
    void connectionStringSources_data()
    {
        QTest::addColumn<bool>("fromHive");
        QTest::newRow("local database") << false;
        QTest::newRow("machine hive") << true;
    }

    void connectionStringSources()
    {
        QFETCH(bool, fromHive);
        guarded([&] {
            TempServerDir dir;
            TestDatabase db(
                fromHive ? TestDatabase::Backend::SqliteOdbc : TestDatabase::Backend::SqliteFile,
                fromHive ? dir.filePath(u"data"_s) : dir.programDir(),
                fromHive ? u"server.db"_s : u"VelmarDB.mdb"_s);
            QVERIFY2(db.isValid(), qPrintable(db.errorString()));
            QVERIFY(db.exec(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('7' ,'组长')"_s));
            QVERIFY(fromHive ? db.writeConnectionString(dir.hives())
                             : db.filePath() == dir.databasePath());

            ScriptedMessageService messages;
            DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
            QCOMPARE(session.connectionString(),
                fromHive ? db.connectionString()
                         : u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(
                             dir.databasePath()));
            DbConnection connection = session.OpenDBConnection();
            QVERIFY(!connection.isNull());
            QCOMPARE(connection.source(), fromHive ? u"QODBC: SQLite3"_s : u"QSQLITE"_s);
            Recordset set = connection.execute(u"SELECT ORankID,RankName FROM Rank "_s);
            QCOMPARE(set.intField(u"ORankID"_s), 7);
            QCOMPARE(set.textField(u"RankName"_s), u"组长"_s);
            QVERIFY(messages.boxes().isEmpty());
        });
    }

    void odbcStringsAsTheyStand()
    {
        // Strings that name a data source instead of a driver, or spell the keys
        // their own way, reach unixODBC as they stand.
        TestDatabase db(TestDatabase::Backend::SqliteOdbc, m_odbcFolder.path(), u"dsn.db"_s);
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY(db.exec(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'a')"_s));
        for (const QString &string : { u"DSN=velmar-test-dsn;"_s, u" dsn=velmar-test-dsn"_s,
                 u"Driver =SQLite3;Database=%1;"_s.arg(db.filePath()),
                 u"UID=;DSN=velmar-test-dsn;PWD=;"_s, u"UID=x;DSN=velmar-test-dsn"_s }) {
            try {
                DbConnection connection = DbConnection::open(string);
                QVERIFY(connection.source().startsWith(u"QODBC"_s));
                QCOMPARE(connection.dialect(), SqlDialect::Sqlite);
                QCOMPARE(connection.execute(u"SELECT RankName FROM Rank "_s).textField(0), u"a"_s);
            } catch (const DbException &e) {
                QFAIL(qPrintable(string + u": "_s + e.error().formatted()));
            }
        }
    }

    void openFailureShowsOneBox_data()
    {
        QTest::addColumn<QString>("connectionString"); // empty: the local database fallback
        QTest::addColumn<QByteArray>("localFile"); // contents of VelmarDB.mdb; empty: none
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("descriptionPart");

        QTest::newRow("no connection string, no local database")
            << QString() << QByteArray() << u"QSQLITE"_s << u"unable to open database file"_s;
        QTest::newRow("local database is not a database")
            << QString() << QByteArray("just some text, certainly not SQLite\n").repeated(40)
            << u"QSQLITE"_s << u"not a database"_s;
        QTest::newRow("folder of the database is missing")
            << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=/nonexistent-velmar/sub/VelmarDB.mdb;"_s
            << QByteArray() << u"QSQLITE"_s << u"unable to open database file"_s;
        QTest::newRow("no database file named") << u"DRIVER={Microsoft Access Driver (*.mdb)};"_s
                                                << QByteArray() << u"QSQLITE"_s << u"DBQ"_s;
        QTest::newRow("unknown odbc driver")
            << u"DRIVER={Velmar No Such Driver};Database=x;"_s << QByteArray()
            << u"QODBC: Velmar No Such Driver"_s << u"Velmar No Such Driver"_s;
        QTest::newRow("unknown data source") << u"DSN=velmar-no-such-dsn;"_s << QByteArray()
                                             << u"QODBC"_s << u"Data source name not found"_s;
        QTest::newRow("sqlite odbc, not a database")
            << u"DRIVER=SQLite3;Database=@LOCAL@;"_s
            << QByteArray("plain text file\n").repeated(100) << u"QODBC: SQLite3"_s
            << u"not a database"_s;
        if (TestDatabase::isAvailable(TestDatabase::Backend::PostgresOdbc))
            QTest::newRow("postgresql, no such database")
                << TestDatabase::postgresConnectionString(u"velmar_no_such_database"_s)
                << QByteArray() << u"QODBC: PostgreSQL Unicode"_s << u"velmar_no_such_database"_s;
    }

    void openFailureShowsOneBox()
    {
        QFETCH(QString, connectionString);
        QFETCH(QByteArray, localFile);
        QFETCH(QString, source);
        QFETCH(QString, descriptionPart);

        TempServerDir dir;
        if (!localFile.isEmpty())
            QVERIFY(dir.writeFile(u"VelmarDB.mdb"_s, localFile));
        connectionString.replace(u"@LOCAL@"_s, dir.databasePath());
        if (!connectionString.isEmpty())
            QVERIFY(TestDatabase::storeConnectionString(dir.hives(), connectionString));

        ScriptedMessageService messages;
        DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
        const DbConnection connection = session.OpenDBConnection();

        QVERIFY(connection.isNull());
        const QList<MessageService::Box> boxes = messages.boxes();
        QCOMPARE(boxes.size(), 1);
        const MessageService::Box &box = boxes.constFirst();
        const QString head
            = u"(80004005) Unspecified error\r\nSource - %1\r\nDesc - "_s.arg(source);
        QVERIFY2(box.text.startsWith(head), qPrintable(box.text));
        QVERIFY2(box.text.size() > head.size(), "the database's own text is missing");
        QVERIFY2(box.text.contains(descriptionPart, Qt::CaseInsensitive), qPrintable(box.text));
        QCOMPARE(box.title, u"Unspecified error"_s);
        QCOMPARE(box.buttons, MessageService::Buttons::Ok);
        QCOMPARE(box.icon, MessageService::Icon::None);
        QCOMPARE(box.parent, nullptr);
        QCOMPARE(session.lastErrorText(), box.text);
        // The failed attempt leaves no connection behind.
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());
        if (localFile.isEmpty() && connectionString.isEmpty())
            QVERIFY(!QFile::exists(dir.databasePath()));
    }

    void traceRecordsEveryStatementInOrder_data() { TestDatabase::addBackends(); }
    void traceRecordsEveryStatementInOrder()
    {
        guarded([&] {
            VELMAR_BACKEND_DATABASE(db);
            const QString tracePath = dir.filePath(u"sql-trace.txt"_s);
            {
                SqlTrace trace(tracePath);
                QVERIFY2(trace.isOpen(), qPrintable(trace.errorString()));
                DbConnection connection = DbConnection::open(db.connectionString(), &trace);
                connection.execute(u"DELETE FROM [Group] where IsGuestGroup=0"_s);
                connection.execute(
                    u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  ('1' ,'研发部' ,'-1','0','1', 0)"_s);
                connection.execute(
                    u"UPDATE MEMBER SET MemberLevel = 1 \t\t\t\t\t\t\twhere OmemberID = 5"_s);
                connection.execute(
                    u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'line1\r\nline2\nline3')"_s);
                connection.execute(
                    u"INSERT INTO Folder (OFolderID,FolderPath) VALUES ('1','D:\\\\new\\rights\\')"_s);
                QVERIFY_THROWS_EXCEPTION(DbException,
                    connection.execute(
                        u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,'x'); DELETE FROM Rank; --')"_s));
                QVERIFY_THROWS_EXCEPTION(
                    DbException, connection.execute(u"SELECT NoSuchColumn FROM Rank"_s));
                connection.execute(u"SELECT COUNT(*) FROM [Group]"_s);
            }
            const QString group
                = backend == TestDatabase::Backend::PostgresOdbc ? u"\"Group\""_s : u"[Group]"_s;
            const QStringList expected {
                u"DELETE FROM %1 where IsGuestGroup=0"_s.arg(group),
                u"INSERT INTO %1 (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  ('1' ,'研发部' ,'-1','0','1', 0)"_s
                    .arg(group),
                u"UPDATE MEMBER SET MemberLevel = 1 \\t\\t\\t\\t\\t\\t\\twhere OmemberID = 5"_s,
                u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'line1\\r\\nline2\\nline3')"_s,
                u"INSERT INTO Folder (OFolderID,FolderPath) VALUES ('1','D:\\\\\\\\new\\\\rights\\\\')"_s,
                // The refused text never ran; the failing one did.
                u"SELECT NoSuchColumn FROM Rank"_s,
                u"SELECT COUNT(*) FROM %1"_s.arg(group),
                QString(),
            };
            QCOMPARE(QString::fromUtf8(dir.readFile(u"sql-trace.txt"_s)).split(u'\n'), expected);
            QCOMPARE(db.column(u"SELECT RankName FROM Rank"_s),
                QStringList { u"line1\r\nline2\nline3"_s });
        });
    }

private:
    QTemporaryDir m_odbcFolder;
};

QTEST_GUILESS_MAIN(TstDbSession)
#include "tst_dbsession.moc"
