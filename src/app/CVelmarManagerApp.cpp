#include "CVelmarManagerApp.h"

#include "CLogManagerFilterDlg.h"
#include "CLogManagerUserLogFormView.h"
#include "CMainFormView.h"
#include "CMainFrame.h"
#include "CommandIds.h"
#include "COrganizeFormView.h"
#include "CRegistry.h"
#include "CVelmarManagerDoc.h"
#include "DamagedConfigLines.h"
#include "ImportSourcePage.h"
#include "ImportWizard.h"
#include "InviteComposer.h"
#include "LogTableModel.h"
#include "MemberGridView.h"
#include "ProfileFile.h"
#include "ProgramLauncher.h"
#include "QtMessageService.h"
#include "RegistryHives.h"
#include "ServerFolder.h"
#include "ServerFolderChoice.h"
#include "ServerFolderDialog.h"
#include "ServerServices.h"
#include "ServiceClock.h"
#include "ServiceCommands.h"
#include "SqlTrace.h"
#include "ViewIds.h"

#include <cstdio>
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QStatusBar>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
// In the order of StartupOptions::startViews().
int startViewId(const QString &name)
{
    static constexpr int ids[] = { ViewId::Home, ViewId::Organize, ViewId::Position,
        ViewId::AccessControl, ViewId::FileBox, ViewId::Notice, ViewId::ChatLog, ViewId::SystemLog,
        ViewId::UserLog, ViewId::Organize };
    const qsizetype at = StartupOptions::startViews().indexOf(name);
    return at < 0 ? ViewId::Home : ids[at];
}

void printLine(FILE *stream, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}
} // namespace

CVelmarManagerApp::CVelmarManagerApp(int &argc, char **argv)
    : QApplication(argc, argv)
{
    setApplicationName(u"VelmarManager"_s);
    setApplicationDisplayName(u"VelmarManager"_s);
    setApplicationVersion(QStringLiteral(VELMAR_VERSION));
    setOrganizationName(u"Velmar"_s);
}

CVelmarManagerApp::~CVelmarManagerApp()
{
    // The frame uses the hives, the message service and the trace: it goes first.
    m_frame.reset();
}

QString CVelmarManagerApp::readServerType(RegistryHives &hives)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\VelmarManager"_s))
        return {};
    qint32 number = 0;
    if (registry.readNumber(u"ServerType"_s, number))
        return QString::number(number);
    QString text;
    if (registry.readString(u"ServerType"_s, text))
        return text;
    return {};
}

bool CVelmarManagerApp::initInstance()
{
    QStringList arguments = QCoreApplication::arguments();
    const QString executableDir = QCoreApplication::applicationDirPath();
    if (!arguments.isEmpty())
        arguments.removeFirst();
    m_options
        = StartupOptions::parse(arguments, executableDir, qEnvironmentVariable("VELMAR_SERVER_DIR"),
            qEnvironmentVariable("VELMAR_REGISTRY_DIR"), ServerFolderChoice::remembered());
    if (m_options.help) {
        printLine(stdout, StartupOptions::usage());
        m_startupExitCode = 0;
        return false;
    }
    if (!m_options.error.isEmpty()) {
        printLine(stderr, u"VelmarManager: "_s + m_options.error);
        printLine(stderr, StartupOptions::usage());
        m_startupExitCode = 2;
        return false;
    }

    if (m_options.programDirectory.isEmpty() && !m_options.screenshotPath.isEmpty()) {
        // A screenshot run has nobody to answer the folder dialog.
        printLine(stderr,
            u"VelmarManager: "_s + ServerFolderChoice::describe(ServerFolderChoice::Choice {}));
        m_startupExitCode = 2;
        return false;
    }

    m_hives = ServerFolder(m_options.programDirectory, m_options.registryDirectory).openHives();
    m_messages = std::make_unique<QtMessageService>();
    if (!m_options.sqlTracePath.isEmpty()) {
        m_trace = std::make_unique<SqlTrace>(m_options.sqlTracePath);
        if (!m_trace->isOpen()) {
            printLine(stderr,
                u"VelmarManager: cannot write the SQL trace %1: %2"_s.arg(
                    m_options.sqlTracePath, m_trace->errorString()));
            m_startupExitCode = 2;
            return false;
        }
    }
    reportBrokenHives();

    if (m_options.programDirectory.isEmpty()) {
        ServerFolderDialog dialog(*m_hives, *m_messages, DialogHelpers::systemFolderChooser());
        if (dialog.exec() != QDialog::Accepted) {
            m_startupExitCode = 0;
            return false;
        }
        m_options.programDirectory = dialog.directory();
    }
    if (ServerFolderChoice::holdsServer(m_options.programDirectory))
        ServerFolderChoice::remember(m_options.programDirectory);

    registerServices();

    m_serverType = readServerType(*m_hives);

    createFrame();
    if (!m_options.screenshotPath.isEmpty()) {
        connect(m_frame.get(), &CMainFrame::startupReady, this, &CVelmarManagerApp::takeScreenshot,
            Qt::QueuedConnection);
    }

    if (!m_options.startView.isEmpty())
        m_frame->showView(startViewId(m_options.startView));
    // Before the screenshot's own wait for the load: the picture is the wizard's
    // or the composer's.
    if (m_options.startView == u"import"_s) {
        connect(m_frame.get(), &CMainFrame::loadingFinished, this,
            &CVelmarManagerApp::openImportWizard, Qt::SingleShotConnection);
    } else if (m_options.startView == u"invite"_s) {
        connect(m_frame.get(), &CMainFrame::loadingFinished, this,
            &CVelmarManagerApp::openInviteComposer, Qt::SingleShotConnection);
    }

    m_frame->show();
    return true;
}

void CVelmarManagerApp::createFrame()
{
    m_frame = std::make_unique<CMainFrame>(MainFrameContext { m_options.programDirectory, *m_hives,
        *m_messages, [] { return QDateTime::currentDateTime(); }, m_trace.get(), true,
        m_serviceManager.get() });
    m_messages->setMainWindow(m_frame.get());
    reportDamagedLines();
    m_messages->setBalloonsEnabled(m_frame->balloonHelp());
    connect(m_frame.get(), &CMainFrame::balloonHelpChanged, m_messages.get(),
        &QtMessageService::setBalloonsEnabled);
    // Queued: the frame is replaced, which must not happen inside its own action.
    connect(m_frame->openServerFolderAction(), &QAction::triggered, this,
        &CVelmarManagerApp::switchServerFolder, Qt::QueuedConnection);
}

void CVelmarManagerApp::switchServerFolder()
{
    // The frame is replaced only between loads. Unsaved edits belong to the
    // folder they were made in: the frame asks to save them, as when it closes.
    if (m_frame->isLoading() || !m_frame->queryClose())
        return;
    ServerFolderDialog dialog(*m_hives, *m_messages, DialogHelpers::systemFolderChooser(),
        m_options.programDirectory, m_frame.get());
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_options.programDirectory = dialog.directory();
    ServerFolderChoice::remember(m_options.programDirectory);
    const int view = m_frame->currentViewId();
    m_messages->setMainWindow(nullptr);
    m_frame.reset();
    createFrame();
    m_frame->showView(view);
    m_frame->show();
}

void CVelmarManagerApp::registerServices()
{
    m_serviceManager = ServiceManager::createPlatformManager();
    ThreadSleepClock clock;
    DetachedProcessLauncher launcher;
    ServiceControl control(*m_serviceManager, clock, launcher, m_options.programDirectory);
    ServerServices services(control);
    if (m_options.install)
        services.RegisterAllServices();
    services.EnsureServicesRegistered();
}

void CVelmarManagerApp::reportBrokenHives()
{
    // A hive that cannot be parsed is never written; say once which line is at fault.
    for (RegistryRoot root : { RegistryRoot::LocalMachine, RegistryRoot::CurrentUser }) {
        const QString error = m_hives->hive(root).parseError();
        if (error.isEmpty())
            continue;
        m_messages->showMessage(
            { u"注册表文件有错误, 本程序不会修改它:\n%1"_s.arg(error), u"VelmarManager"_s,
                MessageService::Buttons::Ok, MessageService::Icon::Error, nullptr });
    }
}

void CVelmarManagerApp::reportDamagedLines()
{
    // Serverinfo.ini is only rewritten with damaged lines when the
    // administrator agrees; they are kept, as comments.
    const QString profilePath = m_frame->profilePath();
    const QStringList profileLines = DamagedConfigLines::ofProfile(profilePath);
    // A screenshot run has nobody to answer; the file then stays as it is.
    if (!profileLines.isEmpty() && m_options.screenshotPath.isEmpty()) {
        const int answer = m_messages->showMessage(
            { u"服务器信息文件有错误的行, 已跳过:\n%1\n\n是否把这些行改为注释, 以便本程序可以修改这个文件?"_s
                    .arg(profileLines.join(u'\n')),
                u"VelmarManager"_s, MessageService::Buttons::YesNo, MessageService::Icon::Question,
                nullptr });
        if (answer == MessageService::Yes)
            ProfileFile(profilePath).commentOutDamagedLines();
    }
    const QStringList lines = DamagedConfigLines::of(*m_hives, profilePath);
    if (!lines.isEmpty()) {
        m_frame->statusBar()->showMessage(u"已跳过有错误的行: "_s + lines.join(u"; "_s));
        m_frame->statusBar()->setToolTip(lines.join(u'\n')); // the line may be cut
    }
}

void CVelmarManagerApp::takeScreenshot()
{
    if (m_frame->isLoading()) {
        // The data views should show the loaded data.
        connect(m_frame.get(), &CMainFrame::loadingFinished, this,
            &CVelmarManagerApp::takeScreenshot, Qt::SingleShotConnection);
        return;
    }
    CMainFormView *dashboard = m_frame->dashboard();
    if (dashboard->databaseState() == CMainFormView::DatabaseState::Checking) {
        // The picture should show the database check's outcome.
        connect(dashboard, &CMainFormView::databaseChecked, this,
            &CVelmarManagerApp::takeScreenshot, Qt::SingleShotConnection);
        return;
    }
    ServiceCommands *services = m_frame->serviceCommands();
    if (!services->statesShown()) {
        // The picture should show the daemons' states too.
        connect(services, &ServiceCommands::statesRefreshed, this,
            &CVelmarManagerApp::takeScreenshot, Qt::SingleShotConnection);
        return;
    }
    if (auto *logView = qobject_cast<LogFormView *>(m_frame->view(m_frame->currentViewId()))) {
        prepareLogViewScreenshot(logView);
        return;
    }
    grabScreenshot();
}

void CVelmarManagerApp::prepareLogViewScreenshot(LogFormView *view)
{
    // The names in the list come from the directory: wait for it, but not
    // for ever when the database cannot be read.
    if (m_frame->serverData()->loadState() == CVelmarManagerDoc::LoadState::NotLoaded
        && !m_directoryWaitOver) {
        m_directoryWaitOver = true;
        connect(
            m_frame->serverData(), &CVelmarManagerDoc::adopted, this,
            [this, view] { prepareLogViewScreenshot(view); }, Qt::SingleShotConnection);
        QTimer::singleShot(15000, view, [this, view] {
            if (m_frame->serverData()->loadState() == CVelmarManagerDoc::LoadState::NotLoaded)
                prepareLogViewScreenshot(view);
        });
        return;
    }
    if (m_logViewSearched)
        return;
    m_logViewSearched = true;
    connect(
        view->model(), &LogTableModel::searchFinished, this,
        [this, view] {
            // The user log shows a record in full, rich text and files if there is one.
            if (auto *userLog = qobject_cast<CLogManagerUserLogFormView *>(view)) {
                int row = userLog->firstRichTextRow(true);
                if (row < 0)
                    row = userLog->firstRichTextRow(false);
                if (row >= 0)
                    userLog->selectRow(row);
            } else if (view->model()->rowCount() > 0) {
                view->selectRow(0);
            }
            grabScreenshot();
        },
        Qt::SingleShotConnection);
    view->filterPanel()->choosePeriod(LogFilterRules::PeriodButton::Week);
    view->filterPanel()->search();
}

void CVelmarManagerApp::openImportWizard()
{
    if (!m_frame->commandAction(CommandId::UseExternalData)->isEnabled())
        return; // the load did not complete
    ImportWizard *wizard = m_frame->openImportWizard();
    // The demo folder's sample: the wizard reads it and shows its field page.
    const QString demo = QDir(m_options.programDirectory).filePath(u"ImportDemo.csv"_s);
    if (!QFileInfo::exists(demo))
        return;
    wizard->sourcePage()->setKind(ImportSourcePage::Kind::Text);
    if (wizard->sourcePage()->openTextFile(demo)) {
        wizard->next();
        wizard->next();
    }
}

void CVelmarManagerApp::openInviteComposer()
{
    // The first members with an address, as if selected in the member grid.
    auto *organize = qobject_cast<COrganizeFormView *>(m_frame->view(ViewId::Organize));
    if (!organize)
        return;
    MemberGridView *grid = organize->memberGrid(false);
    const int rows = std::min(grid->model()->rowCount() - 1, 4);
    if (rows <= 0)
        return;
    grid->selectionModel()->select(
        QItemSelection(grid->model()->index(0, 0), grid->model()->index(rows - 1, 0)),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    organize->runCommand(COrganizeFormView::Command::SendMail);
}

void CVelmarManagerApp::grabScreenshot()
{
    // Let the last repaint reach the backing store before grabbing.
    QTimer::singleShot(200, this, [this] {
        const QString path = m_options.screenshotPath;
        QWidget *shown = m_frame.get();
        if (ImportWizard *wizard = m_frame->importWizard())
            shown = wizard;
        else if (m_options.startView == u"invite"_s && m_frame->inviteComposer()->isVisible())
            shown = m_frame->inviteComposer();
        if (!shown->grab().save(path, "PNG")) {
            printLine(stderr, u"VelmarManager: cannot write %1"_s.arg(path));
            exit(1);
            return;
        }
        printLine(stdout, path);
        quit();
    });
}
