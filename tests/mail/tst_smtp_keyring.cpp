// The SMTP password in the desktop's keyring: a private D-Bus session bus
// with gnome-keyring's Secret Service, started by the test and stopped at
// its end. The password round-trips through QtKeychain, never lands in a
// file, and velmarctl invite finds it there; without a keyring velmarctl
// says where else the password can come from.

#include "InviteMailSettings.h"
#include "SmtpPasswordStore.h"
#include "SmtpTestServer.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString Secret = u"kr-Secret-4711-密"_s;
} // namespace

class SmtpKeyringTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void passwordRoundTrips();
    void velmarctlReadsTheKeyring();

private:
    bool startSecretService(QString *why);
    QByteArray fileContentsUnder(const QString &root) const;

    QTemporaryDir m_home;
    QProcess m_bus;
    QProcess m_keyring;
    QString m_busAddress;
    QString m_skip;
};

bool SmtpKeyringTest::startSecretService(QString *why)
{
    // Everything the keyring daemon and QtKeychain would write goes below
    // the test's own home; the session bus is set before anything uses it.
    for (const char *name :
        { "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME" }) {
        const QString path = m_home.filePath(QString::fromLatin1(name).toLower());
        QDir().mkpath(path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, QFile::encodeName(path));
    }
    m_bus.start(u"dbus-daemon"_s, { u"--session"_s, u"--nofork"_s, u"--print-address=1"_s });
    if (!m_bus.waitForStarted(10000)) {
        *why = u"dbus-daemon: "_s + m_bus.errorString();
        return false;
    }
    while (!m_bus.canReadLine()) {
        if (!m_bus.waitForReadyRead(10000)) {
            *why = u"dbus-daemon printed no address"_s;
            return false;
        }
    }
    m_busAddress = QString::fromUtf8(m_bus.readLine().trimmed());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_busAddress.toUtf8());
    m_keyring.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_keyring.start(
        u"gnome-keyring-daemon"_s, { u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s });
    if (!m_keyring.waitForStarted(10000)) {
        *why = u"gnome-keyring-daemon: "_s + m_keyring.errorString();
        return false;
    }
    // The login keyring's password; it is created with it and unlocked.
    m_keyring.write("unlock-pw");
    m_keyring.closeWriteChannel();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        *why = u"no session bus: "_s + bus.lastError().message();
        return false;
    }
    for (int i = 0; i < 100; ++i) {
        if (bus.interface()->isServiceRegistered(u"org.freedesktop.secrets"_s))
            return true;
        QTest::qWait(100);
    }
    *why = u"the Secret Service did not appear on the private bus"_s;
    return false;
}

void SmtpKeyringTest::initTestCase()
{
    QVERIFY(m_home.isValid());
    QString why;
    if (!startSecretService(&why))
        m_skip = why;
}

void SmtpKeyringTest::cleanupTestCase()
{
    for (QProcess *process : { &m_keyring, &m_bus }) {
        if (process->state() == QProcess::NotRunning)
            continue;
        process->terminate();
        if (!process->waitForFinished(5000)) {
            process->kill();
            process->waitForFinished(5000);
        }
    }
}

QByteArray SmtpKeyringTest::fileContentsUnder(const QString &root) const
{
    QByteArray all;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly))
            all += file.readAll();
    }
    return all;
}

void SmtpKeyringTest::passwordRoundTrips()
{
    if (!m_skip.isEmpty())
        QSKIP(qPrintable(m_skip));
    const SmtpPasswordStore store(u"VelmarManager SMTP test"_s);
    const QString key = SmtpPasswordStore::accountKey(u"inviter"_s, u"smtp.x.cn"_s, 587);
    QCOMPARE(key, u"inviter@smtp.x.cn:587"_s);
    QString error;
    QVERIFY2(store.write(key, u"first"_s, &error), qPrintable(error));
    QVERIFY2(store.write(key, Secret, &error), qPrintable(error)); // replaced
    SmtpPasswordStore::Result read = store.read(key);
    QVERIFY2(read.ok, qPrintable(read.error));
    QCOMPARE(read.password, Secret);
    // Another login on the same server has none.
    read = store.read(SmtpPasswordStore::accountKey(u"other"_s, u"smtp.x.cn"_s, 587));
    QVERIFY(!read.ok && read.notFound);

    // Not in any file: neither the keyring's (encrypted) nor a fallback.
    const QByteArray files = fileContentsUnder(m_home.path());
    QVERIFY(!files.isEmpty()); // the keyring did write its files
    QVERIFY(!files.contains(Secret.toUtf8()));
    QVERIFY(!files.contains(
        QByteArray(reinterpret_cast<const char *>(Secret.utf16()), Secret.size() * 2)));

    QVERIFY2(store.remove(key, &error), qPrintable(error));
    QVERIFY(store.read(key).notFound);
    QVERIFY2(store.remove(key, &error), qPrintable(error)); // nothing left to remove
}

void SmtpKeyringTest::velmarctlReadsTheKeyring()
{
    TempServerDir dir;
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());
    QVERIFY2(
        db.execAll(sqlStatements(u"velmarctl/invite-members.sql"_s)), qPrintable(db.errorString()));
    SmtpTestServer server;
    QString error;
    QVERIFY2(server.start(SmtpTestServer::Mode::Tls, true, &error), qPrintable(error));
    InviteMailSettings settings;
    settings.host = u"127.0.0.1"_s;
    settings.port = server.port();
    settings.security = SmtpSecurity::Tls;
    settings.sender = u"admin@velmar.test"_s;
    settings.user = QString::fromLatin1(SmtpTestServer::User);
    settings.caFile = server.caFile();
    QVERIFY(settings.write(dir.hives()));
    const QStringList arguments = QStringList { u"invite"_s, u"anna"_s } + dirArguments(dir);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"VELMAR_SMTP_PASSWORD"_s);

    // Without a keyring, velmarctl says where the password can come from.
    QProcessEnvironment noKeyring = environment;
    noKeyring.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=%1/none"_s.arg(m_home.path()));
    CtlRun run = velmarctl(arguments, noKeyring);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(u"VELMAR_SMTP_PASSWORD"_s), qPrintable(run.err));
    QCOMPARE(server.messageCount(), 0);

    if (!m_skip.isEmpty())
        QSKIP(qPrintable(m_skip));
    const QString key = SmtpPasswordStore::accountKey(settings.user, settings.host, server.port());
    QVERIFY2(SmtpPasswordStore().write(key, QString::fromLatin1(SmtpTestServer::Password), &error),
        qPrintable(error));
    run = velmarctl(arguments, environment);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.outText(), u"anna\tanna@x.cn\tsent\n"_s);
    QVERIFY(server.envelope(1)[u"authenticated"_s].toBool());
    QVERIFY(SmtpPasswordStore().remove(key, &error));
}

QTEST_GUILESS_MAIN(SmtpKeyringTest)
#include "tst_smtp_keyring.moc"
