// The real velmarctl invite on a server folder with an SQLite database,
// sending to a private SMTP server: one line per member, the exit codes,
// the mail settings from the registry overridden by options, the password
// from the environment, and --dry-run's messages.

#include "InviteMailSettings.h"
#include "ProfileFile.h"
#include "SmtpTestServer.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <QFile>
#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;

class VelmarCtlInviteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsAndReports();
    void dryRunPrintsTheMessages();
};

// A server folder with the members of velmarctl/invite-members.sql.
#define SERVER(dir, db)                                                                            \
    TempServerDir dir;                                                                             \
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());                          \
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));                                          \
    QVERIFY2(db.execAll(sqlStatements(u"velmarctl/invite-members.sql"_s)),                         \
        qPrintable(db.errorString()));                                                             \
    QVERIFY(ProfileFile(dir.iniPath())                                                             \
                .writeString(u"SettingInfo"_s, u"CaptionBarName"_s, u"维尔马"_s))

void VelmarCtlInviteTest::sendsAndReports()
{
    SERVER(dir, db);
    SmtpTestServer server;
    QString error;
    QVERIFY2(server.start(SmtpTestServer::Mode::StartTls, true, &error), qPrintable(error));
    // The console's settings: another server and no login; the options win.
    InviteMailSettings settings;
    settings.host = u"192.0.2.1"_s;
    settings.security = SmtpSecurity::None;
    settings.sender = u"管理员 <admin@velmar.test>"_s;
    settings.office = u"信息中心"_s;
    QVERIFY(settings.write(dir.hives()));

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"VELMAR_SMTP_PASSWORD"_s, QString::fromLatin1(SmtpTestServer::Password));
    const QStringList common = QStringList { u"invite"_s, u"--smtp"_s,
        u"127.0.0.1:%1"_s.arg(server.port()), u"--security"_s, u"starttls"_s, u"--ca-file"_s,
        server.caFile(), u"--user"_s, QString::fromLatin1(SmtpTestServer::User) }
        + dirArguments(dir);

    // A user ID nobody has: nothing is sent at all.
    CtlRun run = velmarctl(common + QStringList { u"anna"_s, u"nobody"_s }, environment);
    QCOMPARE(run.exitCode, 7);
    QVERIFY2(run.err.contains(u"no member has the user ID nobody"_s), qPrintable(run.err));
    QCOMPARE(server.messageCount(), 0);

    run = velmarctl(common
            + QStringList { u"anna"_s, u"bert"_s, u"carl"_s, u"dora"_s, u"gina"_s, u"--memo"_s,
                u"请带上工牌"_s },
        environment);
    QCOMPARE(run.exitCode, 8);
    QCOMPARE(run.outText().split(u'\n', Qt::SkipEmptyParts),
        QStringList({ u"anna\tanna@x.cn\tsent"_s,
            u"bert\trefuse-bert@x.cn\trefused: RCPT failed: 550 (550 5.1.1 <refuse-bert@x.cn>: "
            "mailbox unavailable)"_s,
            u"carl\t\tnot taken: no usable e-mail address"_s,
            u"dora\tANNA@x.cn\tnot taken: the address is already a recipient"_s,
            u"gina\tgina@x.cn\tsent"_s }));
    QCOMPARE(server.messageCount(), 2);
    QVERIFY(
        server.envelope(1)[u"tls"_s].toBool() && server.envelope(1)[u"authenticated"_s].toBool());
    const QJsonObject anna = SmtpTestServer::parse(server.message(1), &error);
    QCOMPARE(anna[u"from"_s][u"name"_s].toString(), u"管理员"_s);
    QCOMPARE(anna[u"to"_s][u"name"_s].toString(), u"安娜"_s);
    QCOMPARE(anna[u"subject"_s].toString(), u"维尔马 用户登记通知"_s);
    const QString html = anna[u"html"_s].toString();
    QVERIFY2(html.contains(u"<b>pw&lt;1&gt;</b>"_s) && html.contains(u"请带上工牌"_s)
            && html.contains(u"请联系 信息中心"_s) && !html.contains(u"__"_s),
        qPrintable(html));

    // Bad options are usage errors before anything is read.
    for (const QStringList &bad :
        { QStringList { u"--security"_s, u"ssl"_s }, QStringList { u"--smtp"_s, u"host:99999"_s },
            QStringList { u"--from"_s, u"nobody"_s } }) {
        run = velmarctl(
            QStringList { u"invite"_s, u"anna"_s, u"--server-dir"_s, dir.programDir() } + bad);
        QCOMPARE(run.exitCode, 2);
    }
}

void VelmarCtlInviteTest::dryRunPrintsTheMessages()
{
    SERVER(dir, db);
    // No SMTP server is needed, and none is asked.
    const CtlRun run = ctl(dir,
        { u"invite"_s, u"anna"_s, u"gina"_s, u"--dry-run"_s, u"--memo"_s, u"From here on"_s,
            u"--from"_s, u"admin@velmar.test"_s });
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err.split(u'\n', Qt::SkipEmptyParts),
        QStringList({ u"anna\tanna@x.cn\tnot sent (dry run)"_s,
            u"gina\tgina@x.cn\tnot sent (dry run)"_s }));
    // The template was written beside Serverinfo.ini on the way.
    QVERIFY(QFile::exists(dir.filePath(u"Template.html"_s)));

    // Standard output is an mbox Python reads back: two messages, filled.
    QFile mbox(dir.root() + u"/out.mbox"_s);
    QVERIFY(mbox.open(QIODevice::WriteOnly));
    mbox.write(run.out);
    mbox.close();
    QProcess python;
    python.start(u"/usr/bin/python3"_s,
        { u"-c"_s,
            u"import mailbox, sys, email.policy\n"
            "for m in mailbox.mbox(sys.argv[1], factory=None):\n"
            "    m = mailbox.mboxMessage(m)\n"
            "    import email\n"
            "    e = email.message_from_bytes(m.as_bytes(), policy=email.policy.default)\n"
            "    print(e['to'].addresses[0].addr_spec, '__' in e.get_body(('html',)).get_content(),"
            " 'From here on' in e.get_body(('plain',)).get_content())\n"_s,
            mbox.fileName() });
    QVERIFY(python.waitForFinished(30000));
    QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()),
        u"anna@x.cn False True\ngina@x.cn False True\n"_s);
}

QTEST_GUILESS_MAIN(VelmarCtlInviteTest)
#include "tst_velmarctl_invite.moc"
