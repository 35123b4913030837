#include "DamagedConfigLines.h"

#include "ProfileFile.h"
#include "RegistryHives.h"

#include <QDir>

using namespace Qt::StringLiterals;

QStringList DamagedConfigLines::of(const RegistryHives &hives, const QString &profilePath)
{
    QStringList lines;
    for (const RegistryRoot root : { RegistryRoot::LocalMachine, RegistryRoot::CurrentUser }) {
        const QString error = hives.hive(root).parseError();
        if (!error.isEmpty())
            lines << error.split(u'\n');
    }
    return lines + ofProfile(profilePath);
}

QStringList DamagedConfigLines::ofProfile(const QString &profilePath)
{
    QStringList lines;
    if (profilePath.isEmpty())
        return lines;
    for (const ProfileFile::Damage &damage : ProfileFile(profilePath).damagedLines()) {
        lines << u"%1:%2: %3"_s.arg(QDir::toNativeSeparators(profilePath))
                     .arg(damage.line)
                     .arg(damage.text.trimmed().startsWith(u'[')
                             ? u"a section line must end with ']'"_s
                             : u"control characters or bytes that are no text"_s);
    }
    return lines;
}
