#pragma once

#include "StartupOptions.h"

#include <memory>
#include <QApplication>

class CMainFrame;
class LogFormView;
class QtMessageService;
class RegistryHives;
class ServiceManager;
class SqlTrace;

// The one application object. It owns what the main frame is built with (the
// registry hives, the message boxes, the SQL trace) and the frame itself, and
// runs the start-up order.
class CVelmarManagerApp : public QApplication
{
    Q_OBJECT

public:
    CVelmarManagerApp(int &argc, char **argv);
    ~CVelmarManagerApp() override;

    // The start-up order; false when start-up ends without a window
    // (exitCode() then tells the shell why).
    bool initInstance();
    int startupExitCode() const { return m_startupExitCode; }

    const StartupOptions &options() const { return m_options; }
    // "/install" was given: the services are to be registered.
    bool installRequested() const { return m_options.install; }
    QString serverType() const { return m_serverType; }
    CMainFrame *mainFrame() const { return m_frame.get(); }

    // "ServerType" of HKLM SOFTWARE\Velmar\VelmarManager, creating the key when
    // it is missing; a number is given as its decimal text. Empty when the key
    // cannot be opened or created or the value cannot be read.
    static QString readServerType(RegistryHives &hives);

private:
    void createFrame();
    // "文件 → 打开服务器文件夹…": a new frame on the folder chosen.
    void switchServerFolder();
    void reportBrokenHives();
    // Serverinfo.ini's damaged lines (asks to turn them into comments) and
    // every skipped line of both files in the status line.
    void reportDamagedLines();
    // "/install": register every daemon; then, at every start, the missing ones.
    void registerServices();
    void takeScreenshot();
    // With --view: a log view searches the last week and shows a row first.
    void prepareLogViewScreenshot(LogFormView *view);
    void grabScreenshot();
    // --view import: the wizard over the loaded data.
    void openImportWizard();
    // --view invite: the composer with the first members of the member grid.
    void openInviteComposer();

    StartupOptions m_options;
    int m_startupExitCode = 0;
    QString m_serverType;
    std::unique_ptr<RegistryHives> m_hives;
    std::unique_ptr<QtMessageService> m_messages;
    std::unique_ptr<SqlTrace> m_trace;
    std::unique_ptr<ServiceManager> m_serviceManager;
    std::unique_ptr<CMainFrame> m_frame;
    bool m_directoryWaitOver = false;
    bool m_logViewSearched = false;
};
