#include "InviteMailSettings.h"

#include "ConsoleRegistryKey.h"
#include "CRegistry.h"

using namespace Qt::StringLiterals;

namespace {
const QString HostValue = u"InviteSmtpHost"_s;
const QString PortValue = u"InviteSmtpPort"_s;
const QString SecurityValue = u"InviteSmtpSecurity"_s;
const QString SenderValue = u"InviteSender"_s;
const QString UserValue = u"InviteSmtpUser"_s;
const QString SubjectValue = u"InviteSubject"_s;
const QString OfficeValue = u"InviteOffice"_s;
const QString DownloadValue = u"InviteDownloadUrl"_s;
const QString CaFileValue = u"InviteSmtpCaFile"_s;
} // namespace

InviteMailSettings InviteMailSettings::read(RegistryHives &hives)
{
    InviteMailSettings settings;
    CRegistry registry(hives, RegistryRoot::CurrentUser);
    if (!registry.openKey(RegistryRoot::CurrentUser, ConsoleRegistryKey))
        return settings;
    registry.readString(HostValue, settings.host);
    qint32 port = 0;
    if (registry.readNumber(PortValue, port) && port > 0 && port <= 65535)
        settings.port = quint16(port);
    QString security;
    if (registry.readString(SecurityValue, security))
        settings.security = parseSecurity(security).value_or(settings.security);
    registry.readString(SenderValue, settings.sender);
    registry.readString(UserValue, settings.user);
    registry.readString(SubjectValue, settings.subject);
    registry.readString(OfficeValue, settings.office);
    registry.readString(DownloadValue, settings.downloadUrl);
    registry.readString(CaFileValue, settings.caFile);
    return settings;
}

bool InviteMailSettings::write(RegistryHives &hives) const
{
    CRegistry registry(hives, RegistryRoot::CurrentUser);
    return registry.createKey(RegistryRoot::CurrentUser, ConsoleRegistryKey)
        && registry.writeString(HostValue, host) && registry.writeNumber(PortValue, port)
        && registry.writeString(SecurityValue, securityName(security))
        && registry.writeString(SenderValue, sender) && registry.writeString(UserValue, user)
        && registry.writeString(SubjectValue, subject) && registry.writeString(OfficeValue, office)
        && registry.writeString(DownloadValue, downloadUrl)
        && registry.writeString(CaFileValue, caFile);
}

quint16 InviteMailSettings::effectivePort() const
{
    return port != 0 ? port : defaultPort(security);
}

quint16 InviteMailSettings::defaultPort(SmtpSecurity security)
{
    switch (security) {
    case SmtpSecurity::None:
        return 25;
    case SmtpSecurity::StartTls:
        return 587;
    case SmtpSecurity::Tls:
        return 465;
    }
    return 25;
}

QString InviteMailSettings::securityName(SmtpSecurity security)
{
    switch (security) {
    case SmtpSecurity::None:
        return u"none"_s;
    case SmtpSecurity::StartTls:
        return u"starttls"_s;
    case SmtpSecurity::Tls:
        return u"tls"_s;
    }
    return {};
}

std::optional<SmtpSecurity> InviteMailSettings::parseSecurity(const QString &name)
{
    const QString lower = name.trimmed().toLower();
    if (lower == u"none"_s)
        return SmtpSecurity::None;
    if (lower == u"starttls"_s)
        return SmtpSecurity::StartTls;
    if (lower == u"tls"_s)
        return SmtpSecurity::Tls;
    return std::nullopt;
}

bool InviteMailSettings::parseServer(const QString &text, QString *host, quint16 *port)
{
    const QString trimmed = text.trimmed();
    QString hostPart = trimmed;
    QString portPart;
    if (trimmed.startsWith(u'[')) {
        const qsizetype close = trimmed.indexOf(u']');
        if (close < 0)
            return false;
        hostPart = trimmed.mid(1, close - 1);
        const QString rest = trimmed.mid(close + 1);
        if (!rest.isEmpty()) {
            if (!rest.startsWith(u':'))
                return false;
            portPart = rest.mid(1);
        }
    } else if (trimmed.count(u':') == 1) {
        hostPart = trimmed.section(u':', 0, 0);
        portPart = trimmed.section(u':', 1);
    }
    if (hostPart.isEmpty())
        return false;
    for (const QChar c : std::as_const(hostPart)) {
        if (c.isSpace() || c == u'/' || c == u'@' || c == u'?' || c == u'#')
            return false;
    }
    quint16 number = 0;
    if (!portPart.isEmpty()) {
        bool ok = false;
        const uint value = portPart.toUInt(&ok);
        if (!ok || value == 0 || value > 65535)
            return false;
        number = quint16(value);
    }
    *host = hostPart;
    *port = number;
    return true;
}
