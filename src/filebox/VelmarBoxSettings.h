#pragma once

#include <functional>
#include <QString>

class RegistryHives;

// The file-box server's home folder and passive-mode address and port range,
// under SOFTWARE\Velmar\VelmarBoxServer of the machine hive. Opening fills in
// every missing value at once, so the server finds them even if the
// administrator cancels.
class VelmarBoxSettings final
{
public:
    struct Values
    {
        QString homeDirectory;
        QString pasvIp;
        qint32 minPort = DefaultMinPort;
        qint32 maxPort = DefaultMaxPort;
    };

    // localAddress: the local host's first IPv4 address, empty when the host
    // name does not resolve.
    VelmarBoxSettings(RegistryHives &hives, QString programDirectory,
        std::function<QString()> localAddress = &VelmarBoxSettings::firstLocalAddress);

    static const QString KeyPath; // SOFTWARE\Velmar\VelmarBoxServer
    static constexpr qint32 DefaultMinPort = 55100;
    static constexpr qint32 DefaultMaxPort = 55109;
    static constexpr qint32 LowestPort = 1024;
    static constexpr qint32 HighestPort = 65535;
    static const QString PortErrorText; // "端口错误，请重新设置."

    static QString firstLocalAddress();
    QString defaultHomeDirectory() const;

    // Reads the values, writing the default of each missing one, and creates
    // the home folder (one level; a failure is ignored). A value stored with
    // another type is shown as the default but left as it is.
    Values open();
    static bool portInRange(qint32 port) { return port >= LowestPort && port <= HighestPort; }
    static bool portsInOrder(qint32 minPort, qint32 maxPort) { return minPort < maxPort; }
    // Writes the four values; false when the key cannot be created.
    bool save(const Values &values);

private:
    RegistryHives &m_hives;
    QString m_programDirectory;
    std::function<QString()> m_localAddress;
};
