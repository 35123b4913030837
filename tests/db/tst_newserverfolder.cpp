// A new, empty server created in a folder, as the console's folder dialog
// creates one: its files, its registry settings and its tables, and the
// refusals that keep an existing server or database untouched.

#include "CRegistry.h"
#include "DbConnection.h"
#include "NewServerFolder.h"
#include "Recordset.h"
#include "RegistryHives.h"
#include "ServerFolder.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QString machineString(RegistryHives &hives, const QString &name)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    QString value;
    if (!registry.openKey(RegistryRoot::LocalMachine, ServerFolder::DatabaseKeyPath)
        || !registry.readString(name, value))
        return u"<absent>"_s;
    return value;
}
} // namespace

class TstNewServerFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sqliteServer()
    {
        TempServerDir dir;
        const ServerFolder folder(dir.programDir() + u"/new"_s, dir.registryDir());
        QString error;
        QVERIFY2(NewServerFolder::create(folder, dir.hives(), {}, &error), qPrintable(error));

        QVERIFY(QFile::exists(folder.profilePath()));
        QCOMPARE(machineString(dir.hives(), u"SetDBType"_s), u"MDB"_s);
        QCOMPARE(
            machineString(dir.hives(), u"ConnectionString"_s), folder.accessConnectionString());
        // The console's own connection reads the new, empty tables.
        DbConnection connection = DbConnection::open(folder.accessConnectionString());
        for (const QString &table : { u"Member"_s, u"[Group]"_s, u"Relation"_s, u"Rank"_s }) {
            Recordset rows = connection.execute(u"SELECT COUNT(*) FROM "_s + table);
            QCOMPARE(rows.value(0).toInt(), 0);
        }
    }

    void existingServerIsLeftAlone()
    {
        TempServerDir dir;
        QVERIFY(dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\nUseDist=1\r\n"));
        QString error;
        QVERIFY(!NewServerFolder::create(
            ServerFolder(dir.programDir(), dir.registryDir()), dir.hives(), {}, &error));
        QVERIFY2(error.contains(u"Serverinfo.ini"_s), qPrintable(error));
        QCOMPARE(dir.readFile(u"Serverinfo.ini"_s), QByteArray("[ServerInfo]\r\nUseDist=1\r\n"));
        QVERIFY(!QFile::exists(dir.databasePath()));
    }

    void databaseWithTablesIsRefused()
    {
        // A database named by the administrator that already holds a server's
        // tables is not made a second server's: nothing is written.
        TempServerDir dir;
        TestDatabase existing(TestDatabase::Backend::SqliteOdbc, dir.root(), u"other.db"_s);
        QVERIFY2(existing.isValid(), qPrintable(existing.errorString()));
        QString error;
        QVERIFY(!NewServerFolder::create(ServerFolder(dir.programDir(), dir.registryDir()),
            dir.hives(), existing.connectionString(), &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!QFile::exists(dir.iniPath()));
        QCOMPARE(machineString(dir.hives(), u"ConnectionString"_s), u"<absent>"_s);
    }

    void emptyPostgresDatabase()
    {
        if (!TestDatabase::isAvailable(TestDatabase::Backend::PostgresOdbc)
            && !TestDatabase::postgresRequired())
            QSKIP("VELMAR_TEST_PG_PORT is not set (run through scripts/pg-test-server.sh run -- "
                  "...)");
        TempServerDir dir;
        TestDatabase database(TestDatabase::Backend::PostgresOdbc, dir.root());
        QVERIFY2(database.isValid(), qPrintable(database.errorString()));
        // The administrator's new database is empty.
        QVERIFY2(
            database.exec(u"DROP SCHEMA public CASCADE"_s), qPrintable(database.errorString()));
        QVERIFY2(database.exec(u"CREATE SCHEMA public"_s), qPrintable(database.errorString()));

        const ServerFolder folder(dir.programDir() + u"/pg"_s, dir.registryDir());
        QString error;
        QVERIFY2(NewServerFolder::create(folder, dir.hives(), database.connectionString(), &error),
            qPrintable(error));
        QVERIFY(QFile::exists(folder.profilePath()));
        QVERIFY(!QFile::exists(folder.accessDatabasePath()));
        QCOMPARE(machineString(dir.hives(), u"SetDBType"_s), u"PGSQL"_s);
        QCOMPARE(machineString(dir.hives(), u"ConnectionString"_s), database.connectionString());
        QCOMPARE(database.count(u"Member"_s), 0);
    }
};

QTEST_GUILESS_MAIN(TstNewServerFolder)
#include "tst_newserverfolder.moc"
