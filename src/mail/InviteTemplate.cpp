#include "InviteTemplate.h"

#include "BuildInfo.h"
#include "CaptionBarSettings.h"
#include "CodePage.h"
#include "ProductVersion.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <utility>

using namespace Qt::StringLiterals;

const QString InviteTemplate::FileName = u"Template.html"_s;

const QString InviteTemplate::DefaultSubject = u"__SERVER_NAME__ 用户登记通知"_s;

const QString InviteTemplate::DefaultText = uR"(<!DOCTYPE html>
<html>
<head>
<meta charset="utf-8">
<title>__SERVER_NAME__</title>
</head>
<body style="font-family: sans-serif;">
<h2>欢迎使用 __SERVER_NAME__</h2>
<p>您已登记为 Velmar Messenger __MAJOR_VERSION__ 的用户。请用下面的帐号登录:</p>
<table>
<tr><td>用户ID:</td><td><b>__USER_ID__</b></td></tr>
<tr><td>密码:</td><td><b>__USER_PASSWORD__</b></td></tr>
</table>
<p>客户端下载: <a href="__DOWNLOAD_URL__">__DOWNLOAD_URL__</a></p>
<p>__ADDITIONAL_MEMO__</p>
<p>如有问题, 请联系 __OFFICE__.</p>
</body>
</html>
)"_s;

QString InviteTemplate::path(const QString &programDirectory)
{
    return QDir(programDirectory).filePath(FileName);
}

bool InviteTemplate::load(const QString &programDirectory, QString *text, QString *error)
{
    const QString filePath = path(programDirectory);
    QFile file(filePath);
    if (file.open(QIODevice::ReadOnly)) {
        *text = CodePage::system().decodeServerFile(file.readAll());
        return true;
    }
    if (file.exists()) {
        *error = u"%1: %2"_s.arg(filePath, file.errorString());
        return false;
    }
    QSaveFile out(filePath);
    if (!out.open(QIODevice::WriteOnly) || out.write(DefaultText.toUtf8()) < 0 || !out.commit()) {
        *error = u"%1: %2"_s.arg(filePath, out.errorString());
        return false;
    }
    *text = DefaultText;
    return true;
}

namespace {

QList<std::pair<QString, QString>> values(
    const InviteFields &fields, const InviteRecipient &recipient)
{
    return {
        { u"__SERVER_NAME__"_s, fields.serverName },
        { u"__USER_ID__"_s, recipient.userId },
        { u"__USER_PASSWORD__"_s, recipient.password },
        { u"__ADDITIONAL_MEMO__"_s, fields.memo },
        { u"__MAJOR_VERSION__"_s, fields.majorVersion },
        { u"__OFFICE__"_s, fields.office },
        { u"__DOWNLOAD_URL__"_s, fields.downloadUrl },
    };
}

// One pass over the text: a value that happens to hold a placeholder's name
// stays as it is.
QString replaceAll(const QString &text, const QList<std::pair<QString, QString>> &pairs)
{
    QString out;
    out.reserve(text.size() + 256);
    qsizetype i = 0;
    while (i < text.size()) {
        const qsizetype next = text.indexOf(u"__"_s, i);
        if (next < 0)
            break;
        bool replaced = false;
        for (const auto &[name, value] : pairs) {
            if (QStringView(text).mid(next).startsWith(name)) {
                out += QStringView(text).mid(i, next - i);
                out += value;
                i = next + name.size();
                replaced = true;
                break;
            }
        }
        if (!replaced) {
            out += QStringView(text).mid(i, next + 1 - i);
            i = next + 1;
        }
    }
    out += QStringView(text).mid(i);
    return out;
}

} // namespace

QString InviteTemplate::fill(
    const QString &templateText, const InviteFields &fields, const InviteRecipient &recipient)
{
    QList<std::pair<QString, QString>> pairs = values(fields, recipient);
    for (auto &[name, value] : pairs) {
        value = value.toHtmlEscaped();
        if (name == u"__ADDITIONAL_MEMO__"_s) {
            value.replace(u"\r\n"_s, u"\n"_s);
            value.replace(u'\n', u"<br>\n"_s);
        }
    }
    return replaceAll(templateText, pairs);
}

QString InviteTemplate::fillPlain(
    const QString &text, const InviteFields &fields, const InviteRecipient &recipient)
{
    return replaceAll(text, values(fields, recipient));
}

QString InviteTemplate::majorVersion(const QString &productVersion)
{
    const QString trimmed = productVersion.trimmed();
    return trimmed.section(u'.', 0, 0);
}

InviteFields InviteTemplate::serverFields(const QString &profilePath)
{
    InviteFields fields;
    fields.serverName = CaptionBarSettings(profilePath).load().captionName;
    // A build without the version note still knows its project version.
    QString version = GetProductVersion({});
    if (version.isEmpty())
        version = BuildInfo::version();
    fields.majorVersion = majorVersion(version);
    return fields;
}
