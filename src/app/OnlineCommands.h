#pragma once

#include <functional>
#include <QHash>
#include <QObject>
#include <QUrl>
#include <QVersionNumber>

class CMainFrame;
class QAction;

// The 帮助 menu's online entries: "更新版本" (the release feed), "在线帮助(&H)"
// (the handbook installed with the console, or the build's copy), "网站主页(&W)"
// and "短信平台(&S)" (addresses set in "在线服务设置(&O)..."), greyed while
// their address is not set.
class OnlineCommands final : public QObject
{
    Q_OBJECT

public:
    using UrlOpener = std::function<bool(const QUrl &)>;

    OnlineCommands(CMainFrame &frame, UrlOpener openUrl);

    QAction *updateAction() const { return m_update; }
    QAction *helpAction() const { return m_help; }
    QAction *homePageAction() const { return m_homePage; }
    QAction *smsPortalAction() const { return m_smsPortal; }
    QAction *settingsAction() const { return m_settings; }

    // The handbook's first page: installed beside the program
    // (<prefix>/share/doc/velmarmanager/handbook), else the build's copy;
    // empty when there is neither.
    static QString handbookPath(const QString &executableDir);
    // The console's and the daemons' versions, by product name.
    QHash<QString, QVersionNumber> installedVersions() const;

public Q_SLOTS:
    void showUpdates();
    void openHelp();
    void openHomePage();
    void openSmsPortal();
    void showSettings();

private:
    void refresh();
    void open(const QUrl &url);

    CMainFrame &m_frame;
    UrlOpener m_openUrl;
    QAction *m_update;
    QAction *m_help;
    QAction *m_homePage;
    QAction *m_smsPortal;
    QAction *m_settings;
};
