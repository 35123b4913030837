#include "ServiceCommands.h"

#include "CMainFormView.h"
#include "CMainFrame.h"
#include "CommandIds.h"
#include "CProgressDlg.h"
#include "MessageService.h"
#include "ServerNotification.h"

#include <memory>
#include <QAction>
#include <QCoreApplication>
#include <QDebug>
#include <QEventLoop>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QStatusBar>
#include <QThread>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// Tells the window which daemon the start thread is bringing up.
class StartReporter final : public ServerServices::Observer
{
public:
    explicit StartReporter(ServiceCommands &commands)
        : m_commands(commands)
    { }
    void starting(const QString &name) override { Q_EMIT m_commands.serviceStarting(name); }

private:
    ServiceCommands &m_commands;
};

class StopProgress final : public ServerServices::Observer
{
public:
    explicit StopProgress(CProgressDlg &dialog)
        : m_dialog(dialog)
    { }
    void stopStep(int step, const QString &name) override
    {
        m_dialog.setText(ServiceCommands::stoppingText(name));
        m_dialog.setPosition(step);
        // The stop blocks this thread between polls; paint the new step now.
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }

private:
    CProgressDlg &m_dialog;
};

} // namespace

ServiceCommands::ServiceCommands(CMainFrame &frame, ServiceManager *manager)
    : QObject(&frame)
    , m_frame(frame)
    , m_ownManager(manager ? nullptr : ServiceManager::createPlatformManager())
    , m_manager(manager ? *manager : *m_ownManager)
    , m_control(m_manager, m_clock, m_launcher, frame.programDirectory())
    , m_services(m_control)
    , m_refreshTimer(new QTimer(this))
    , m_notificationPort(ServerNotification::ServerPort)
{
    using namespace CommandId;
    QAction *start = frame.commandAction(StartServices);
    QAction *stop = frame.commandAction(StopServices);
    QAction *settings = frame.commandAction(DatabaseSettings);
    start->setStatusTip(u"Velmar Server开始服务."_s);
    stop->setStatusTip(u"Velmar Server停止服务."_s);
    connect(start, &QAction::triggered, this, &ServiceCommands::startServices);
    connect(stop, &QAction::triggered, this, &ServiceCommands::stopServices);
    connect(settings, &QAction::triggered, this, &ServiceCommands::changeDatabaseSettings);
    settings->setEnabled(true);

    // The enable handlers run whenever the menu is about to be shown.
    if (QMenu *menu = frame.menuBar()->findChild<QMenu *>(u"menuServices"_s))
        connect(menu, &QMenu::aboutToShow, this, &ServiceCommands::updateCommandStates);

    connect(this, &ServiceCommands::serviceStarting, &frame,
        [this](const QString &name) { m_frame.statusBar()->showMessage(startingText(name)); });

    frame.dashboard()->setServiceActions(start, stop);
    m_refreshTimer->setInterval(RefreshIntervalMs);
    connect(m_refreshTimer, &QTimer::timeout, this, &ServiceCommands::refreshStates);
    // Nothing of the server is read before the administrator is let in.
    connect(&frame, &CMainFrame::startupReady, this, [this] {
        updateCommandStates();
        refreshStates();
        m_refreshTimer->start();
    });
}

ServiceCommands::~ServiceCommands()
{
    // The start run owns nothing of the window, but it uses this object's
    // manager: let it finish before they go.
    for (QThread *thread : std::as_const(m_startThreads)) {
        thread->wait();
        delete thread;
    }
    if (m_refreshThread) {
        m_refreshThread->wait();
        delete m_refreshThread;
    }
}

QString ServiceCommands::startingText(const QString &name)
{
    return u"正在启动 %1 服务..."_s.arg(name);
}

QString ServiceCommands::stoppingText(const QString &name)
{
    return u"正在停止 %1 服务..."_s.arg(name);
}

QString ServiceCommands::databaseUpdatedText()
{
    return u"***发送退出***\n\n数据库数据设置已经更新. . \n系统更新后必须过几分钟才可以执行运行"_s;
}

void ServiceCommands::startServices()
{
    // One thread per command; a run already under way makes the new one return at once.
    QThread *thread = QThread::create([this] {
        StartReporter reporter(*this);
        try {
            m_services.StartAllServices(&reporter);
        } catch (const std::exception &exception) {
            qDebug() << "start services:" << exception.what();
        }
    });
    thread->setObjectName(u"startServices"_s);
    m_startThreads.append(thread);
    connect(thread, &QThread::finished, this, [this, thread] {
        m_startThreads.removeOne(thread);
        thread->deleteLater();
        if (m_startThreads.isEmpty())
            m_frame.statusBar()->showMessage(u"就绪"_s);
        updateCommandStates();
        refreshStates();
        Q_EMIT startFinished();
    });
    thread->start();
}

void ServiceCommands::stopServices()
{
    auto *dialog = new CProgressDlg(&m_frame);
    dialog->setObjectName(u"stopServicesProgress"_s);
    dialog->setWindowTitle(u"停止服务"_s);
    dialog->setRange(ServerServices::stopStepCount());
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
    StopProgress progress(*dialog);
    m_services.StopAllServices(&progress);
    dialog->close();
    dialog->deleteLater();
    updateCommandStates();
    refreshStates();
    Q_EMIT stopFinished();
}

void ServiceCommands::updateCommandStates()
{
    m_frame.commandAction(CommandId::StartServices)->setEnabled(m_services.isStartEnabled());
    m_frame.commandAction(CommandId::StopServices)->setEnabled(m_services.isStopEnabled());
}

void ServiceCommands::refreshStates()
{
    if (m_refreshThread)
        return;
    auto states = std::make_shared<QList<QPair<QString, ServiceControl::State>>>();
    QThread *thread = QThread::create([this, states] { *states = m_services.states(); });
    thread->setObjectName(u"serviceStates"_s);
    connect(thread, &QThread::finished, this, [this, thread, states] {
        m_refreshThread = nullptr;
        thread->deleteLater();
        showStates(*states);
        Q_EMIT statesRefreshed();
    });
    m_refreshThread = thread;
    thread->start();
}

void ServiceCommands::showStates(const QList<QPair<QString, ServiceControl::State>> &states)
{
    QList<QPair<QString, QString>> rows;
    QHash<QString, bool> running;
    for (const auto &[name, state] : states) {
        rows.append({ name, ServiceControl::stateText(state) });
        running.insert(name, state == ServiceControl::State::Running);
    }
    m_frame.dashboard()->setServiceStates(rows);
    m_statesShown = true;
    // The tool bar asks as often as the dashboard is refreshed; the same
    // rules, on the states just read.
    const auto isRunning = [&running](const QString &name) { return running.value(name); };
    m_frame.commandAction(CommandId::StartServices)
        ->setEnabled(ServerServices::startEnabled(isRunning));
    m_frame.commandAction(CommandId::StopServices)
        ->setEnabled(ServerServices::stopEnabled(isRunning));
}

void ServiceCommands::changeDatabaseSettings()
{
    if (m_settingsToolRunning)
        return;
    const QString folder = m_frame.programDirectory();
    QProcess tool;
    tool.setProgram(folder + u"/SetDB"_s);
    tool.setWorkingDirectory(folder);
    QEventLoop loop;
    connect(&tool, &QProcess::finished, &loop, &QEventLoop::quit);
    connect(&tool, &QProcess::errorOccurred, &loop, [&loop](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            loop.quit();
    });
    m_settingsToolRunning = true;
    tool.start();
    // The window keeps working while the tool runs.
    if (tool.waitForStarted(-1) && tool.state() != QProcess::NotRunning)
        loop.exec();
    m_settingsToolRunning = false;
    if (tool.error() == QProcess::FailedToStart) {
        // A missing tool reports no exit code: nothing was changed.
        qDebug() << "SetDB:" << tool.errorString();
        return;
    }
    if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 5)
        return;

    if (!SendServerNotification(m_notificationPort)) {
        // The server cannot be told: restart it, so it reads the new settings.
        stopServices();
        startServices();
    }
    MessageService::Box box;
    box.text = databaseUpdatedText();
    box.icon = MessageService::Icon::Exclamation;
    box.parent = &m_frame;
    m_frame.messages().showMessage(box);
    QMetaObject::invokeMethod(
        &m_frame, [this] { m_frame.close(); }, Qt::QueuedConnection);
}
