#include "RegistryHives.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

const QString MachineRoot = u"HKEY_LOCAL_MACHINE"_s;
const QString UserRoot = u"HKEY_CURRENT_USER"_s;

QString hiveFileName(const QString &rootName)
{
    return rootName + u".reg"_s;
}

} // namespace

RegistryHives::RegistryHives(const QString &directory)
    : RegistryHives(QDir(directory).filePath(hiveFileName(MachineRoot)),
        QDir(directory).filePath(hiveFileName(UserRoot)))
{ }

RegistryHives::RegistryHives(const QString &machineFile, const QString &userFile)
    // The machine hive holds the database connection string and the
    // administrator password digest: nobody but its owner may read it.
    : m_machine(std::make_unique<RegistryHive>(machineFile, MachineRoot, true))
    , m_user(std::make_unique<RegistryHive>(userFile, UserRoot, false))
{ }

std::unique_ptr<RegistryHives> RegistryHives::fromEnvironment()
{
    const QString directory = qEnvironmentVariable("VELMAR_REGISTRY_DIR");
    if (!directory.isEmpty())
        return std::make_unique<RegistryHives>(directory);

    QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (configHome.isEmpty()) {
        QString home = qEnvironmentVariable("HOME");
        if (home.isEmpty())
            home = QDir::homePath();
        configHome = home + u"/.config"_s;
    }
    return std::unique_ptr<RegistryHives>(
        new RegistryHives(u"/etc/velmar/"_s + hiveFileName(MachineRoot),
            configHome + u"/velmar/"_s + hiveFileName(UserRoot)));
}

RegistryHive &RegistryHives::hive(RegistryRoot root)
{
    return root == RegistryRoot::LocalMachine ? *m_machine : *m_user;
}

const RegistryHive &RegistryHives::hive(RegistryRoot root) const
{
    return root == RegistryRoot::LocalMachine ? *m_machine : *m_user;
}
