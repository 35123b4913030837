#pragma once

#include "DbConnection.h"
#include "DbSession.h"
#include "MainFrameContext.h"
#include "ServerFolder.h"
#include "ServerFolderLock.h"

class CVelmarManagerDoc;

#include <memory>
#include <QHash>
#include <QMainWindow>
#include <QPointer>

class CMainFormView;
class InviteComposer;
class CVelmarManagerDoc;
class OutlookBar;
class QAction;
class QDockWidget;
class QSplitter;
class QStackedWidget;
class QToolBar;
class ImportWizard;
class JournalView;
struct EditRefusal;
class ServiceCommands;

// The main window: the command table as menus and tool bar, the outlook bar
// on the left and the form views in a splitter pane on the right. It owns the
// document and the database session; every operation reaches the database
// through its OpenDBConnection(). Built with its collaborators (MainFrameContext).
//
// Hooks for the features that come later:
// - commandAction(id): the QAction of every command; commands whose feature is
//   not built yet are disabled, and whoever builds one connects its
//   triggered() signal and enables it;
// - addView(): puts a form view into the pane and its item into the outlook bar;
// - startupReady(): emitted once after the administrator password gate (or at
//   once when there is no lock) - the place to start loading the data;
// - queryClose(): asked before the window closes (save-on-close question);
// - dashboard(): the home view, which shows what it is told about the
//   directory and the services.
class CMainFrame : public QMainWindow
{
    Q_OBJECT

public:
    explicit CMainFrame(const MainFrameContext &context, QWidget *parent = nullptr);
    ~CMainFrame() override;

    // Asked at start-up when another console has the server folder open.
    static QString secondConsoleText(const QString &folder);

    // Data model fixed at construction.
    QString programDirectory() const { return m_programDirectory; }
    QString accessDatabasePath() const { return m_accessDatabasePath; }
    QString profilePath() const { return m_profilePath; }
    bool balloonHelp() const { return m_balloonHelp; }

    RegistryHives &hives() const { return m_context.hives; }
    MessageService &messages() const { return m_context.messages; }
    SqlTrace *sqlTrace() const { return m_context.sqlTrace; }
    QDateTime now() const { return m_context.clock(); }

    CVelmarManagerDoc &document() const { return *m_document; }
    DbSession &dbSession() { return m_session; }
    // "DBAddr" set in Serverinfo.ini gives an empty handle; a failure to open
    // shows the database layer's one message box and gives an empty handle.
    DbConnection OpenDBConnection();

    // The working copy of the server data that the views edit and the save writes.
    CVelmarManagerDoc *serverData() const { return m_document; }

    CMainFormView *dashboard() const { return m_dashboard; }
    OutlookBar *outlookBar() const { return m_outlookBar; }
    QToolBar *mainToolBar() const { return m_toolBar; }
    // The invitation mail composer the organisation view's "登记发送邮件"
    // fills; a window of its own, hidden until then.
    InviteComposer *inviteComposer() const { return m_inviteComposer; }
    // The service-management commands (start, stop, database settings).
    ServiceCommands *serviceCommands() const { return m_serviceCommands; }

    // The action of a command id of the command table; nullptr for an unknown id.
    QAction *commandAction(int commandId) const { return m_commands.value(commandId); }
    QList<int> commandIds() const { return m_commands.keys(); }

    // Undo and redo of the document's edits, at the top of the edit menu;
    // they have no id in the command table.
    QAction *undoAction() const { return m_undoAction; }
    // "文件 → 打开服务器文件夹…": the application switches the frame to
    // another server folder.
    QAction *openServerFolderAction() const { return m_openServerFolder; }
    QAction *redoAction() const { return m_redoAction; }
    // The journal panel: the edits since the last save or load, the saved
    // state first; choosing an entry undoes or redoes up to it.
    QDockWidget *journalDock() const { return m_journalDock; }

    // Puts view into the pane (the frame takes it) and its item into the
    // outlook bar; an existing view or place holder with the same id is replaced.
    void addView(int viewId, const QString &group, const QString &caption, QWidget *view,
        const QIcon &icon = QIcon());
    QWidget *view(int viewId) const { return m_views.value(viewId); }
    int currentViewId() const { return m_currentView; }
    // Shows the view in the pane; false when there is no such view.
    bool showView(int viewId);

    // Command 32804: the import wizard, opened window-modal (the one open
    // already when there is one); it closes and deletes itself.
    ImportWizard *openImportWizard();
    ImportWizard *importWizard() const;

    // Asked before the window closes; false keeps it open. After a complete
    // load an edited working copy brings the save-on-close question.
    virtual bool queryClose();

    // True once the password gate of the first paint has been passed.
    bool isStartupReady() const { return m_startupReady; }
    // True while the loading worker runs.
    bool isLoading() const { return m_loading; }

public Q_SLOTS:
    void showAdminPasswordSettings();
    void showAbout();

Q_SIGNALS:
    // The administrator is let in (or there is no lock): the data may be loaded.
    void startupReady();
    // The administrator failed or cancelled the login; the window is closing.
    void startupRefused();
    void balloonHelpChanged(bool enabled);
    void viewChanged(int viewId);
    // The loading worker is done, whether the load completed or not.
    void loadingFinished();

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void connectServerData();
    // The journal dock is shown at start as it was at the last close.
    void writeJournalVisibility();
    // Reads the server data on a worker with the progress dialog shown; the
    // dashboard gets the counts once the data is in memory.
    void startLoading();
    void showDirectoryCounts();
    // Tells the administrator when another console has this server folder
    // open; false when they chose not to go on.
    bool takeConsoleLock();
    // Command 32781.
    void saveDocument();
    // Command 32827.
    void assignPhoneNumbers();
    // An import stopped at a refused row: its balloon at the member grid.
    void showImportRefusal(const EditRefusal &refusal);

    std::unique_ptr<ServerFolderLock> m_consoleLock;
    InviteComposer *m_inviteComposer = nullptr;
    bool m_loadComplete = false;
    bool m_loading = false;
    void readBalloonHelp();
    void createCommands();
    void createJournal();
    void createMenus();
    void createToolBar();
    void createCentralArea();
    // The view of a place in the outlook bar that is built already (the
    // position and permission views, with their commands wired), or nullptr.
    QWidget *createEditView(int viewId);
    // The organisation view and the edit menu's commands on it.
    void createOrganizeView();
    // The chat, system and user log views in the "日志管理" group.
    void createLogViews();
    QAction *command(int id, const QString &label, bool enabled = false);
    void setBalloonHelp(bool enabled);
    void runStartupPrompt();
    void updateTitle();

    MainFrameContext m_context;
    ServerFolder m_folder;
    QString m_programDirectory;
    QString m_accessDatabasePath;
    QString m_profilePath;
    bool m_balloonHelp = true;
    CVelmarManagerDoc *m_document;
    DbSession m_session;

    QHash<int, QAction *> m_commands;
    QAction *m_undoAction = nullptr;
    QAction *m_openServerFolder = nullptr;
    QAction *m_redoAction = nullptr;
    QDockWidget *m_journalDock = nullptr;
    JournalView *m_journalView = nullptr;
    bool m_journalHiddenAtStart = false;
    QToolBar *m_toolBar = nullptr;
    OutlookBar *m_outlookBar = nullptr;
    QSplitter *m_splitter = nullptr;
    QStackedWidget *m_pane = nullptr;
    CMainFormView *m_dashboard = nullptr;
    ServiceCommands *m_serviceCommands = nullptr;
    QPointer<ImportWizard> m_importWizard;
    QHash<int, QWidget *> m_views;
    int m_currentView = -1;

    // The password prompt runs once per program run, at the first paint.
    bool m_firstPaintSeen = false;
    bool m_startupReady = false;
};
