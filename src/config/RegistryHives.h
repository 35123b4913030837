#pragma once

#include "RegistryHive.h"

#include <QString>

#include <memory>

// The two hive files of this machine. Passed to everything that reads or
// writes the registry, so tests point it at a temporary folder.
class RegistryHives
{
public:
    // Both hive files in directory.
    explicit RegistryHives(const QString &directory);
    // $VELMAR_REGISTRY_DIR when set; otherwise /etc/velmar/ for the machine
    // hive and ${XDG_CONFIG_HOME:-$HOME/.config}/velmar/ for the user hive.
    static std::unique_ptr<RegistryHives> fromEnvironment();

    RegistryHive &hive(RegistryRoot root);
    const RegistryHive &hive(RegistryRoot root) const;

private:
    RegistryHives(const QString &machineFile, const QString &userFile);
    std::unique_ptr<RegistryHive> m_machine;
    std::unique_ptr<RegistryHive> m_user;
};
