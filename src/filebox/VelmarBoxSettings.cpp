#include "VelmarBoxSettings.h"

#include "CRegistry.h"

#include <QDir>
#include <QHostInfo>

using namespace Qt::StringLiterals;

const QString VelmarBoxSettings::KeyPath = u"SOFTWARE\\Velmar\\VelmarBoxServer"_s;
const QString VelmarBoxSettings::PortErrorText = u"端口错误，请重新设置."_s;

VelmarBoxSettings::VelmarBoxSettings(
    RegistryHives &hives, QString programDirectory, std::function<QString()> localAddress)
    : m_hives(hives)
    , m_programDirectory(std::move(programDirectory))
    , m_localAddress(std::move(localAddress))
{ }

QString VelmarBoxSettings::firstLocalAddress()
{
    const QString host = QHostInfo::localHostName();
    if (host.isEmpty())
        return {};
    const QHostInfo info = QHostInfo::fromName(host);
    for (const QHostAddress &address : info.addresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol)
            return address.toString();
    }
    return {};
}

QString VelmarBoxSettings::defaultHomeDirectory() const
{
    return QDir::toNativeSeparators(m_programDirectory + u"/VelmarBox"_s);
}

VelmarBoxSettings::Values VelmarBoxSettings::open()
{
    Values values;
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, KeyPath))
        return { QString(), QString(), 0, 0 };
    // Only a value that is not there gets its default written: one of another
    // type is the administrator's to repair, not ours to overwrite.
    auto missing = [&registry] { return registry.lastResult() == RegistryStatus::FileNotFound; };

    if (!registry.readString(u"Home Directory"_s, values.homeDirectory)) {
        values.homeDirectory = defaultHomeDirectory();
        if (missing())
            registry.writeString(u"Home Directory"_s, values.homeDirectory);
    }
    QDir().mkdir(QDir::fromNativeSeparators(values.homeDirectory));

    if (!registry.readNumber(u"Custom PASV min port"_s, values.minPort)) {
        values.minPort = DefaultMinPort;
        if (missing())
            registry.writeNumber(u"Custom PASV min port"_s, values.minPort);
    }
    if (!registry.readNumber(u"Custom PASV max port"_s, values.maxPort)) {
        values.maxPort = DefaultMaxPort;
        if (missing())
            registry.writeNumber(u"Custom PASV max port"_s, values.maxPort);
    }
    if (!registry.readString(u"Custom PASV IP"_s, values.pasvIp)) {
        values.pasvIp = m_localAddress ? m_localAddress() : QString();
        if (missing())
            registry.writeString(u"Custom PASV IP"_s, values.pasvIp);
    }
    return values;
}

bool VelmarBoxSettings::save(const Values &values)
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, KeyPath))
        return false;
    bool ok = registry.writeString(u"Home Directory"_s, values.homeDirectory);
    ok = registry.writeNumber(u"Custom PASV min port"_s, values.minPort) && ok;
    ok = registry.writeNumber(u"Custom PASV max port"_s, values.maxPort) && ok;
    ok = registry.writeString(u"Custom PASV IP"_s, values.pasvIp) && ok;
    return ok;
}
