// The widget-free parts of the shell: command line, password
// digest and store, connection string masking, ServerType.

#include "AdminPasswordStore.h"
#include "AppTestSupport.h"
#include "ConnectionStringMask.h"
#include "CVelmarManagerApp.h"
#include "StartupOptions.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class ShellLogicTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startupOptions_data();
    void startupOptions();
    void startupOptionErrors();
    void startupViewOption();
    void digestIsMd5OfCodePageBytes_data();
    void digestIsMd5OfCodePageBytes();
    void digestComparisonIgnoresCase();
    void passwordStoreNeedsKey();
    void promptNeeded_data();
    void promptNeeded();
    void maskConnectionString_data();
    void maskConnectionString();
    void serverTypeRead();
};

void ShellLogicTest::startupOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("environmentDir"); // "<a>"/"<b>": the two temporary folders
    QTest::addColumn<QString>("expectedDir");
    QTest::addColumn<bool>("install");
    QTest::addColumn<QString>("trace");
    QTest::addColumn<QString>("screenshot");

    QTest::newRow("executable folder")
        << QStringList() << QString() << u"<exe>"_s << false << QString() << QString();
    QTest::newRow("environment") << QStringList() << u"<a>"_s << u"<a>"_s << false << QString()
                                 << QString();
    QTest::newRow("option beats environment")
        << QStringList({ u"--server-dir"_s, u"<b>"_s }) << u"<a>"_s << u"<b>"_s << false
        << QString() << QString();
    QTest::newRow("option with equals") << QStringList({ u"--server-dir=<b>/"_s }) << QString()
                                        << u"<b>"_s << false << QString() << QString();
    QTest::newRow("folder on the command line")
        << QStringList({ u"<b>"_s }) << u"<a>"_s << u"<b>"_s << false << QString() << QString();
    QTest::newRow("no folder anywhere: asked for")
        << QStringList() << QString() << QString() << false << QString() << QString();
    QTest::newRow("install anywhere") << QStringList({ u"/x"_s, u"/installservices"_s })
                                      << QString() << u"<exe>"_s << true << QString() << QString();
    QTest::newRow("install after options")
        << QStringList({ u"--sql-trace"_s, u"<a>/trace.sql"_s, u"/install"_s }) << QString()
        << u"<exe>"_s << true << u"<a>/trace.sql"_s << QString();
    QTest::newRow("folder named install is no request")
        << QStringList({ u"--screenshot"_s, u"<a>/install"_s }) << QString() << u"<exe>"_s << false
        << QString() << u"<a>/install"_s;
    QTest::newRow("other switches ignored")
        << QStringList({ u"/Embedding"_s, u"-reverse"_s }) << QString() << u"<exe>"_s << false
        << QString() << QString();
}

void ShellLogicTest::startupOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, environmentDir);
    QFETCH(QString, expectedDir);
    QFETCH(bool, install);
    QFETCH(QString, trace);
    QFETCH(QString, screenshot);

    QTemporaryDir a, b, exe;
    auto expand = [&](QString text) {
        return text.replace(u"<a>"_s, a.path())
            .replace(u"<b>"_s, b.path())
            .replace(u"<exe>"_s, exe.path());
    };
    for (QString &argument : arguments)
        argument = expand(argument);
    // The program's own folder is the server folder only when it holds one.
    if (expectedDir == u"<exe>"_s)
        QVERIFY(QFile(exe.filePath(u"Serverinfo.ini"_s)).open(QIODevice::WriteOnly));

    const StartupOptions options
        = StartupOptions::parse(arguments, exe.path(), expand(environmentDir), QString());
    QCOMPARE(options.error, QString());
    QCOMPARE(options.programDirectory, expand(expectedDir));
    QCOMPARE(options.install, install);
    QCOMPARE(options.sqlTracePath, expand(trace));
    QCOMPARE(options.screenshotPath, expand(screenshot));
}

void ShellLogicTest::startupOptionErrors()
{
    QTemporaryDir exe;
    for (const QStringList &arguments : { QStringList { u"--sql-trace"_s }, // missing value
             QStringList { u"--server-dir="_s }, QStringList { u"--frobnicate"_s },
             QStringList { u"members.txt"_s }, // a document to open
             QStringList { u"--server-dir"_s, u"/nonexistent/velmar"_s },
             QStringList { u"--view"_s, u"board"_s } }) {
        const StartupOptions options
            = StartupOptions::parse(arguments, exe.path(), QString(), QString());
        QVERIFY2(!options.error.isEmpty(), qPrintable(arguments.join(u' ')));
    }
}

void ShellLogicTest::startupViewOption()
{
    QTemporaryDir exe;
    for (const QString &name : StartupOptions::startViews()) {
        const StartupOptions options
            = StartupOptions::parse({ u"--view"_s, name }, exe.path(), QString(), QString());
        QVERIFY2(options.error.isEmpty(), qPrintable(options.error));
        QCOMPARE(options.startView, name);
    }
    const StartupOptions plain = StartupOptions::parse({}, exe.path(), QString(), QString());
    QVERIFY(plain.startView.isEmpty());
}

void ShellLogicTest::digestIsMd5OfCodePageBytes_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("digest");
    QTest::newRow("empty") << QString() << u"d41d8cd98f00b204e9800998ecf8427e"_s;
    QTest::newRow("abc") << u"abc"_s << u"900150983cd24fb0d6963f7d28e17f72"_s;
    QTest::newRow("case counts") << u"Secret1"_s << u"d6cb2342e44efb6dd628276f36da2359"_s;
    // GBK bytes C3 DC C2 EB, not the UTF-8 ones.
    QTest::newRow("chinese in GBK") << u"密码"_s << u"d2293e30f0c964c5f6242486aa8a483c"_s;
    QTest::newRow("spaces kept") << u" abc"_s << u"12cfaf7fd98f33be8038b3d56c18f061"_s;
}

void ShellLogicTest::digestIsMd5OfCodePageBytes()
{
    QFETCH(QString, password);
    QFETCH(QString, digest);
    QCOMPARE(AdminPasswordStore::digest(password), digest);
}

void ShellLogicTest::digestComparisonIgnoresCase()
{
    QVERIFY(AdminPasswordStore::digestsMatch(
        u"900150983cd24fb0d6963f7d28e17f72"_s, u"900150983CD24FB0D6963F7D28E17F72"_s));
    QVERIFY(!AdminPasswordStore::digestsMatch(
        u"900150983cd24fb0d6963f7d28e17f72"_s, u"900150983cd24fb0d6963f7d28e17f73"_s));
    QVERIFY(!AdminPasswordStore::digestsMatch(u"900150983cd24fb0d6963f7d28e17f72"_s, QString()));
}

void ShellLogicTest::passwordStoreNeedsKey()
{
    TempServerDir dir;
    AdminPasswordStore store(dir.hives());
    // The store never creates the key: the application does at start.
    QVERIFY(!store.keyOpens());
    QVERIFY(!store.writeState(1));
    QVERIFY(!store.writeDigest(u"abc"_s));
    QVERIFY(!registryKeyExists(dir.hives(), RegistryRoot::LocalMachine, ConsoleKey));
    QCOMPARE(store.state(), 0);
    QCOMPARE(store.storedDigest(), QString());

    QVERIFY(
        setRegistryNumber(dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"ServerType"_s, 1));
    QVERIFY(store.writeState(1));
    QVERIFY(store.writeDigest(u"abc"_s));
    QCOMPARE(store.state(), 1);
    QCOMPARE(store.storedDigest(), u"abc"_s);
    // The values are in the machine hive, not the user's.
    QCOMPARE(registryString(dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPassword"_s),
        std::optional<QString>(u"abc"_s));
    QVERIFY(!registryKeyExists(dir.hives(), RegistryRoot::CurrentUser, ConsoleKey));
}

void ShellLogicTest::promptNeeded_data()
{
    QTest::addColumn<bool>("createKey");
    QTest::addColumn<int>("state"); // -1: absent
    QTest::addColumn<QString>("digest"); // null: absent
    QTest::addColumn<bool>("needed");
    const QString d = u"900150983cd24fb0d6963f7d28e17f72"_s;
    QTest::newRow("no key") << false << -1 << QString() << false;
    QTest::newRow("nothing stored") << true << -1 << QString() << false;
    QTest::newRow("state absent") << true << -1 << d << false;
    QTest::newRow("state 0") << true << 0 << d << false;
    QTest::newRow("state 1, empty password") << true << 1 << u""_s << false;
    QTest::newRow("state 1, no password") << true << 1 << QString() << false;
    QTest::newRow("state 1, password") << true << 1 << d << true;
    QTest::newRow("state 7, password") << true << 7 << d << true;
}

void ShellLogicTest::promptNeeded()
{
    QFETCH(bool, createKey);
    QFETCH(int, state);
    QFETCH(QString, digest);
    QFETCH(bool, needed);

    TempServerDir dir;
    RegistryHives &hives = dir.hives();
    if (createKey)
        QVERIFY(
            setRegistryNumber(hives, RegistryRoot::LocalMachine, ConsoleKey, u"ServerType"_s, 0));
    if (state >= 0)
        QVERIFY(setRegistryNumber(
            hives, RegistryRoot::LocalMachine, ConsoleKey, u"AdmPasswordState"_s, state));
    if (!digest.isNull())
        QVERIFY(setRegistryString(
            hives, RegistryRoot::LocalMachine, ConsoleKey, u"AdmPassword"_s, digest));
    QString expected;
    QCOMPARE(AdminPasswordStore(hives).promptNeeded(&expected), needed);
    QCOMPARE(expected, needed ? digest : QString());
}

void ShellLogicTest::maskConnectionString_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("shown");
    QTest::newRow("access, empty password")
        << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=/srv/VelmarDB.mdb;DefaultDir=;UID=admin;PWD=;"_s
        << u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=/srv/VelmarDB.mdb;DefaultDir=;UID=admin;PWD=;"_s;
    QTest::newRow("pwd") << u"DRIVER={PostgreSQL Unicode};SERVER=db;UID=v;PWD=s3cret;"_s
                         << u"DRIVER={PostgreSQL Unicode};SERVER=db;UID=v;PWD=******;"_s;
    QTest::newRow("password, any case, last pair")
        << u"Provider=SQLOLEDB;User ID=sa;password=abc"_s
        << u"Provider=SQLOLEDB;User ID=sa;password=******"_s;
    QTest::newRow("braced with semicolon")
        << u"UID=v;PWD={a;b};SERVER=x"_s << u"UID=v;PWD=******;SERVER=x"_s;
    QTest::newRow("key with spaces") << u"UID=v; Pwd =x;"_s << u"UID=v; Pwd =******;"_s;
    QTest::newRow("no password") << u"DSN=velmar"_s << u"DSN=velmar"_s;
}

void ShellLogicTest::maskConnectionString()
{
    QFETCH(QString, input);
    QFETCH(QString, shown);
    QCOMPARE(maskConnectionStringPassword(input), shown);
}

// A number or a text; the key is created when it is missing, so the
// password settings can be stored later.
void ShellLogicTest::serverTypeRead()
{
    for (const QVariant &stored : { QVariant(), QVariant(2), QVariant(u"Enterprise"_s) }) {
        TempServerDir dir;
        const auto root = RegistryRoot::LocalMachine;
        const QString key = u"SOFTWARE\\Velmar\\VelmarManager"_s;
        if (stored.typeId() == QMetaType::Int)
            QVERIFY(setRegistryNumber(dir.hives(), root, key, u"ServerType"_s, 2));
        else if (stored.isValid())
            QVERIFY(setRegistryString(dir.hives(), root, key, u"ServerType"_s, stored.toString()));
        QCOMPARE(CVelmarManagerApp::readServerType(dir.hives()), stored.toString());
        QVERIFY(registryKeyExists(dir.hives(), root, key));
    }
}

int runShellLogicTests(int argc, char **argv)
{
    ShellLogicTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ShellLogicTest.moc"
