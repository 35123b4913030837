#include "InviteCommand.h"

#include "ConsoleOutput.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "InviteMailSettings.h"
#include "InviteMessage.h"
#include "InviteRecipientList.h"
#include "InviteTemplate.h"
#include "SmtpPasswordStore.h"
#include "SmtpSender.h"

#include <QDateTime>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

const UserInfo *findMember(const Directory &directory, const QString &userId)
{
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        const int row = rows.rowOfLoginName(userId);
        if (row >= 0)
            return &rows.at(row);
    }
    return nullptr;
}

// mboxrd: "From " lines of a message get one more ">" so that the reader
// tells them from the separators.
QByteArray mboxEntry(const QString &sender, const QDateTime &date, const QByteArray &message)
{
    static const QRegularExpression fromLine(u"^(>*From )"_s, QRegularExpression::MultilineOption);
    QString text = QString::fromUtf8(message);
    text.replace(u"\r\n"_s, u"\n"_s);
    text.replace(fromLine, u">\\1"_s);
    const QString separator = u"From %1 %2\n"_s.arg(
        sender, QLocale::c().toString(date.toUTC(), u"ddd MMM d hh:mm:ss yyyy"_s));
    return (separator + text + u'\n').toUtf8();
}

} // namespace

bool InviteCommand::check(const Options &options, QString *error)
{
    if (options.userIds.isEmpty()) {
        *error = u"expected invite USERID..."_s;
        return false;
    }
    QString host;
    quint16 port = 0;
    if (!options.smtp.isEmpty() && !InviteMailSettings::parseServer(options.smtp, &host, &port)) {
        *error = u"--smtp needs HOST or HOST:PORT"_s;
        return false;
    }
    if (!options.security.isEmpty() && !InviteMailSettings::parseSecurity(options.security)) {
        *error = u"--security is none, starttls or tls"_s;
        return false;
    }
    if (!options.from.isEmpty() && MailAddress::parse(options.from).address.isEmpty()) {
        *error = u"--from needs a mail address"_s;
        return false;
    }
    return true;
}

int InviteCommand::run(const Options &options, const CVelmarManagerDoc &document,
    RegistryHives &hives, const QString &serverDir, const QString &profilePath)
{
    InviteMailSettings settings = InviteMailSettings::read(hives);
    if (!options.smtp.isEmpty()) {
        InviteMailSettings::parseServer(options.smtp, &settings.host, &settings.port);
    }
    if (!options.security.isEmpty())
        settings.security = *InviteMailSettings::parseSecurity(options.security);
    if (!options.from.isEmpty())
        settings.sender = options.from;
    if (!options.user.isEmpty())
        settings.user = options.user;
    if (!options.caFile.isEmpty())
        settings.caFile = options.caFile;

    const MailAddress sender = MailAddress::parse(settings.sender);
    if (sender.address.isEmpty()) {
        printTo(stderr,
            u"velmarctl: no sender address: give --from or set it in the console's mail "
            "composer\n"_s);
        return UsageError;
    }
    if (!options.dryRun && settings.host.isEmpty()) {
        printTo(stderr,
            u"velmarctl: no SMTP server: give --smtp or set it in the console's mail composer\n"_s);
        return UsageError;
    }

    // Every user ID is looked up before anything is sent: a typo sends nobody.
    QList<const UserInfo *> members;
    bool unknown = false;
    for (const QString &userId : options.userIds) {
        const UserInfo *member = findMember(*document.directory(), userId);
        if (!member) {
            printTo(stderr, u"velmarctl: no member has the user ID %1\n"_s.arg(userId));
            unknown = true;
        }
        members.append(member);
    }
    if (unknown)
        return NotFound;

    QString templateText;
    QString error;
    if (!InviteTemplate::load(serverDir, &templateText, &error)) {
        printTo(stderr, u"velmarctl: cannot read the mail template %1\n"_s.arg(error));
        return UsageError;
    }
    InviteFields fields = InviteTemplate::serverFields(profilePath);
    fields.office = settings.office;
    fields.downloadUrl = settings.downloadUrl;
    fields.memo = options.memo;
    const QString subject
        = settings.subject.isEmpty() ? InviteTemplate::DefaultSubject : settings.subject;

    SmtpAccount account;
    account.host = settings.host;
    account.port = settings.effectivePort();
    account.security = settings.security;
    account.user = settings.user;
    account.caFile = settings.caFile;
    if (!options.dryRun && !account.user.isEmpty()) {
        if (qEnvironmentVariableIsSet("VELMAR_SMTP_PASSWORD")) {
            account.password = qEnvironmentVariable("VELMAR_SMTP_PASSWORD");
        } else {
            const QString key
                = SmtpPasswordStore::accountKey(account.user, account.host, account.port);
            const SmtpPasswordStore::Result stored = SmtpPasswordStore().read(key);
            if (!stored.ok) {
                printTo(stderr,
                    u"velmarctl: no password for %1 in the keyring (%2); set "
                    "VELMAR_SMTP_PASSWORD or store it in the console's mail composer\n"_s.arg(
                        key, stored.error));
                return UsageError;
            }
            account.password = stored.password;
        }
    }

    std::unique_ptr<SmtpSender> smtp;
    if (!options.dryRun)
        smtp = std::make_unique<SmtpSender>(account);
    // Lines about the recipients go where the messages do not.
    FILE *report = options.dryRun ? stderr : stdout;
    InviteRecipientList list;
    bool failed = false;
    for (qsizetype i = 0; i < members.size(); ++i) {
        const UserInfo &member = *members.at(i);
        const InviteRecipient recipient
            = { member.displayName, member.email, member.loginName, member.password };
        if (!list.add(recipient)) {
            const bool duplicate = MailAddress::isUsable(member.email.trimmed());
            printTo(report,
                u"%1\t%2\tnot taken: %3\n"_s.arg(member.loginName, member.email.trimmed(),
                    duplicate ? u"the address is already a recipient"_s
                              : u"no usable e-mail address"_s));
            failed = true;
            continue;
        }
        const InviteRecipient &taken = list.recipients().constLast();
        const QDateTime now = QDateTime::currentDateTime();
        const QByteArray message
            = InviteMessage::build({ sender, MailAddress { taken.name, taken.email },
                InviteTemplate::fillPlain(subject, fields, taken),
                InviteTemplate::fill(templateText, fields, taken), now });
        if (options.dryRun) {
            printTo(stdout, QString::fromUtf8(mboxEntry(sender.address, now, message)));
            printTo(report, u"%1\t%2\tnot sent (dry run)\n"_s.arg(taken.userId, taken.email));
            continue;
        }
        const SmtpResult result = smtp->send(sender.address, taken.email, message);
        if (result.ok) {
            printTo(report, u"%1\t%2\tsent\n"_s.arg(taken.userId, taken.email));
        } else {
            printTo(
                report, u"%1\t%2\trefused: %3\n"_s.arg(taken.userId, taken.email, result.text()));
            failed = true;
        }
    }
    return failed ? Refused : Success;
}
