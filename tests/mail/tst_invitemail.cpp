// Invitation mails from the recipient list to the wire: the list's
// refusals, Template.html and its placeholders, the MIME message decoded
// back by Python's email package, and sending through a private SMTP server
// without and with TLS, with a login, and refused.

#include "InviteMailSettings.h"
#include "InviteMessage.h"
#include "InviteRecipientModel.h"
#include "InviteSendRun.h"
#include "InviteTemplate.h"
#include "ProfileFile.h"
#include "RegistryHives.h"
#include "SmtpSender.h"
#include "SmtpTestServer.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QStringList Placeholders = { u"__SERVER_NAME__"_s, u"__USER_ID__"_s, u"__USER_PASSWORD__"_s,
    u"__ADDITIONAL_MEMO__"_s, u"__MAJOR_VERSION__"_s, u"__OFFICE__"_s, u"__DOWNLOAD_URL__"_s };

InviteFields sampleFields()
{
    return { u"维尔马 企业版"_s, u"3"_s, u"信息中心 <IT> & 总务"_s,
        u"https://dl.example.cn/client?a=1&b=2"_s, u"第一行\n<script>x</script>"_s };
}

SmtpAccount accountFor(const SmtpTestServer &server, SmtpSecurity security, bool login)
{
    SmtpAccount account;
    account.host = u"127.0.0.1"_s;
    account.port = server.port();
    account.security = security;
    account.caFile = security == SmtpSecurity::None ? QString() : server.caFile();
    account.timeoutSeconds = 20;
    if (login) {
        account.user = QString::fromLatin1(SmtpTestServer::User);
        account.password = QString::fromLatin1(SmtpTestServer::Password);
    }
    return account;
}

QByteArray sampleMessage(const QString &to, const QString &name = u"张三"_s)
{
    const InviteRecipient recipient { name, to, u"zhangsan"_s, u"pw<1>"_s };
    return InviteMessage::build(
        { MailAddress { u"系统管理员"_s, u"admin@velmar.test"_s }, MailAddress { name, to },
            u"邀请"_s, InviteTemplate::fill(InviteTemplate::DefaultText, sampleFields(), recipient),
            QDateTime::currentDateTime() });
}

} // namespace

class InviteMailTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recipientList();
    void templateWrittenAndFilled();
    void messageDecodesBack();
    void sendsOverSmtp_data();
    void sendsOverSmtp();
    void refusalsCarryTheServersAnswer();
    void settingsInTheRegistry();
};

void InviteMailTest::recipientList()
{
    InviteRecipientModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(model.add({ u"Anna"_s, u" anna@x.cn "_s, u"anna"_s, u"a1"_s }));
    QCOMPARE(model.list().at(0).email, u"anna@x.cn"_s); // trimmed
    // No address, or none that could be used on the wire, is not taken.
    for (const QString &bad : { u""_s, u"   "_s, u"anna"_s, u"@x.cn"_s, u"a b@x.cn"_s,
             u"a@x.cn\r\nRCPT TO:<b@y>"_s, u"<a@x.cn>"_s, u"a@b@c"_s })
        QVERIFY2(!model.add({ u"Bad"_s, bad, u"bad"_s, u"b"_s }), qPrintable(bad));
    // The same address again, whatever its case, is not taken.
    QVERIFY(!model.add({ u"Anna 2"_s, u"ANNA@x.cn"_s, u"anna2"_s, u"a2"_s }));
    QVERIFY(model.add({ u"Bert"_s, u"bert@x.cn"_s, u"bert"_s, u"b1"_s }));

    // The result column is the sending's progress.
    model.markPending();
    QCOMPARE(model.index(1, InviteRecipientModel::ResultColumn).data().toString(), u"等待发送"_s);
    model.setResult(1, { false, u"RCPT failed: 550"_s, u"550 5.1.1 no such user"_s });
    QVERIFY(model.index(1, InviteRecipientModel::ResultColumn)
                .data()
                .toString()
                .contains(u"550 5.1.1 no such user"_s));
    model.clear();
    QCOMPARE(model.rowCount(), 0);
}

void InviteMailTest::templateWrittenAndFilled()
{
    QTemporaryDir dir;
    QString text;
    QString error;
    // None there: the default is written, and read back the next time.
    QVERIFY2(InviteTemplate::load(dir.path(), &text, &error), qPrintable(error));
    QCOMPARE(text, InviteTemplate::DefaultText);
    QVERIFY(QFile::exists(dir.filePath(u"Template.html"_s)));
    for (const QString &name : Placeholders)
        QVERIFY2(text.contains(name), qPrintable(name));

    // An administrator's template in the code page (GBK) is read as such.
    QFile own(dir.filePath(u"Template.html"_s));
    QVERIFY(own.open(QIODevice::WriteOnly | QIODevice::Truncate));
    own.write(CodePage(QByteArrayLiteral("GBK")).encode(u"<p>你好 __USER_ID__ __USER_ID__</p>"_s));
    own.close();
    QVERIFY(InviteTemplate::load(dir.path(), &text, &error));
    QCOMPARE(text, u"<p>你好 __USER_ID__ __USER_ID__</p>"_s);

    // Every placeholder, every time; values escaped for HTML; the memo keeps
    // its lines; a value holding a placeholder's name is not filled again.
    const InviteRecipient recipient { u"张三"_s, u"z@x.cn"_s, u"__OFFICE__"_s, u"p\"<&>"_s };
    const QString html
        = InviteTemplate::fill(InviteTemplate::DefaultText, sampleFields(), recipient);
    for (const QString &name : Placeholders) {
        QVERIFY2(html.count(name) == (name == u"__OFFICE__"_s ? 1 : 0), qPrintable(name));
    }
    QVERIFY(html.contains(u"<b>__OFFICE__</b>"_s));
    QVERIFY(html.contains(u"p&quot;&lt;&amp;&gt;"_s));
    QVERIFY(html.contains(u"第一行<br>\n&lt;script&gt;x&lt;/script&gt;"_s));
    QVERIFY(html.contains(u"href=\"https://dl.example.cn/client?a=1&amp;b=2\""_s));
    QVERIFY(html.contains(u"信息中心 &lt;IT&gt; &amp; 总务"_s));
    QVERIFY(html.contains(u"Velmar Messenger 3 "_s));
    QCOMPARE(InviteTemplate::fillPlain(InviteTemplate::DefaultSubject, sampleFields(), recipient),
        u"维尔马 企业版 用户登记通知"_s);

    // The server's name is the clients' caption-bar name.
    const QString ini = dir.filePath(u"Serverinfo.ini"_s);
    QVERIFY(ProfileFile(ini).writeString(u"SettingInfo"_s, u"CaptionBarName"_s, u"维尔马"_s));
    const InviteFields fields = InviteTemplate::serverFields(ini);
    QCOMPARE(fields.serverName, u"维尔马"_s);
    QVERIFY(!fields.majorVersion.isEmpty() && !fields.majorVersion.contains(u'.'));
    QCOMPARE(InviteTemplate::majorVersion(u"12.3.4"_s), u"12"_s);
}

void InviteMailTest::messageDecodesBack()
{
    // A subject long enough to need several encoded words on folded lines.
    const QString subject = u"维尔马信息系统 用户登记通知 — 请尽快登录并修改密码, 谢谢合作 "
                            "(Velmar Messenger 企业版 第三版)"_s;
    const InviteRecipient recipient { u"O'Brien \"Jr\""_s, u"ob@x.cn"_s, u"obrien"_s, u"pw"_s };
    const QString html
        = InviteTemplate::fill(InviteTemplate::DefaultText, sampleFields(), recipient);
    const QByteArray message
        = InviteMessage::build({ MailAddress { u"系统管理员 (IT)"_s, u"admin@velmar.test"_s },
            MailAddress { recipient.name, recipient.email }, subject, html,
            QDateTime(QDate(2026, 3, 1), QTime(9, 30), Qt::OffsetFromUTC, 8 * 3600) });
    // Every line within the limit, CR LF throughout, no bare LF.
    for (const QByteArray &line : message.split('\n')) {
        QVERIFY2(line.size() <= 78 || line.startsWith("Content-Type"), line.constData());
        QVERIFY(line.isEmpty() || line.endsWith('\r') || line == message.split('\n').constLast());
    }
    QVERIFY(!message.contains("维尔马")); // headers and bodies are 7-bit

    QString error;
    const QJsonObject parsed = SmtpTestServer::parse(message, &error);
    QVERIFY2(!parsed.isEmpty(), qPrintable(error));
    QCOMPARE(parsed[u"defects"_s].toInt(), 0);
    QCOMPARE(parsed[u"subject"_s].toString(), subject);
    QCOMPARE(parsed[u"from"_s][u"name"_s].toString(), u"系统管理员 (IT)"_s);
    QCOMPARE(parsed[u"from"_s][u"address"_s].toString(), u"admin@velmar.test"_s);
    QCOMPARE(parsed[u"to"_s][u"name"_s].toString(), recipient.name);
    QCOMPARE(parsed[u"to"_s][u"address"_s].toString(), recipient.email);
    QCOMPARE(parsed[u"date"_s].toString(), u"Sun, 01 Mar 2026 09:30:00 +0800"_s);
    QVERIFY(parsed[u"messageId"_s].toString().endsWith(u"@velmar.test>"_s));
    QCOMPARE(parsed[u"types"_s].toArray().toVariantList(),
        QVariantList({ u"multipart/alternative"_s, u"text/plain"_s, u"text/html"_s }));
    QCOMPARE(parsed[u"html"_s].toString().replace(u"\r\n"_s, u"\n"_s), html);

    // The plain part: the page's text, entities decoded, links after their text.
    const QString plain = parsed[u"plain"_s].toString().replace(u"\r\n"_s, u"\n"_s);
    QVERIFY2(plain.contains(u"用户ID: obrien\n密码: pw\n"_s), qPrintable(plain));
    QVERIFY(plain.contains(u"客户端下载: https://dl.example.cn/client?a=1&b=2\n"_s));
    QVERIFY(plain.contains(u"第一行\n<script>x</script>\n"_s));
    QVERIFY(plain.contains(u"请联系 信息中心 <IT> & 总务."_s));
    QVERIFY(!plain.contains(u"<p>"_s) && !plain.contains(u"<title>"_s));
}

void InviteMailTest::sendsOverSmtp_data()
{
    QTest::addColumn<SmtpTestServer::Mode>("mode");
    QTest::addColumn<SmtpSecurity>("security");
    QTest::addColumn<bool>("login");
    QTest::newRow("plain") << SmtpTestServer::Mode::Plain << SmtpSecurity::None << false;
    QTest::newRow("plain with login") << SmtpTestServer::Mode::Plain << SmtpSecurity::None << true;
    QTest::newRow("starttls with login")
        << SmtpTestServer::Mode::StartTls << SmtpSecurity::StartTls << true;
    QTest::newRow("implicit tls with login")
        << SmtpTestServer::Mode::Tls << SmtpSecurity::Tls << true;
}

void InviteMailTest::sendsOverSmtp()
{
    QFETCH(SmtpTestServer::Mode, mode);
    QFETCH(SmtpSecurity, security);
    QFETCH(bool, login);
    SmtpTestServer server;
    QString error;
    QVERIFY2(server.start(mode, login, &error), qPrintable(error));

    // Two mails over one sending, on the worker thread as the composer sends.
    const QList<InviteSendRun::Mail> mails {
        { u"admin@velmar.test"_s, u"z@x.cn"_s, sampleMessage(u"z@x.cn"_s) },
        { u"admin@velmar.test"_s, u"l@x.cn"_s, sampleMessage(u"l@x.cn"_s, u"李四"_s) },
    };
    InviteSendRun run(accountFor(server, security, login), mails);
    QSignalSpy sent(&run, &InviteSendRun::mailSent);
    QSignalSpy finished(&run, &InviteSendRun::finished);
    run.start();
    QVERIFY(finished.wait(60000));
    QCOMPARE(sent.size(), 2);
    for (const QList<QVariant> &arguments : sent) {
        const auto result = arguments.at(1).value<SmtpResult>();
        QVERIFY2(result.ok, qPrintable(result.text()));
    }

    QCOMPARE(server.messageCount(), 2);
    const QJsonObject envelope = server.envelope(2);
    QCOMPARE(envelope[u"from"_s].toString(), u"admin@velmar.test"_s);
    QCOMPARE(envelope[u"to"_s].toArray().first().toString(), u"l@x.cn"_s);
    QCOMPARE(envelope[u"tls"_s].toBool(), security != SmtpSecurity::None);
    QCOMPARE(envelope[u"authenticated"_s].toBool(), login);
    // What arrived is what was built, byte for byte (dots and all).
    QCOMPARE(server.message(2), mails.at(1).message);
}

void InviteMailTest::refusalsCarryTheServersAnswer()
{
    SmtpTestServer server;
    QString error;
    QVERIFY2(server.start(SmtpTestServer::Mode::StartTls, true, &error), qPrintable(error));
    SmtpSender sender(accountFor(server, SmtpSecurity::StartTls, true));

    // A refused recipient says why, in the server's words; the next mail
    // on the same sender still goes.
    const SmtpResult refused = sender.send(
        u"admin@velmar.test"_s, u"refuse-me@x.cn"_s, sampleMessage(u"refuse-me@x.cn"_s));
    QVERIFY(!refused.ok);
    QVERIFY2(refused.serverReply.startsWith(u"550 5.1.1 <refuse-me@x.cn>: mailbox unavailable"_s),
        qPrintable(refused.text()));
    QVERIFY2(refused.error.contains(u"550"_s), qPrintable(refused.error));
    const SmtpResult next
        = sender.send(u"admin@velmar.test"_s, u"ok@x.cn"_s, sampleMessage(u"ok@x.cn"_s));
    QVERIFY2(next.ok, qPrintable(next.text()));
    QCOMPARE(server.messageCount(), 1);

    // A wrong password: the server's 535.
    SmtpAccount wrong = accountFor(server, SmtpSecurity::StartTls, true);
    wrong.password = u"nope"_s;
    const SmtpResult denied
        = SmtpSender(wrong).send(u"admin@velmar.test"_s, u"ok@x.cn"_s, sampleMessage(u"ok@x.cn"_s));
    QVERIFY(!denied.ok);
    QVERIFY2(denied.serverReply.startsWith(u"535"_s), qPrintable(denied.text()));

    // A certificate nobody vouches for is refused before anything is said;
    // STARTTLS demanded of a server without it is refused too.
    SmtpAccount untrusted = accountFor(server, SmtpSecurity::StartTls, true);
    untrusted.caFile.clear();
    const SmtpResult unverified = SmtpSender(untrusted).send(
        u"admin@velmar.test"_s, u"ok@x.cn"_s, sampleMessage(u"ok@x.cn"_s));
    QVERIFY(!unverified.ok);
    QVERIFY(!unverified.error.isEmpty());
    SmtpTestServer plain;
    QVERIFY2(plain.start(SmtpTestServer::Mode::Plain, false, &error), qPrintable(error));
    SmtpAccount demanding = accountFor(plain, SmtpSecurity::StartTls, false);
    demanding.caFile = server.caFile();
    QVERIFY(!SmtpSender(demanding)
                 .send(u"admin@velmar.test"_s, u"ok@x.cn"_s, sampleMessage(u"ok@x.cn"_s))
                 .ok);
    QCOMPARE(plain.messageCount(), 0);
    QCOMPARE(server.messageCount(), 1);
}

void InviteMailTest::settingsInTheRegistry()
{
    QTemporaryDir dir;
    RegistryHives hives(dir.path());
    QCOMPARE(InviteMailSettings::read(hives).effectivePort(), 587); // STARTTLS by default
    InviteMailSettings settings;
    settings.host = u"smtp.velmar.test"_s;
    settings.port = 2525;
    settings.security = SmtpSecurity::Tls;
    settings.sender = u"管理员 <admin@velmar.test>"_s;
    settings.user = u"admin"_s;
    settings.subject = u"邀请 __USER_ID__"_s;
    settings.office = u"信息中心"_s;
    settings.downloadUrl = u"https://dl.velmar.test/"_s;
    QVERIFY(settings.write(hives));
    const auto fields = [](const InviteMailSettings &s) {
        return QStringList { s.host, QString::number(s.port),
            InviteMailSettings::securityName(s.security), s.sender, s.user, s.subject, s.office,
            s.downloadUrl };
    };
    RegistryHives again(dir.path());
    QCOMPARE(fields(InviteMailSettings::read(again)), fields(settings));
    QFile hive(dir.filePath(u"HKEY_CURRENT_USER.reg"_s));
    QVERIFY(hive.open(QIODevice::ReadOnly));
    const QByteArray text = hive.readAll();
    QVERIFY(text.contains("Software\\Velmar\\VelmarManager]"));
    QVERIFY(text.contains("\"InviteSmtpSecurity\"=\"tls\""));
    QVERIFY(!text.toLower().contains("password"));

    QString host;
    quint16 port = 1;
    QVERIFY(InviteMailSettings::parseServer(u"mail.x.cn"_s, &host, &port));
    QCOMPARE(host, u"mail.x.cn"_s);
    QCOMPARE(port, 0);
    QVERIFY(InviteMailSettings::parseServer(u"[::1]:465"_s, &host, &port));
    QCOMPARE(host, u"::1"_s);
    QCOMPARE(port, 465);
    for (const QString &bad : { u""_s, u"x:0"_s, u"x:70000"_s, u"x:abc"_s, u"a b"_s, u"[::1"_s })
        QVERIFY2(!InviteMailSettings::parseServer(bad, &host, &port), qPrintable(bad));
}

QTEST_GUILESS_MAIN(InviteMailTest)
#include "tst_invitemail.moc"
