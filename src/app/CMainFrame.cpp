#include "CMainFrame.h"

#include "CAboutDlg.h"
#include "CAccessControlFormView.h"
#include "CAdminLoginDlg.h"
#include "CAdmSetupPasswordDlg.h"
#include "CClassTreeCtrl.h"
#include "CFileBoxFormView.h"
#include "CLogManagerChatLogFormView.h"
#include "CLogManagerSysLogFormView.h"
#include "CLogManagerUserLogFormView.h"
#include "CMainFormView.h"
#include "CNoticeFormView.h"
#include "CommandIds.h"
#include "ConsoleRegistryKey.h"
#include "COrganizeFormView.h"
#include "CPositionFormView.h"
#include "CProgressDlg.h"
#include "CReadDBThread.h"
#include "CRegistry.h"
#include "CVelmarManagerDoc.h"
#include "DataCheckDialog.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "GroupTreeModel.h"
#include "ImportWizard.h"
#include "InviteComposer.h"
#include "JournalView.h"
#include "MemberGridProxy.h"
#include "MemberGridView.h"
#include "MemberListModel.h"
#include "NoticeBoard.h"
#include "OnlineCommands.h"
#include "OutlookBar.h"
#include "PermissionEditor.h"
#include "PositionList.h"
#include "ProfileFile.h"
#include "SavePreviewDialog.h"
#include "SaveRecovery.h"
#include "SaveWaitDialog.h"
#include "ServerDataSaver.h"
#include "ServiceCommands.h"
#include "SettingsCommands.h"
#include "SmtpPasswordStore.h"
#include "VelmarBoxSettings.h"
#include "ViewIds.h"
#include "ViewRefusal.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenuBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {
struct ViewPlaceholder
{
    int id;
    QString group;
    QString caption;
    QStyle::StandardPixmap icon;
};

// The views of the features still to come keep their place in the bar, greyed.
const QList<ViewPlaceholder> &viewPlaceholders()
{
    static const QList<ViewPlaceholder> list = {
        { ViewId::Position, u"类别管理"_s, u"等级管理"_s, QStyle::SP_FileDialogListView },
        { ViewId::AccessControl, u"会员管理"_s, u"权限管理"_s, QStyle::SP_DialogApplyButton },
    };
    return list;
}
// An undo or redo action: "撤销" alone while there is nothing to undo, else
// followed by the step's text; enabled while there is.
QAction *journalAction(QObject *parent, DocumentUndoStack *stack, const QString &prefix,
    bool (DocumentUndoStack::*can)() const, QString (DocumentUndoStack::*text)() const,
    void (DocumentUndoStack::*canChanged)(bool),
    void (DocumentUndoStack::*textChanged)(const QString &), void (DocumentUndoStack::*run)())
{
    auto *action = new QAction(parent);
    const auto label = [action, prefix](const QString &step) {
        action->setText(step.isEmpty() ? prefix : prefix + u' ' + step);
    };
    action->setEnabled((stack->*can)());
    label((stack->*text)());
    QObject::connect(stack, canChanged, action, &QAction::setEnabled);
    QObject::connect(stack, textChanged, action, label);
    QObject::connect(action, &QAction::triggered, stack, run);
    return action;
}
} // namespace

CMainFrame::CMainFrame(const MainFrameContext &context, QWidget *parent)
    : QMainWindow(parent)
    , m_context(context)
    , m_folder(context.programDirectory)
    , m_programDirectory(m_folder.programDirectory())
    , m_accessDatabasePath(m_folder.accessDatabasePath())
    , m_profilePath(m_folder.profilePath())
    , m_document(new CVelmarManagerDoc(this))
    , m_session(
          context.hives, m_profilePath, m_accessDatabasePath, context.messages, context.sqlTrace)
{
    setObjectName(u"mainFrame"_s);
    if (!m_context.clock)
        m_context.clock = [] { return QDateTime::currentDateTime(); };

    readBalloonHelp();
    m_folder.prepareDatabaseSettings(m_context.hives);
    // A new default position goes to the server information file at once.
    m_document->setDefaultPositionWriter([path = m_profilePath](qint32 positionId) {
        ProfileFile profile(path);
        return PositionList::writeDefaultPositionId(profile, positionId);
    });

    createCommands();
    createJournal();
    createMenus();
    createToolBar();
    statusBar()->setObjectName(u"statusBar"_s);
    statusBar()->showMessage(u"就绪"_s);
    createCentralArea();
    connectServerData();
    // The log views first: the log settings item goes after them in their group.
    createLogViews();
    new SettingsCommands(*this);
    new OnlineCommands(*this,
        m_context.openUrl ? m_context.openUrl
                          : OnlineCommands::UrlOpener(&QDesktopServices::openUrl));
    m_serviceCommands = new ServiceCommands(*this, context.serviceManager);

    connect(m_document, &CVelmarManagerDoc::modifiedChanged, this, &CMainFrame::updateTitle);
    updateTitle();
    resize(1024, 720);
}

CMainFrame::~CMainFrame()
{
    // The document goes with the frame's children and empties its undo
    // stack on the way, which reports the edits as no longer pending: by
    // then this is no CMainFrame any more.
    disconnect(m_document, nullptr, this, nullptr);
}

void CMainFrame::readBalloonHelp()
{
    CRegistry registry(m_context.hives, RegistryRoot::CurrentUser);
    qint32 value = 1;
    if (!registry.openKey(RegistryRoot::CurrentUser, ConsoleRegistryKey)
        || !registry.readNumber(u"BalloonHelp"_s, value))
        value = 1;
    m_balloonHelp = value != 0;
}

DbConnection CMainFrame::OpenDBConnection()
{
    return m_session.OpenDBConnection();
}

QAction *CMainFrame::command(int id, const QString &label, bool enabled)
{
    auto *action = new QAction(label, this);
    action->setObjectName(u"command%1"_s.arg(id));
    action->setData(id);
    action->setEnabled(enabled);
    m_commands.insert(id, action);
    return action;
}

void CMainFrame::createCommands()
{
    using namespace CommandId;
    QStyle *st = style();

    // Commands whose feature is not built yet stay disabled until it is.
    command(SendRegistrationMail, u"登记发送邮件(设置文件)(&M)"_s);
    QAction *import = command(UseExternalData, u"使用外部数据(&O)"_s);
    import->setShortcut(QKeySequence(u"Ctrl+O"_s));
    import->setStatusTip(u"读取目录中的用户信息."_s);
    QAction *save = command(Save, u"保存(&S)"_s);
    save->setShortcut(QKeySequence(u"Ctrl+S"_s));
    save->setIcon(st->standardIcon(QStyle::SP_DialogSaveButton));
    QAction *exit = command(Exit, u"退出(&X)"_s, true);
    connect(exit, &QAction::triggered, this, &QWidget::close);

    command(AddCategory, u"添加 类别(&A)"_s);
    command(RenameCategory, u"修改 类别(&M)"_s);
    command(DeleteCategory, u"删除 类别(&D)"_s);
    command(AddMember, u"添加 用户(&U)"_s);
    command(DeleteMember, u"删除 用户(&R)"_s);
    command(AddRank, u"添加 等级(&A)"_s);
    command(RenameRank, u"修改 等级(&M)"_s);
    command(DeleteRank, u"删除 等级(&D)"_s);
    command(DeletePermission, u"删除 权限(&D)"_s);
    command(AssignPhoneNumbers, u"自动分配电话号码"_s);
    command(DataCheck, u"数据检查(&K)"_s);

    QAction *toolBar = command(ToolBar, u"工具栏(&T)"_s, true);
    toolBar->setCheckable(true);
    toolBar->setChecked(true);
    QAction *statusBarAction = command(StatusBar, u"状态栏(&S)"_s, true);
    statusBarAction->setCheckable(true);
    statusBarAction->setChecked(true);
    connect(
        statusBarAction, &QAction::toggled, this, [this](bool on) { statusBar()->setVisible(on); });
    QAction *balloon = command(BalloonHelp, u"帮助栏(&B)"_s, true);
    balloon->setCheckable(true);
    balloon->setChecked(m_balloonHelp);
    connect(balloon, &QAction::toggled, this, &CMainFrame::setBalloonHelp);

    command(StartServices, u"启动服务(&S)"_s)->setIcon(st->standardIcon(QStyle::SP_MediaPlay));
    command(StopServices, u"停止服务(&T)"_s)->setIcon(st->standardIcon(QStyle::SP_MediaStop));
    command(DatabaseSettings, u"数据库 设置/更改"_s);
    command(FileServiceSettings, u"文件服务管理(&F)"_s);

    command(CaptionSettings, u"版权设置 (&C)"_s);
    command(HomePageSettings, u"主页设置 (&H)"_s);
    command(MailSettings, u"邮件设置(&M)"_s);
    QAction *password = command(AdminPassword, u"管理员验证设置(&P)"_s, true);
    password->setIcon(st->standardIcon(QStyle::SP_DialogYesButton));
    connect(password, &QAction::triggered, this, &CMainFrame::showAdminPasswordSettings);

    QAction *home = command(QuickNavigation, u"快速导航(&Q)"_s, true);
    home->setIcon(st->standardIcon(QStyle::SP_DirHomeIcon));
    connect(home, &QAction::triggered, this, [this] { showView(ViewId::Home); });
    QAction *about = command(About, u"VelmarManager 信息(&A)"_s, true);
    about->setIcon(st->standardIcon(QStyle::SP_MessageBoxInformation));
    connect(about, &QAction::triggered, this, &CMainFrame::showAbout);
}

void CMainFrame::createJournal()
{
    DocumentUndoStack *stack = m_document->undoStack();
    // Labelled with the step they undo or redo ("撤销 添加用户 alice").
    m_undoAction = journalAction(this, stack, u"撤销"_s, &DocumentUndoStack::canUndo,
        &DocumentUndoStack::undoText, &DocumentUndoStack::canUndoChanged,
        &DocumentUndoStack::undoTextChanged, &DocumentUndoStack::undo);
    m_undoAction->setObjectName(u"undoAction"_s);
    m_undoAction->setShortcut(QKeySequence(u"Ctrl+Z"_s));
    m_redoAction = journalAction(this, stack, u"重做"_s, &DocumentUndoStack::canRedo,
        &DocumentUndoStack::redoText, &DocumentUndoStack::canRedoChanged,
        &DocumentUndoStack::redoTextChanged, &DocumentUndoStack::redo);
    m_redoAction->setObjectName(u"redoAction"_s);
    m_redoAction->setShortcut(QKeySequence(u"Ctrl+Y"_s));

    m_journalDock = new QDockWidget(u"修改记录"_s, this);
    m_journalDock->setObjectName(u"journalDock"_s);
    m_journalDock->setAllowedAreas(Qt::BottomDockWidgetArea | Qt::RightDockWidgetArea);
    m_journalView = new JournalView(stack, m_journalDock);
    m_journalView->setObjectName(u"journalView"_s);
    // Loads and saves empty the stack, so its first entry is always the
    // state the database holds.
    m_journalView->setEmptyLabel(u"已保存"_s);
    m_journalView->setCleanIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
    m_journalDock->setWidget(m_journalView);
    addDockWidget(Qt::BottomDockWidgetArea, m_journalDock);
    // Kept low under the views, which need the height.
    resizeDocks({ m_journalDock }, { 110 }, Qt::Vertical);

    QAction *toggle = m_journalDock->toggleViewAction();
    toggle->setObjectName(u"journalToggle"_s);
    toggle->setText(u"修改记录(&J)"_s);

    CRegistry registry(m_context.hives, RegistryRoot::CurrentUser);
    qint32 visible = 1;
    if (registry.openKey(RegistryRoot::CurrentUser, ConsoleRegistryKey)
        && registry.readNumber(u"JournalVisible"_s, visible) && visible == 0)
        m_journalDock->hide();
    m_journalHiddenAtStart = m_journalDock->isHidden();
}

void CMainFrame::writeJournalVisibility()
{
    // isHidden, not isVisible: the dock counts as shown while the window is
    // not (yet, or any more) on screen. A console the administrator was not
    // let into writes nothing, and an unchanged choice need not be written.
    if (!m_startupReady || m_journalDock->isHidden() == m_journalHiddenAtStart)
        return;
    CRegistry registry(m_context.hives, RegistryRoot::CurrentUser);
    if (registry.createKey(RegistryRoot::CurrentUser, ConsoleRegistryKey))
        registry.writeNumber(u"JournalVisible"_s, m_journalDock->isHidden() ? 0 : 1);
}

void CMainFrame::createMenus()
{
    using namespace CommandId;
    QMenuBar *bar = menuBar();
    bar->setObjectName(u"menuBar"_s);
    auto addMenu
        = [bar](const QString &title, const QString &name, const QList<QAction *> &actions) {
              QMenu *menu = bar->addMenu(title);
              menu->setObjectName(name);
              for (QAction *action : actions) {
                  if (action)
                      menu->addAction(action);
                  else
                      menu->addSeparator();
              }
              return menu;
          };
    auto c = [this](int id) { return m_commands.value(id); };

    m_openServerFolder = new QAction(u"打开服务器文件夹(&D)…"_s, this);
    m_openServerFolder->setObjectName(u"openServerFolder"_s);
    addMenu(u"文件(&F)"_s, u"menuFile"_s,
        { m_openServerFolder, nullptr, c(SendRegistrationMail), c(UseExternalData), nullptr,
            c(Save), nullptr, c(Exit) });
    addMenu(u"编辑(&E)"_s, u"menuEdit"_s,
        { m_undoAction, m_redoAction, nullptr, c(AddCategory), c(RenameCategory), c(DeleteCategory),
            nullptr, c(AddMember), c(DeleteMember), nullptr, c(AddRank), c(RenameRank),
            c(DeleteRank), nullptr, c(DeletePermission), nullptr, c(AssignPhoneNumbers),
            c(DataCheck) });
    addMenu(u"查看(&V)"_s, u"menuView"_s,
        { c(ToolBar), c(StatusBar), c(BalloonHelp), nullptr, m_journalDock->toggleViewAction() });
    addMenu(u"服务管理(&M)"_s, u"menuServices"_s,
        { c(StartServices), c(StopServices), nullptr, c(DatabaseSettings),
            c(FileServiceSettings) });
    addMenu(u"服务设置(&D)"_s, u"menuSettings"_s,
        { c(CaptionSettings), c(HomePageSettings), c(MailSettings), nullptr, c(AdminPassword) });

    // Connected and enabled by OnlineCommands.
    auto online = [this](const QString &label, const QString &name) {
        auto *action = new QAction(label, this);
        action->setObjectName(name);
        action->setEnabled(false);
        return action;
    };
    addMenu(u"帮助(&H)"_s, u"menuHelp"_s,
        { c(QuickNavigation), nullptr, online(u"更新版本"_s, u"onlineUpdate"_s),
            online(u"在线帮助(&H)"_s, u"onlineHelp"_s),
            online(u"网站主页(&W)"_s, u"onlineHomePage"_s), nullptr, c(About) });
}

void CMainFrame::createToolBar()
{
    using namespace CommandId;
    m_toolBar = addToolBar(u"工具栏"_s);
    m_toolBar->setObjectName(u"toolBar"_s);
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolBar->addAction(m_commands.value(Save));
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_commands.value(StartServices));
    m_toolBar->addAction(m_commands.value(StopServices));
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_commands.value(AdminPassword));
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_commands.value(QuickNavigation));
    m_toolBar->addAction(m_commands.value(About));

    QAction *toggle = m_commands.value(ToolBar);
    connect(toggle, &QAction::toggled, m_toolBar, &QWidget::setVisible);
    // The bar's own context menu hides it too; keep the menu check in step.
    connect(m_toolBar->toggleViewAction(), &QAction::toggled, toggle, &QAction::setChecked);
}

void CMainFrame::createCentralArea()
{
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(u"mainSplitter"_s);
    m_outlookBar = new OutlookBar(m_splitter);
    m_pane = new QStackedWidget(m_splitter);
    m_pane->setObjectName(u"viewPane"_s);
    m_splitter->addWidget(m_outlookBar);
    m_splitter->addWidget(m_pane);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setCollapsible(1, false);
    m_splitter->setSizes({ 150, 874 });
    setCentralWidget(m_splitter);

    m_dashboard = new CMainFormView(*this);
    addView(ViewId::Home, u"服务器管理"_s, u"快速导航"_s, m_dashboard,
        style()->standardIcon(QStyle::SP_ComputerIcon));
    createOrganizeView();
    for (const ViewPlaceholder &placeholder : viewPlaceholders()) {
        const QIcon icon = style()->standardIcon(placeholder.icon);
        if (QWidget *view = createEditView(placeholder.id))
            addView(placeholder.id, placeholder.group, placeholder.caption, view, icon);
        else
            m_outlookBar->addItem(
                placeholder.group, placeholder.id, placeholder.caption, icon, false);
    }
    const auto openFolder
        = [](const QString &folder) { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); };
    addView(ViewId::Notice, u"会员管理"_s, u"公告管理"_s,
        new CNoticeFormView(
            *m_document,
            [this](const QString &sessionId) {
                return QDir(NoticeBoard::uploadFolder(m_context.hives, m_programDirectory))
                    .filePath(sessionId);
            },
            openFolder),
        style()->standardIcon(QStyle::SP_FileDialogInfoView));
    addView(ViewId::FileBox, u"BOX编辑"_s, u"文件夹权限"_s,
        new CFileBoxFormView(*m_document, m_context.messages,
            [this] {
                // Read only: opening the settings would write their defaults.
                CRegistry registry(m_context.hives, RegistryRoot::LocalMachine);
                QString home;
                if (!registry.openKey(RegistryRoot::LocalMachine, VelmarBoxSettings::KeyPath)
                    || !registry.readString(u"Home Directory"_s, home) || home.isEmpty())
                    home = VelmarBoxSettings(m_context.hives, m_programDirectory)
                               .defaultHomeDirectory();
                return home;
            }),
        style()->standardIcon(QStyle::SP_DriveNetIcon));
    connect(m_outlookBar, &OutlookBar::viewSelected, this, &CMainFrame::showView);
    showView(ViewId::Home);
}

QWidget *CMainFrame::createEditView(int viewId)
{
    using namespace CommandId;
    switch (viewId) {
    case ViewId::Position: {
        auto *view = new CPositionFormView(*m_document, m_context.messages);
        CClassTreeCtrl *tree = view->tree();
        // "添加 等级" is always there; rename and delete need a position
        // selected in the view on screen.
        QAction *add = commandAction(AddRank);
        add->setEnabled(true);
        connect(add, &QAction::triggered, this, [this, tree] {
            showView(ViewId::Position);
            tree->addPosition();
        });
        connect(
            commandAction(RenameRank), &QAction::triggered, tree, &CClassTreeCtrl::renameSelected);
        connect(
            commandAction(DeleteRank), &QAction::triggered, tree, &CClassTreeCtrl::deleteSelected);
        auto update = [this, tree] {
            const bool enabled = m_currentView == ViewId::Position && tree->selectedRow() >= 0;
            commandAction(RenameRank)->setEnabled(enabled);
            commandAction(DeleteRank)->setEnabled(enabled);
        };
        connect(tree, &CClassTreeCtrl::positionSelectedChanged, this, update);
        connect(this, &CMainFrame::viewChanged, this, update);
        return view;
    }
    case ViewId::AccessControl: {
        auto *view = new CAccessControlFormView(*m_document, m_context.messages);
        QAction *remove = commandAction(DeletePermission);
        view->setPopupActions({ remove, commandAction(AssignPhoneNumbers) });
        connect(
            remove, &QAction::triggered, view, &CAccessControlFormView::deleteSelectedPermissions);
        auto update = [this, view] {
            commandAction(DeletePermission)
                ->setEnabled(
                    m_currentView == ViewId::AccessControl && !view->selectedMembers().isEmpty());
        };
        connect(view, &CAccessControlFormView::memberSelectionChanged, this, update);
        connect(this, &CMainFrame::viewChanged, this, update);
        return view;
    }
    default:
        return nullptr;
    }
}

void CMainFrame::createOrganizeView()
{
    auto *view = new COrganizeFormView(*m_document, m_context.messages, &m_context.hives);
    m_inviteComposer = new InviteComposer({ m_programDirectory, m_profilePath, m_context.hives,
                                              m_context.messages, SmtpPasswordStore() },
        this);
    m_inviteComposer->hide();
    view->setMailRecipientSink(m_inviteComposer);
    addView(ViewId::Organize, u"类别管理"_s, u"组织管理"_s, view,
        style()->standardIcon(QStyle::SP_DirIcon));

    // The edit menu's organisation commands act on this view while it is shown.
    using Command = COrganizeFormView::Command;
    const QList<std::pair<int, Command>> commands {
        { CommandId::AddCategory, Command::AddGroup },
        { CommandId::RenameCategory, Command::RenameGroup },
        { CommandId::DeleteCategory, Command::DeleteNode },
        { CommandId::AddMember, Command::AddMember },
        { CommandId::DeleteMember, Command::DeleteMembers },
        { CommandId::SendRegistrationMail, Command::SendMail },
    };
    for (const auto &[id, command] : commands) {
        connect(commandAction(id), &QAction::triggered, view, [this, view, command] {
            if (m_currentView == ViewId::Organize)
                view->runCommand(command);
        });
    }
    auto update = [this, view, commands] {
        for (const auto &[id, command] : commands)
            commandAction(id)->setEnabled(
                m_currentView == ViewId::Organize && view->isCommandEnabled(command));
    };
    connect(view, &COrganizeFormView::commandStateChanged, this, update);
    connect(this, &CMainFrame::viewChanged, this, update);
    connect(view, &COrganizeFormView::positionListRequested, this,
        [this] { showView(ViewId::Position); });
}

void CMainFrame::createLogViews()
{
    const LogViewContext context {
        m_context.hives,
        m_programDirectory,
        m_context.clock,
        m_document->directory(),
        [](const QString &folder) { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); },
    };
    addView(ViewId::ChatLog, u"日志管理"_s, u"对话记录"_s, new CLogManagerChatLogFormView(context),
        style()->standardIcon(QStyle::SP_FileDialogContentsView));
    addView(ViewId::SystemLog, u"日志管理"_s, u"系统日志"_s, new CLogManagerSysLogFormView(context),
        style()->standardIcon(QStyle::SP_FileDialogDetailedView));
    addView(ViewId::UserLog, u"日志管理"_s, u"用户日志"_s, new CLogManagerUserLogFormView(context),
        style()->standardIcon(QStyle::SP_FileIcon));
}

void CMainFrame::addView(
    int viewId, const QString &group, const QString &caption, QWidget *view, const QIcon &icon)
{
    if (QWidget *old = m_views.take(viewId)) {
        m_pane->removeWidget(old);
        old->deleteLater();
    }
    m_views.insert(viewId, view);
    m_pane->addWidget(view);
    m_outlookBar->addItem(group, viewId, caption, icon, true);
    if (viewId == m_currentView)
        m_pane->setCurrentWidget(view);
}

bool CMainFrame::showView(int viewId)
{
    QWidget *view = m_views.value(viewId);
    if (!view)
        return false;
    // The pane shows one view; the one it replaces is hidden by the stack.
    m_pane->setCurrentWidget(view);
    m_outlookBar->setCurrentView(viewId);
    if (m_currentView != viewId) {
        m_currentView = viewId;
        Q_EMIT viewChanged(viewId);
    }
    return true;
}

void CMainFrame::setBalloonHelp(bool enabled)
{
    m_balloonHelp = enabled;
    CRegistry registry(m_context.hives, RegistryRoot::CurrentUser);
    if (registry.createKey(RegistryRoot::CurrentUser, ConsoleRegistryKey))
        registry.writeNumber(u"BalloonHelp"_s, enabled ? 1 : 0);
    Q_EMIT balloonHelpChanged(enabled);
}

void CMainFrame::updateTitle()
{
    // "[*]" marks unsaved changes in the title bar.
    setWindowTitle(CVelmarManagerDoc::windowTitle() + u"[*]"_s);
    setWindowModified(m_document->isModified());
}

void CMainFrame::connectServerData()
{
    // Made once: every view edits this one working copy, and the save and the
    // close question read it.
    if (m_context.loadServerData)
        connect(this, &CMainFrame::startupReady, this, &CMainFrame::startLoading);
    connect(commandAction(CommandId::Save), &QAction::triggered, this, &CMainFrame::saveDocument);
    connect(commandAction(CommandId::DataCheck), &QAction::triggered, this, [this] {
        DataCheckDialog dialog(*m_document, m_session, m_profilePath, this);
        dialog.exec();
    });
    connect(commandAction(CommandId::AssignPhoneNumbers), &QAction::triggered, this,
        &CMainFrame::assignPhoneNumbers);
    connect(commandAction(CommandId::UseExternalData), &QAction::triggered, this,
        &CMainFrame::openImportWizard);
}

ImportWizard *CMainFrame::openImportWizard()
{
    if (m_importWizard)
        return m_importWizard;
    ImportWizardContext context {
        *m_document,
        m_programDirectory,
        [this](const EditRefusal &refusal) { showImportRefusal(refusal); },
        {},
        {},
    };
    auto *wizard = new ImportWizard(std::move(context), this);
    wizard->setAttribute(Qt::WA_DeleteOnClose);
    // The new members are in the member grid: show it.
    connect(wizard, &ImportWizard::imported, this, [this](const MemberImporter::Result &result) {
        if (result.added == 0 && !result.stopped())
            return;
        showView(ViewId::Organize);
        auto *view = qobject_cast<COrganizeFormView *>(m_views.value(ViewId::Organize));
        if (!view || result.ids.isEmpty())
            return;
        // The caret on the first new member, the rest below it.
        MemberGridView *grid = view->memberGrid(false);
        MemberGridProxy *proxy = grid->grid();
        const int row = proxy->members()->rowOfId(result.ids.first());
        const QModelIndex first = proxy->mapFromSource(proxy->members()->index(row, 0));
        if (!first.isValid())
            return;
        grid->selectionModel()->setCurrentIndex(
            first, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        grid->scrollTo(first);
    });
    m_importWizard = wizard;
    wizard->open();
    return wizard;
}

ImportWizard *CMainFrame::importWizard() const
{
    return m_importWizard;
}

void CMainFrame::showImportRefusal(const EditRefusal &refusal)
{
    // Where the member grid shows a refused new member: at its blank row.
    showView(ViewId::Organize);
    auto *view = qobject_cast<COrganizeFormView *>(m_views.value(ViewId::Organize));
    if (!view) {
        ::showRefusal(m_context.messages, refusal, this);
        return;
    }
    MemberGridView *grid = view->memberGrid(false);
    const QModelIndex cell = grid->model()->index(
        grid->model()->rowCount() - 1, refusal.column >= 0 ? refusal.column : 0);
    grid->scrollTo(cell);
    ::showRefusal(m_context.messages, refusal, grid->viewport(), grid->visualRect(cell));
}

bool CMainFrame::queryClose()
{
    if (!m_loadComplete)
        return true;
    ServerDataSaver saver(*m_document, m_session, m_context.messages, m_profilePath,
        m_context.hives, m_programDirectory);
    saver.setAskToMendProfile(true);
    return saver.saveOnClose();
}

void CMainFrame::startLoading()
{
    if (!takeConsoleLock()) {
        QMetaObject::invokeMethod(
            this, [this] { close(); }, Qt::QueuedConnection);
        return;
    }
    // A save that was cut short left its journal: it is finished (or
    // dropped, or the console quits) before anything reads the database,
    // which may hold emptied partitions.
    SaveRecovery recovery(m_session, m_context.messages, m_profilePath);
    SaveWaitDialog waiting(this);
    recovery.setLockWait(waiting.wait());
    if (recovery.runInteractive() == SaveRecovery::Decision::Quit) {
        QMetaObject::invokeMethod(
            this, [this] { close(); }, Qt::QueuedConnection);
        return;
    }

    auto *progress = new CProgressDlg(this);
    auto *reader = new CReadDBThread(m_context.hives, m_profilePath, m_accessDatabasePath,
        m_context.messages, *m_document, m_context.sqlTrace, this);
    connect(reader, &CReadDBThread::progressText, progress, &CProgressDlg::setText);
    connect(reader, &CReadDBThread::progressRange, progress, &CProgressDlg::setRange);
    connect(reader, &CReadDBThread::progressPosition, progress, &CProgressDlg::setPosition);
    connect(reader, &CReadDBThread::loadCompleted, this, [this] {
        m_loadComplete = true;
        // What works on the whole working copy waits for all of it.
        commandAction(CommandId::Save)->setEnabled(true);
        commandAction(CommandId::AssignPhoneNumbers)->setEnabled(true);
        commandAction(CommandId::DataCheck)->setEnabled(true);
        // Imported members are checked against the whole member list.
        commandAction(CommandId::UseExternalData)->setEnabled(true);
        showDirectoryCounts();
    });
    connect(reader, &CReadDBThread::workerExited, this, [this, progress, reader](int) {
        progress->close();
        progress->deleteLater();
        // A load that stopped on a row (a text in a number column, ...):
        // the data check names the rows, so that they can be mended.
        if (reader->loadResult().outcome == ServerDataLoader::Outcome::ReadFailed)
            commandAction(CommandId::DataCheck)->setEnabled(true);
        reader->deleteLater();
        QGuiApplication::restoreOverrideCursor();
        m_loading = false;
        Q_EMIT loadingFinished();
    });
    m_loading = true;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    progress->show();
    reader->start();
}

void CMainFrame::showDirectoryCounts()
{
    const Directory *directory = m_document->directory();
    const auto &regular = directory->regularTree()->tree();
    const auto &guest = directory->guestTree()->tree();
    const qint64 members = directory->memberCount();
    m_dashboard->setDirectoryCounts({
        { u"成员"_s, members },
        { u"群组"_s, qint64(regular.groupCount()) + guest.groupCount() },
        { u"所属关系"_s, qint64(regular.membershipCount()) + guest.membershipCount() },
    });
}

void CMainFrame::saveDocument()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    SaveWaitDialog waiting(this);
    ServerDataSaver saver(*m_document, m_session, m_context.messages, m_profilePath,
        m_context.hives, m_programDirectory);
    saver.setLockWait(waiting.wait());
    saver.setAskToMendProfile(true);
    saver.setPreviewAction([this, &saver] {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        SavePreviewDialog dialog(saver.preview(), this);
        QGuiApplication::restoreOverrideCursor();
        dialog.exec();
    });
    const ServerDataSaver::Result result = saver.save(false);
    QGuiApplication::restoreOverrideCursor();
    // Another program saved since the load, and the administrator chose its
    // data over the working copy's changes.
    if (result.outcome == ServerDataSaver::Outcome::ReloadRequested && !m_loading)
        startLoading();
}

bool CMainFrame::takeConsoleLock()
{
    if (m_consoleLock)
        return true;
    // Held for the console's life and released by the kernel when it ends,
    // a crash included: a lock that is held belongs to a running console.
    m_consoleLock
        = std::make_unique<ServerFolderLock>(ServerFolderLock::consolePathFor(m_profilePath));
    if (m_consoleLock->acquire(ServerFolderLock::Mode::Exclusive)
        != ServerFolderLock::Status::GaveUp)
        return true;
    MessageService::Box box;
    box.parent = this;
    box.text = secondConsoleText(m_programDirectory);
    box.buttons = MessageService::Buttons::YesNo;
    box.icon = MessageService::Icon::Exclamation;
    return m_context.messages.showMessage(box) == MessageService::Yes;
}

QString CMainFrame::secondConsoleText(const QString &folder)
{
    return u"另一个 VelmarManager 已经打开了这个服务器文件夹:\r\n%1\r\n\r\n"
           "两个控制台都保存时, 后保存的一方会被告知对方的更改并选择如何处理。\r\n"
           "是否继续?"_s.arg(QDir::toNativeSeparators(folder));
}

void CMainFrame::assignPhoneNumbers()
{
    const EditResult result = PermissionEditor(*m_document).assignTelephony();
    MessageService::Box box;
    box.parent = this;
    if (!result.ok()) {
        box.text = result.refusal->text;
        box.icon = result.refusal->icon;
    } else if (result.applied == 0 && result.skipped == 0) {
        box.text = u"所有会员都已有电话号码."_s;
        box.icon = MessageService::Icon::Information;
    } else {
        box.text = u"已分配电话号码: %1 个会员; 没有可用号码: %2 个会员."_s.arg(result.applied)
                       .arg(result.skipped);
        box.icon = result.skipped ? MessageService::Icon::Exclamation
                                  : MessageService::Icon::Information;
    }
    m_context.messages.showMessage(box);
}

void CMainFrame::closeEvent(QCloseEvent *event)
{
    if (!queryClose()) {
        event->ignore();
        return;
    }
    writeJournalVisibility();
    QMainWindow::closeEvent(event);
}

bool CMainFrame::event(QEvent *event)
{
    if (event->type() == QEvent::Paint && !m_firstPaintSeen) {
        m_firstPaintSeen = true;
        // Asked after this paint has finished, so that the window is on screen behind the dialog.
        QMetaObject::invokeMethod(this, &CMainFrame::runStartupPrompt, Qt::QueuedConnection);
    }
    return QMainWindow::event(event);
}

void CMainFrame::runStartupPrompt()
{
    QString digest;
    if (!AdminPasswordStore(m_context.hives).promptNeeded(&digest)) {
        m_startupReady = true;
        Q_EMIT startupReady();
        return;
    }
    auto *dialog = new CAdminLoginDlg(m_context.messages, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setExpectedDigest(digest);
    connect(dialog, &QDialog::finished, this, [this](int result) {
        if (result == QDialog::Accepted) {
            m_startupReady = true;
            Q_EMIT startupReady();
            return;
        }
        Q_EMIT startupRefused();
        // A close request, handled as if the administrator had closed the window.
        QMetaObject::invokeMethod(
            this, [this] { close(); }, Qt::QueuedConnection);
    });
    dialog->open();
}

void CMainFrame::showAdminPasswordSettings()
{
    auto *dialog = new CAdmSetupPasswordDlg(m_context.hives, m_context.messages, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void CMainFrame::showAbout()
{
    auto *dialog = new CAboutDlg(m_programDirectory, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}
