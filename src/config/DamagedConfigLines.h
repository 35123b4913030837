#pragma once

#include <QString>
#include <QStringList>

class RegistryHives;

// The lines of the two hive files and of the server information file that
// were read as damaged and skipped, one "file:line: reason" each, so that the
// console's status line and velmarctl --verbose can say where they are.
// Neither file is written while it has such lines (see RegistryHive and
// ProfileFile).
class DamagedConfigLines final
{
public:
    static QStringList of(const RegistryHives &hives, const QString &profilePath);
    static QStringList ofProfile(const QString &profilePath);
};
