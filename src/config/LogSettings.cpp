#include "LogSettings.h"

#include "CRegistry.h"
#include "ProfileFile.h"

#include <QDir>

using namespace Qt::StringLiterals;

const QString LogSettings::KeyPath = u"SOFTWARE\\Velmar\\LogManager"_s;

LogSettings::LogSettings(RegistryHives &hives, QString programDirectory)
    : m_hives(hives)
    , m_programDirectory(std::move(programDirectory))
{ }

LogSettings::Values LogSettings::load() const
{
    Values values;
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.openKey(RegistryRoot::LocalMachine, KeyPath))
        return values;
    QString path;
    if (registry.readString(u"LogPath"_s, path))
        values.logPath = path;
    qint32 number = 0;
    if (registry.readNumber(u"DeleteLogAfterDuration"_s, number))
        values.deleteAfterDuration = number != 0;
    if (registry.readNumber(u"LogEnable"_s, number))
        values.logEnable = number != 0;
    if (registry.readNumber(u"KeepingDuration"_s, number))
        values.keepingDuration = number;
    return values;
}

QString LogSettings::shownPath(const Values &values) const
{
    if (!values.logPath.isEmpty())
        return values.logPath;
    return QDir::toNativeSeparators(m_programDirectory + u"/LogFiles"_s);
}

qint32 LogSettings::daysFromText(const QString &text)
{
    return ProfileFile::parseDecimal(text);
}

bool LogSettings::save(const Values &values)
{
    CRegistry registry(m_hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, KeyPath))
        return false;
    bool ok = registry.writeString(u"LogPath"_s, values.logPath);
    ok = registry.writeNumber(u"DeleteLogAfterDuration"_s, values.deleteAfterDuration ? 1 : 0)
        && ok;
    ok = registry.writeNumber(u"LogEnable"_s, values.logEnable ? 1 : 0) && ok;
    ok = registry.writeNumber(u"KeepingDuration"_s, values.keepingDuration) && ok;
    return ok;
}
