// The server folder on a real temporary installation: the paths built from
// it, the folder chosen at start, the hives it opens and the start-up step
// for the database settings.

#include "CRegistry.h"
#include "RegistryHives.h"
#include "ServerFolder.h"
#include "TempServerDir.h"

#include <QDir>
#include <QFile>
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
} // namespace

class TstServerFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paths()
    {
        TempServerDir dir;
        QVERIFY(dir.isValid());
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
};

QTEST_GUILESS_MAIN(TstServerFolder)
#include "tst_serverfolder.moc"
