#include "OnlineCommands.h"

#include "BuildInfo.h"
#include "CMainFrame.h"
#include "COnlineSettingsDlg.h"
#include "OnlineAddresses.h"
#include "ProductVersion.h"
#include "UpdateDialog.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>

using namespace Qt::StringLiterals;

OnlineCommands::OnlineCommands(CMainFrame &frame, UrlOpener openUrl)
    : QObject(&frame)
    , m_frame(frame)
    , m_openUrl(std::move(openUrl))
    , m_update(frame.findChild<QAction *>(u"onlineUpdate"_s))
    , m_help(frame.findChild<QAction *>(u"onlineHelp"_s))
    , m_homePage(frame.findChild<QAction *>(u"onlineHomePage"_s))
    , m_smsPortal(new QAction(u"短信平台(&S)"_s, &frame))
    , m_settings(new QAction(u"在线服务设置(&O)..."_s, &frame))
{
    m_smsPortal->setObjectName(u"onlineSmsPortal"_s);
    m_settings->setObjectName(u"onlineSettings"_s);
    // After "网站主页" in the help menu.
    if (auto *menu = frame.menuBar()->findChild<QMenu *>(u"menuHelp"_s)) {
        const QList<QAction *> actions = menu->actions();
        const qsizetype at = actions.indexOf(m_homePage);
        QAction *before = at >= 0 ? actions.value(at + 1) : nullptr;
        menu->insertAction(before, m_smsPortal);
        menu->insertAction(before, m_settings);
    }
    connect(m_update, &QAction::triggered, this, &OnlineCommands::showUpdates);
    connect(m_help, &QAction::triggered, this, &OnlineCommands::openHelp);
    connect(m_homePage, &QAction::triggered, this, &OnlineCommands::openHomePage);
    connect(m_smsPortal, &QAction::triggered, this, &OnlineCommands::openSmsPortal);
    connect(m_settings, &QAction::triggered, this, &OnlineCommands::showSettings);
    refresh();
}

QString OnlineCommands::handbookPath(const QString &executableDir)
{
    const QString installed
        = QDir(executableDir).filePath(u"../share/doc/velmarmanager/handbook/index.html"_s);
    if (QFileInfo(installed).isFile())
        return QDir::cleanPath(installed);
#ifdef VELMAR_BUILD_HANDBOOK
    const QString built = QStringLiteral(VELMAR_BUILD_HANDBOOK);
    if (QFileInfo(built).isFile())
        return built;
#endif
    return {};
}

QHash<QString, QVersionNumber> OnlineCommands::installedVersions() const
{
    QHash<QString, QVersionNumber> versions { { u"VelmarManager"_s,
        QVersionNumber::fromString(BuildInfo::version()) } };
    for (const QString &daemon : { u"VelmarD"_s, u"GroupD"_s, u"RelayD"_s, u"ChatD"_s,
             u"FileDispatchD"_s, u"FileSessionD"_s, u"CheckD"_s, u"VelmarboxServerManager"_s }) {
        const QString version = GetProductVersion(m_frame.programDirectory() + u'/' + daemon);
        if (!version.isEmpty())
            versions.insert(daemon, QVersionNumber::fromString(version));
    }
    return versions;
}

void OnlineCommands::refresh()
{
    const OnlineAddresses addresses = OnlineAddresses::read(m_frame.hives());
    m_update->setEnabled(true);
    m_help->setEnabled(!handbookPath(QCoreApplication::applicationDirPath()).isEmpty());
    m_homePage->setEnabled(!addresses.homePage.isEmpty());
    m_smsPortal->setEnabled(!addresses.smsPortal.isEmpty());
    m_settings->setEnabled(true);
}

void OnlineCommands::open(const QUrl &url)
{
    if (!url.isEmpty() && !m_openUrl(url)) {
        m_frame.messages().showMessage({ u"无法打开 %1"_s.arg(url.toString()), u"VelmarManager"_s,
            MessageService::Buttons::Ok, MessageService::Icon::Exclamation, &m_frame });
    }
}

void OnlineCommands::showUpdates()
{
    UpdateDialog dialog(OnlineAddresses::read(m_frame.hives()).updateFeed, installedVersions(),
        m_frame.messages(), DialogHelpers::systemFolderChooser(), &m_frame);
    dialog.check();
    dialog.exec();
}

void OnlineCommands::openHelp()
{
    const QString path = handbookPath(QCoreApplication::applicationDirPath());
    if (!path.isEmpty())
        open(QUrl::fromLocalFile(path));
}

void OnlineCommands::openHomePage()
{
    open(OnlineAddresses::read(m_frame.hives()).homePage);
}

void OnlineCommands::openSmsPortal()
{
    open(OnlineAddresses::read(m_frame.hives()).smsPortal);
}

void OnlineCommands::showSettings()
{
    COnlineSettingsDlg dialog(m_frame.hives(), m_frame.messages(), &m_frame);
    if (dialog.exec() == QDialog::Accepted)
        refresh();
}
