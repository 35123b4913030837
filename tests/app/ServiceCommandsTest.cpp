// The service-management commands of the main window.

#include "ServiceCommands.h"

#include "AppTestSupport.h"
#include "CMainFormView.h"
#include "CommandIds.h"
#include "CProgressDlg.h"
#include "NotificationListeners.h"
#include "ScriptedServiceManager.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSemaphore>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
const QStringList AllEight = { u"VelmarD"_s, u"GroupD"_s, u"VelmarboxServerManager"_s, u"RelayD"_s,
    u"CheckD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s };

// The frame on a scripted service manager: commands, dashboard and status
// bar are the real ones; the manager stands in for systemd, which the service
// layer's own end-to-end test drives for real.
struct ServiceFrame : FrameFixture
{
    ScriptedServiceManager manager;

    // The frame's threads use the manager: the frame goes first.
    ~ServiceFrame() { frame.reset(); }

    CMainFrame &make()
    {
        MainFrameContext c = context();
        c.serviceManager = &manager;
        frame = std::make_unique<CMainFrame>(c);
        return *frame;
    }
    QAction *action(int id) const { return frame->commandAction(id); }
    QString dashboardValue(int row) const
    {
        auto *label = frame->dashboard()->findChild<QLabel *>(u"serviceValue%1"_s.arg(row));
        return label ? label->text() : QString();
    }
    void openServicesMenu() const
    {
        QMenu *menu = frame->menuBar()->findChild<QMenu *>(u"menuServices"_s);
        Q_EMIT menu->aboutToShow();
    }
    bool writeSetDB(const QByteArray &body, bool executable = true)
    {
        if (!dir.writeFile(u"SetDB"_s, "#!/bin/sh\n" + body))
            return false;
        return !executable
            || QFile::setPermissions(
                dir.filePath(u"SetDB"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};
} // namespace

class ServiceCommandsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void enableStates();
    void dashboardAfterTheGate();
    void startNamesTheDaemonInTheStatusBar();
    void stopShowsItsProgress();
    void databaseSettingsChanged();
    void databaseSettingsUnchanged_data();
    void databaseSettingsUnchanged();
    void databaseSettingsSendFails();
};

// Which states enable which command is the service layer's to test; the
// frame asks it when the menu opens (a stop enabled: dashboardAfterTheGate).
void ServiceCommandsTest::enableStates()
{
    ServiceFrame f;
    CMainFrame &frame = f.make();
    f.openServicesMenu();
    QVERIFY(f.action(CommandId::StartServices)->isEnabled());
    QVERIFY(!f.action(CommandId::StopServices)->isEnabled());
    // The dashboard's buttons are the same commands.
    auto *startButton = frame.dashboard()->findChild<QToolButton *>(u"startServicesButton"_s);
    auto *stopButton = frame.dashboard()->findChild<QToolButton *>(u"stopServicesButton"_s);
    QVERIFY(startButton && stopButton);
    QCOMPARE(startButton->defaultAction(), f.action(CommandId::StartServices));
    QVERIFY(!stopButton->isEnabled());
    QCOMPARE(f.action(CommandId::StartServices)->statusTip(), u"Velmar Server开始服务."_s);
    QCOMPARE(f.action(CommandId::StopServices)->statusTip(), u"Velmar Server停止服务."_s);
}

void ServiceCommandsTest::dashboardAfterTheGate()
{
    ServiceFrame f;
    f.make();
    f.manager.setRunning({ u"VelmarD"_s, u"ChatD"_s });
    ScriptedServiceManager::Script unknown;
    unknown.known = false;
    f.manager.setScript(u"RelayD"_s, unknown);
    // Nothing of the server is asked before the administrator is let in.
    QCOMPARE(f.dashboardValue(0), u"—"_s);
    QVERIFY(f.manager.journal().isEmpty());

    QVERIFY(showActive(f.frame.get()));
    QTRY_VERIFY(f.frame->isStartupReady());
    QTRY_COMPARE(f.dashboardValue(0), u"运行中"_s);
    QCOMPARE(f.dashboardValue(1), u"已停止"_s);
    QCOMPARE(f.dashboardValue(3), u"未注册"_s);
    QCOMPARE(f.dashboardValue(7), u"运行中"_s);
    QVERIFY(f.action(CommandId::StopServices)->isEnabled());

    // A stop refreshes the states at once.
    f.action(CommandId::StopServices)->trigger();
    QTRY_COMPARE(f.dashboardValue(0), u"已停止"_s);
    QCOMPARE(f.dashboardValue(7), u"已停止"_s);
    QVERIFY(!f.action(CommandId::StopServices)->isEnabled());
}

void ServiceCommandsTest::startNamesTheDaemonInTheStatusBar()
{
    ServiceFrame f;
    CMainFrame &frame = f.make();
    QSemaphore reached;
    QSemaphore release;
    f.manager.setBeforeRequest([&](const QString &, const QString &name) {
        if (name == u"VelmarD"_s) {
            reached.release();
            release.tryAcquire(1, 60000);
        }
    });
    f.openServicesMenu();
    f.action(CommandId::StartServices)->trigger();
    QVERIFY(reached.tryAcquire(1, 60000));
    QTRY_COMPARE(frame.statusBar()->currentMessage(), u"正在启动 VelmarD 服务..."_s);
    QVERIFY(frame.serviceCommands()->services().startInProgress());
    // A second start while the first runs does nothing.
    f.action(CommandId::StartServices)->trigger();
    release.release();
    QTRY_VERIFY(!frame.serviceCommands()->startThreadRunning());
    QCOMPARE(frame.statusBar()->currentMessage(), u"就绪"_s);
    // In the order the service layer tests.
    QCOMPARE(f.manager.journal({ u"start"_s }).size(), 8);
    f.openServicesMenu();
    QVERIFY(!f.action(CommandId::StartServices)->isEnabled());
}

void ServiceCommandsTest::stopShowsItsProgress()
{
    ServiceFrame f;
    CMainFrame &frame = f.make();
    f.manager.setRunning({ u"CheckD"_s, u"GroupD"_s });
    QStringList shown;
    f.manager.setBeforeRequest([&](const QString &, const QString &) {
        auto *dialog = frame.findChild<CProgressDlg *>(u"stopServicesProgress"_s);
        shown.append(dialog && dialog->isVisible() ? dialog->text() : u"no dialog"_s);
    });
    f.openServicesMenu();
    f.action(CommandId::StopServices)->trigger();
    QCOMPARE(shown, (QStringList { u"正在停止 CheckD 服务..."_s, u"正在停止 GroupD 服务..."_s }));
    // The frame launches the real "pskill", which this folder does not have:
    // the stop goes on without it.
    QCOMPARE(
        f.manager.journal({ u"stop"_s }), (QStringList { u"stop CheckD"_s, u"stop GroupD"_s }));
    QTRY_VERIFY(!frame.findChild<CProgressDlg *>(u"stopServicesProgress"_s));
}

void ServiceCommandsTest::databaseSettingsChanged()
{
    ServiceFrame f;
    NotificationListeners listeners;
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    // The tool ends only when the window has run a timer of its own: the
    // wait must not freeze the window.
    const QByteArray go = f.dir.filePath(u"go"_s).toUtf8();
    QVERIFY(f.writeSetDB("i=0\nwhile [ ! -e '" + go
        + "' ]; do i=$((i+1)); [ $i -gt 600 ] && exit 9; sleep 0.05; done\n"
          "[ \"$(pwd)\" = '"
        + f.dir.programDir().toUtf8() + "' ] || exit 8\nexit 5\n"));
    CMainFrame &frame = f.make();
    QVERIFY(showActive(&frame));
    QTimer::singleShot(0, &frame, [&] { QFile(QString::fromUtf8(go)).open(QIODevice::WriteOnly); });
    f.action(CommandId::DatabaseSettings)->trigger();

    QCOMPARE(listeners.drain(), QStringList { u"55052"_s });
    QCOMPARE(f.messages.boxTexts(),
        QStringList {
            u"***发送退出***\n\n数据库数据设置已经更新. . \n系统更新后必须过几分钟才可以执行运行"_s });
    // The server was told, so it was not restarted.
    QVERIFY(f.manager.journal({ u"start"_s, u"stop"_s }).isEmpty());
    QTRY_VERIFY(!frame.isVisible());
}

void ServiceCommandsTest::databaseSettingsUnchanged_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("executable");
    QTest::newRow("exit code 4") << QByteArray("exit 4\n") << true;
    QTest::newRow("killed") << QByteArray("kill -9 $$\n") << true;
    QTest::newRow("not executable") << QByteArray("exit 5\n") << false;
    QTest::newRow("missing") << QByteArray() << true;
}

void ServiceCommandsTest::databaseSettingsUnchanged()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, executable);
    ServiceFrame f;
    NotificationListeners listeners;
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    if (!body.isEmpty())
        QVERIFY(f.writeSetDB(body, executable));
    CMainFrame &frame = f.make();
    QVERIFY(showActive(&frame));
    f.action(CommandId::DatabaseSettings)->trigger();
    QCoreApplication::processEvents();
    QVERIFY(listeners.drain().isEmpty());
    QVERIFY(f.messages.boxTexts().isEmpty());
    QVERIFY(frame.isVisible());
}

void ServiceCommandsTest::databaseSettingsSendFails()
{
    ServiceFrame f;
    QVERIFY(f.writeSetDB("exit 5\n"));
    CMainFrame &frame = f.make();
    f.manager.setRunning(AllEight);
    // Port 0 cannot be sent to: the send itself fails, as a broken network
    // stack would make it.
    frame.serviceCommands()->setNotificationPort(0);
    QVERIFY(showActive(&frame));
    f.action(CommandId::DatabaseSettings)->trigger();
    QCOMPARE(f.messages.boxTexts().size(), 1);
    // Restarted instead: everything stopped, then started again (in the orders
    // the service layer tests).
    QTRY_VERIFY(!frame.serviceCommands()->startThreadRunning());
    const QStringList journal = f.manager.journal({ u"start"_s, u"stop"_s });
    QCOMPARE(journal.size(), 16);
    QVERIFY(journal.at(7).startsWith(u"stop "_s) && journal.at(8).startsWith(u"start "_s));
    QTRY_VERIFY(!frame.isVisible());
}

QTEST_MAIN(ServiceCommandsTest)

#include "ServiceCommandsTest.moc"
