#include "SessionServerList.h"

#include "CRegistry.h"
#include "ProfileFile.h"

#include <QHostInfo>

using namespace Qt::StringLiterals;

const QString SessionServerList::InfoKeyPath = u"SOFTWARE\\Velmar\\Services\\SessionDInfo"_s;
const QString SessionServerList::FolderKeyPath = u"Software\\Velmar\\Services\\SessionFolder"_s;
const QString SessionServerList::PortText = u"55056"_s;
const QString SessionServerList::EnabledText = u"使用者"_s;
const QString SessionServerList::DisabledText = u"内部使用"_s;

namespace {
QString valueName(int index, const char *what)
{
    return u"SessionD_%1_%2"_s.arg(index).arg(QLatin1StringView(what));
}
} // namespace

SessionServerList::SessionServerList(RegistryHives &hives, QString profilePath)
    : m_hives(hives)
    , m_profilePath(std::move(profilePath))
{ }

QString SessionServerList::pickServerAddress(const QList<QHostAddress> &addresses)
{
    QString last;
    for (const QHostAddress &address : addresses) {
        bool ok = false;
        const quint32 ipv4 = address.toIPv4Address(&ok);
        if (!ok)
            continue;
        // The bytes in network order, each as "%u".
        last = u"%1.%2.%3.%4"_s.arg(ipv4 >> 24)
                   .arg((ipv4 >> 16) & 0xFF)
                   .arg((ipv4 >> 8) & 0xFF)
                   .arg(ipv4 & 0xFF);
        if (last != u"127.0.0.1"_s && !last.startsWith(u"169."_s))
            return last;
    }
    return last;
}

QString SessionServerList::GetLocalServerAddress()
{
    const QString host = QHostInfo::localHostName();
    if (host.isEmpty())
        return {};
    const QHostInfo info = QHostInfo::fromName(host);
    if (info.error() != QHostInfo::NoError)
        return {};
    return pickServerAddress(info.addresses());
}

QString SessionServerList::normalizeAddress(const QString &address)
{
    const QStringList parts = address.split(u'.');
    if (parts.size() != 4)
        return u"255.255.255.255"_s;
    QStringList numbers;
    for (const QString &part : parts) {
        const QString digits = part.trimmed();
        bool ok = false;
        const uint value = digits.toUInt(&ok, 10);
        if (digits.isEmpty() || !ok || value > 255 || digits.front() == u'+')
            return u"255.255.255.255"_s;
        numbers << QString::number(value);
    }
    return numbers.join(u'.');
}

bool SessionServerList::ReadSessionServerEntry(int index, SessionServerEntry &entry) const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath))
        return false;
    QString address;
    qint32 port = 0;
    qint32 enabled = 0;
    if (!registry.readString(valueName(index, "Address"), address))
        return false;
    if (!registry.readNumber(valueName(index, "Port"), port))
        return false;
    if (!registry.readNumber(valueName(index, "Enable"), enabled))
        return false;
    entry.address = address;
    entry.port = quint16(port);
    entry.enabled = enabled != 0;
    return true;
}

bool SessionServerList::WriteSessionServerEntry(int index, const SessionServerEntry &entry)
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath))
        return false;
    bool ok = registry.writeString(valueName(index, "Address"), entry.address);
    ok = registry.writeNumber(valueName(index, "Port"), entry.port) && ok;
    ok = registry.writeNumber(valueName(index, "Enable"), entry.enabled ? 1 : 0) && ok;
    return ok;
}

QList<SessionServerEntry> SessionServerList::LoadSessionServerList(
    const std::function<QString()> &localAddress)
{
    {
        CRegistry registry(m_hives, RegistryRoot::LocalMachine);
        if (!registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath)) {
            registry.createKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar"_s);
            registry.createKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services"_s);
            registry.createKey(RegistryRoot::LocalMachine, InfoKeyPath);
        }
        qint32 count = 0;
        const bool read = registry.isOpen() && registry.readNumber(u"SessionDCount"_s, count);
        // A count stored with another type is not overwritten: its entries stay
        // reachable once it is repaired, and the list simply shows none.
        const bool absent = !read && registry.lastResult() == RegistryStatus::FileNotFound;
        if (registry.isOpen() && (read ? count == 0 : absent)) {
            registry.close();
            WriteSessionServerEntry(
                0, { localAddress ? localAddress() : QString(), SessionPort, true });
            CRegistry counter(m_hives, RegistryRoot::LocalMachine);
            if (counter.openKey(RegistryRoot::LocalMachine, InfoKeyPath)) {
                counter.writeNumber(u"SessionDCount"_s, 1);
                counter.writeNumber(u"SessionDChanged"_s, 1);
            }
        }
    }

    qint32 count = 0;
    {
        CRegistry registry(m_hives, RegistryRoot::LocalMachine);
        if (!registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath)
            || !registry.readNumber(u"SessionDCount"_s, count))
            count = 0;
    }
    QList<SessionServerEntry> rows;
    for (int i = 0; i < count; ++i) {
        SessionServerEntry entry;
        if (!ReadSessionServerEntry(i, entry))
            entry = {};
        entry.address = normalizeAddress(entry.address);
        entry.port = SessionPort;
        rows.append(entry);
    }
    return rows;
}

qint32 SessionServerList::keepingDuration() const
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    qint32 days = 0;
    if (!registry.openKey(RegistryRoot::LocalMachine, FolderKeyPath)
        || !registry.readNumber(u"KeepingDuration"_s, days))
        return 0;
    return days;
}

int SessionServerList::fileTransMaxSize() const
{
    return ProfileFile(m_profilePath).readInt(u"ServerInfo"_s, u"FileTransMaxSize"_s, 0);
}

bool SessionServerList::save(
    const QList<SessionServerEntry> &rows, qint32 keepingDays, int maxSizeMb)
{
    {
        CRegistry registry(m_hives, RegistryRoot::LocalMachine);
        if (!registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath))
            return false;
    }
    for (int i = 0; i < rows.size(); ++i)
        WriteSessionServerEntry(i, rows.at(i));
    {
        CRegistry registry(m_hives, RegistryRoot::LocalMachine);
        if (registry.openKey(RegistryRoot::LocalMachine, InfoKeyPath)) {
            registry.writeNumber(u"SessionDCount"_s, qint32(rows.size()));
            registry.writeNumber(u"SessionDChanged"_s, 1);
        }
    }
    {
        CRegistry registry(m_hives, RegistryRoot::LocalMachine);
        if (registry.openKey(RegistryRoot::LocalMachine, FolderKeyPath))
            registry.writeNumber(u"KeepingDuration"_s, keepingDays);
    }
    ProfileFile(m_profilePath)
        .writeString(u"ServerInfo"_s, u"FileTransMaxSize"_s, QString::number(maxSizeMb));
    return true;
}
