#include "ServerFolderWriter.h"

#include "CRegistry.h"
#include "ProfileFile.h"
#include "RegistryHives.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

ServerFolderWriter::ServerFolderWriter(const QString &serverDir, const QString &registryDir)
    : m_folder(serverDir, registryDir)
{ }

QString ServerFolderWriter::databasePath() const
{
    return m_folder.accessDatabasePath();
}

QString ServerFolderWriter::logRoot() const
{
    return m_folder.filePath(u"LogFiles"_s);
}

QString ServerFolderWriter::uploadRoot() const
{
    return m_folder.filePath(u"VelmarFile2Upload"_s);
}

QString ServerFolderWriter::fileBoxRoot() const
{
    return m_folder.filePath(u"VelmarBox"_s);
}

bool ServerFolderWriter::writeProfile(const GeneratedData &data, QString *error) const
{
    const QString path = m_folder.profilePath();
    QFile::remove(path);
    // Written through the console's own profile code, so the file has the
    // code page and line endings of one the server installation leaves.
    ProfileFile profile(path);
    const std::pair<const char16_t *, std::pair<const char16_t *, QString>> entries[] = {
        { u"ServerInfo", { u"DefaultPositionID", QString::number(data.defaultPositionId) } },
        { u"ServerInfo", { u"UseDist", u"0"_s } },
        { u"ServerInfo", { u"FileTransMaxSize", u"100"_s } },
        { u"GroupInfo",
            { u"Version", QString::number(data.groupVersion).rightJustified(4, u'0') } },
        { u"DBInfo", { u"DBType", u"MDB"_s } },
        { u"SettingInfo", { u"HomePageURL", QString() } },
        { u"SettingInfo",
            { u"HomePageURL2",
                u"|Velmar 官方网站|http://www.velmar.com.cn/|企业邮箱|http://mail.velmar.com.cn/|"_s } },
        { u"SettingInfo", { u"CaptionBarName", u"Velmar Messenger 企业版"_s } },
        { u"SettingInfo", { u"UserDefineIconPath", QString() } },
        { u"SettingInfo", { u"UserDefineLogoPath", QString() } },
        { u"SettingInfo", { u"bDefaultIcon", u"1"_s } },
        { u"SettingInfo", { u"bDefaultLogo", u"1"_s } },
        { u"SettingInfo", { u"Version", u"3"_s } },
        { u"SettingInfo", { u"USESSO", u"0"_s } },
        { u"SettingInfo", { u"SSOURL", QString() } },
        { u"SettingInfo", { u"FORCEDMAILMODE", u"0"_s } },
    };
    for (const auto &[section, pair] : entries) {
        if (!profile.writeString(
                QString::fromUtf16(section), QString::fromUtf16(pair.first), pair.second)) {
            *error = u"cannot write %1"_s.arg(path);
            return false;
        }
    }
    return true;
}

bool ServerFolderWriter::writeRegistry(QString *error) const
{
    const QString registryDir = m_folder.registryDirectory();
    if (!QDir().mkpath(registryDir)) {
        *error = u"cannot create %1"_s.arg(registryDir);
        return false;
    }
    const std::unique_ptr<RegistryHives> hives = m_folder.openHives();
    CRegistry reg(*hives, RegistryRoot::LocalMachine);
    bool ok = true;
    auto key
        = [&](RegistryRoot root, const QString &path) { ok = reg.createKey(root, path) && ok; };
    auto text = [&](const QString &name, const QString &value) {
        ok = reg.writeString(name, value) && ok;
    };
    auto number
        = [&](const QString &name, qint32 value) { ok = reg.writeNumber(name, value) && ok; };

    key(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\Database"_s);
    text(u"ConnectionString"_s, m_folder.accessConnectionString());
    text(u"SetDBType"_s, u"MDB"_s);

    key(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\SessionFolder"_s);
    text(u"UploadPath"_s, uploadRoot());
    number(u"KeepingDuration"_s, 7);

    key(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\SessionDInfo"_s);
    number(u"SessionDCount"_s, 1);
    number(u"SessionDChanged"_s, 0);
    text(u"SessionD_0_Address"_s, u"127.0.0.1"_s);
    number(u"SessionD_0_Port"_s, 55056);
    number(u"SessionD_0_Enable"_s, 1);

    key(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\LogManager"_s);
    text(u"LogPath"_s, logRoot());
    number(u"DeleteLogAfterDuration"_s, 1);
    number(u"KeepingDuration"_s, 30);
    number(u"LogEnable"_s, 0);

    key(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\VelmarBoxServer"_s);
    text(u"Home Directory"_s, fileBoxRoot());
    text(u"Custom PASV IP"_s, u"127.0.0.1"_s);
    number(u"Custom PASV min port"_s, 55100);
    number(u"Custom PASV max port"_s, 55109);

    key(RegistryRoot::CurrentUser, u"Software\\Velmar\\VelmarManager"_s);
    number(u"BalloonHelp"_s, 1);
    reg.close();

    if (!ok)
        *error = u"cannot write the registry hives in %1 (status %2)"_s.arg(registryDir)
                     .arg(reg.lastResult());
    return ok;
}

bool ServerFolderWriter::writeUploads(const GeneratedData &data, QString *error) const
{
    for (const GenNotice &notice : data.notices) {
        if (notice.fileSessionId.isEmpty())
            continue;
        const QDir session(QDir(uploadRoot()).filePath(notice.fileSessionId));
        for (const GenUploadedFile &file : notice.files) {
            const QString path = session.filePath(file.relativePath);
            QDir().mkpath(QFileInfo(path).absolutePath());
            QFile out(path);
            if (!out.open(QIODevice::WriteOnly)
                || out.write(file.contents) != file.contents.size()) {
                *error = u"cannot write %1"_s.arg(path);
                return false;
            }
        }
    }
    return true;
}

bool ServerFolderWriter::writeFileBox(const GeneratedData &data, QString *error) const
{
    const QString root = fileBoxRoot();
    for (const GenFolder &folder : data.folders) {
        QString relative = folder.path;
        relative.replace(u'\\', u'/');
        const QString path = root + (relative.startsWith(u'/') ? QString() : u"/"_s) + relative;
        if (!QDir().mkpath(path)) {
            *error = u"cannot create %1"_s.arg(path);
            return false;
        }
    }
    if (!QDir().mkpath(root)) {
        *error = u"cannot create %1"_s.arg(root);
        return false;
    }
    return true;
}
