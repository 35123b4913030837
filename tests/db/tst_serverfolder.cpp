// The server folder on a real temporary installation: the paths built from
// it, the order in which a program finds it and the folder the console
// remembers, the folder chosen at start, the hives it opens and the start-up step
// for the database settings; and a new, empty server created in a folder, as
// the console's folder dialog creates one: its files, its registry settings
// and its tables, and the refusals that keep an existing server or database
// untouched.

#include "CRegistry.h"
#include "DbConnection.h"
#include "NewServerFolder.h"
#include "Recordset.h"
#include "RegistryHives.h"
#include "ServerFolder.h"
#include "ServerFolderChoice.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString DatabaseKey = u"SOFTWARE\\Velmar\\Services\\DataBase"_s;
const QString AccessString
    = u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;DefaultDir=;UID=admin;PWD=;"_s;

std::optional<QString> machineString(
    const RegistryHives &hives, const QString &key, const QString &name)
{
    QString value;
    if (readRegistryString(hives, RegistryRoot::LocalMachine, key, name, value) != 1)
        return std::nullopt;
    return value;
}

bool setMachineString(RegistryHives &hives, const QString &name, const QString &value)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    return registry.createKey(RegistryRoot::LocalMachine, DatabaseKey)
        && registry.writeString(name, value);
}

void makeServer(const QString &directory)
{
    QFile ini(directory + u"/Serverinfo.ini"_s);
    QVERIFY(ini.open(QIODevice::WriteOnly));
}
} // namespace

class TstServerFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The console's settings go to a test folder, not the user's.
        QStandardPaths::setTestModeEnabled(true);
    }

    void order_data()
    {
        // Which of the four candidates are given and hold "Serverinfo.ini";
        // "-" stands for not given.
        QTest::addColumn<QString>("option");
        QTest::addColumn<bool>("executableIsServer");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("remembered");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<ServerFolderChoice::Reason>("reason");

        using R = ServerFolderChoice::Reason;
        QTest::newRow("option beats a server beside the program")
            << u"opt"_s << true << u"env"_s << u"mem"_s << u"opt"_s << R::Option;
        QTest::newRow("the program's folder when it holds a server")
            << u"-"_s << true << u"env"_s << u"mem"_s << u"exe"_s << R::ExecutableFolder;
        QTest::newRow("environment")
            << u"-"_s << false << u"env"_s << u"mem"_s << u"env"_s << R::Environment;
        QTest::newRow("remembered")
            << u"-"_s << false << u"-"_s << u"mem"_s << u"mem"_s << R::Remembered;
        QTest::newRow("a remembered folder that lost its server is passed over")
            << u"-"_s << false << u"-"_s << u"gone"_s << QString() << R::None;
        QTest::newRow("nothing") << u"-"_s << false << u"-"_s << u"-"_s << QString() << R::None;
    }

    void order()
    {
        QFETCH(QString, option);
        QFETCH(bool, executableIsServer);
        QFETCH(QString, environment);
        QFETCH(QString, remembered);
        QFETCH(QString, expected);
        QFETCH(ServerFolderChoice::Reason, reason);

        QTemporaryDir root;
        for (const QString &name : { u"opt"_s, u"exe"_s, u"env"_s, u"mem"_s, u"gone"_s })
            QVERIFY(QDir(root.path()).mkdir(name));
        for (const QString &name : { u"opt"_s, u"env"_s, u"mem"_s })
            makeServer(root.filePath(name));
        if (executableIsServer)
            makeServer(root.filePath(u"exe"_s));
        const auto path = [&root](const QString &name) {
            return name == u"-"_s ? QString() : root.filePath(name);
        };

        const ServerFolderChoice::Choice choice = ServerFolderChoice::choose(
            path(option), root.filePath(u"exe"_s) + u'/', path(environment), path(remembered));
        QCOMPARE(choice.reason, reason);
        QCOMPARE(choice.directory, expected.isEmpty() ? QString() : root.filePath(expected));
        QVERIFY(!ServerFolderChoice::describe(choice).isEmpty());
    }

    void relativeOptionIsFromWorkingDirectory()
    {
        const ServerFolderChoice::Choice choice
            = ServerFolderChoice::choose(u"server/../server/"_s, {}, {}, {});
        QCOMPARE(choice.directory, QDir::current().absoluteFilePath(u"server"_s));
    }

    void rememberedFolderIsKept()
    {
        QTemporaryDir folder;
        ServerFolderChoice::remember(folder.path() + u"/./"_s);
        QCOMPARE(ServerFolderChoice::remembered(), folder.path());
    }

    void paths()
    {
        TempServerDir dir;
        // A trailing separator and a "." inside are gone: names are appended.
        const ServerFolder folder(dir.programDir() + u"/./"_s);
        QCOMPARE(folder.programDirectory(), dir.programDir());
        QCOMPARE(folder.profilePath(), dir.programDir() + u"/Serverinfo.ini"_s);
        QCOMPARE(folder.accessDatabasePath(), dir.programDir() + u"/VelmarDB.mdb"_s);
        QCOMPARE(folder.filePath(u"pskill"_s), dir.programDir() + u"/pskill"_s);
        QCOMPARE(folder.registryDirectory(), QString());
        QCOMPARE(ServerFolder(u"/"_s).programDirectory(), u"/"_s);
    }

    void hivesOfTheRegistryFolder()
    {
        TempServerDir dir;
        QVERIFY(setMachineString(dir.hives(), u"SetDBType"_s, u"PGSQL"_s));
        const ServerFolder folder(dir.programDir(), dir.registryDir());
        const std::unique_ptr<RegistryHives> hives = folder.openHives();
        QCOMPARE(machineString(*hives, DatabaseKey, u"SetDBType"_s), std::optional(u"PGSQL"_s));
    }

    void databaseSettings_data()
    {
        QTest::addColumn<QString>("type"); // null: absent
        QTest::addColumn<QString>("string"); // null: absent
        QTest::addColumn<bool>("mdbExists");
        QTest::addColumn<QString>("expectedType");
        QTest::addColumn<QString>("expectedString"); // "<access>": the Access string of this folder

        QTest::newRow("fresh, no database")
            << QString() << QString() << false << u"MDB"_s << QString();
        QTest::newRow("fresh, database")
            << QString() << QString() << true << u"MDB"_s << u"<access>"_s;
        QTest::newRow("MDB, stale string")
            << u"MDB"_s << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=/old/VelmarDB.mdb;"_s
            << true << u"MDB"_s << u"<access>"_s;
        QTest::newRow("MDB, no database keeps string")
            << u"MDB"_s << u"DSN=velmar"_s << false << u"MDB"_s << u"DSN=velmar"_s;
        QTest::newRow("other server keeps string")
            << u"MSSQL"_s << u"DSN=velmar"_s << true << u"MSSQL"_s << u"DSN=velmar"_s;
        QTest::newRow("type is compared exactly")
            << u"mdb"_s << u"DSN=velmar"_s << true << u"mdb"_s << u"DSN=velmar"_s;
    }

    void databaseSettings()
    {
        QFETCH(QString, type);
        QFETCH(QString, string);
        QFETCH(bool, mdbExists);
        QFETCH(QString, expectedType);
        QFETCH(QString, expectedString);

        TempServerDir dir;
        RegistryHives &hives = dir.hives();
        if (!type.isNull())
            QVERIFY(setMachineString(hives, u"SetDBType"_s, type));
        if (!string.isNull())
            QVERIFY(setMachineString(hives, u"ConnectionString"_s, string));
        if (mdbExists)
            QVERIFY(dir.writeFile(u"VelmarDB.mdb"_s, QByteArray()));

        ServerFolder(dir.programDir()).prepareDatabaseSettings(hives);
        QCOMPARE(machineString(hives, DatabaseKey, u"SetDBType"_s), std::optional(expectedType));
        // "Database" and "DataBase" are one key: the session reads what start-up wrote.
        const std::optional<QString> stored = machineString(
            hives, u"SOFTWARE\\Velmar\\Services\\Database"_s, u"ConnectionString"_s);
        if (expectedString.isNull()) {
            QVERIFY(!stored.has_value());
        } else {
            expectedString.replace(u"<access>"_s, AccessString.arg(dir.databasePath()));
            QCOMPARE(stored, std::optional(expectedString));
        }
    }

    void sqliteServer()
    {
        TempServerDir dir;
        const ServerFolder folder(dir.programDir() + u"/new"_s, dir.registryDir());
        QString error;
        QVERIFY2(NewServerFolder::create(folder, dir.hives(), {}, &error), qPrintable(error));

        QVERIFY(QFile::exists(folder.profilePath()));
        QCOMPARE(machineString(dir.hives(), DatabaseKey, u"SetDBType"_s), std::optional(u"MDB"_s));
        QCOMPARE(machineString(dir.hives(), DatabaseKey, u"ConnectionString"_s),
            std::optional(folder.accessConnectionString()));
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
        QVERIFY(!machineString(dir.hives(), DatabaseKey, u"ConnectionString"_s));
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
        QCOMPARE(
            machineString(dir.hives(), DatabaseKey, u"SetDBType"_s), std::optional(u"PGSQL"_s));
        QCOMPARE(machineString(dir.hives(), DatabaseKey, u"ConnectionString"_s),
            std::optional(database.connectionString()));
        QCOMPARE(database.count(u"Member"_s), 0);
    }
};

QTEST_GUILESS_MAIN(TstServerFolder)
#include "tst_serverfolder.moc"
