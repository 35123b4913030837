#include "TempServerDir.h"

#include "ProfileFile.h"
#include "RegistryHives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

TempServerDir::TempServerDir()
{
    m_dir.setAutoRemove(qEnvironmentVariableIsEmpty("VELMAR_KEEP_TEST_DIRS"));
    QDir().mkpath(programDir());
    QDir().mkpath(registryDir());
}

TempServerDir::~TempServerDir() = default;

bool TempServerDir::isValid() const
{
    return m_dir.isValid();
}

QString TempServerDir::root() const
{
    return m_dir.path();
}

QString TempServerDir::programDir() const
{
    return m_dir.filePath(u"server"_s);
}

QString TempServerDir::registryDir() const
{
    return m_dir.filePath(u"registry"_s);
}

QString TempServerDir::iniPath() const
{
    return filePath(u"Serverinfo.ini"_s);
}

QString TempServerDir::savedVersion() const
{
    return ProfileFile(iniPath()).readString(u"GroupInfo"_s, u"Version"_s, u"absent"_s, 128);
}

QString TempServerDir::databasePath() const
{
    return filePath(u"VelmarDB.mdb"_s);
}

QString TempServerDir::filePath(const QString &relative) const
{
    return programDir() + u'/' + relative;
}

RegistryHives &TempServerDir::hives()
{
    if (!m_hives)
        m_hives = std::make_unique<RegistryHives>(registryDir());
    return *m_hives;
}

bool TempServerDir::writeFile(const QString &relative, const QByteArray &contents) const
{
    const QString path = filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(contents) == contents.size();
}

QByteArray TempServerDir::readFile(const QString &relative) const
{
    QFile file(filePath(relative));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}
