// The main frame on a temporary server folder: what it reads and writes when
// it is built, its command table, the view pane, the home view's database
// check and the password prompt of the first paint.

#include "AdminPasswordStore.h"
#include "AppTestSupport.h"
#include "CAboutDlg.h"
#include "CAdminLoginDlg.h"
#include "CAdmSetupPasswordDlg.h"
#include "CMainFormView.h"
#include "CMainFrame.h"
#include "CommandIds.h"
#include "CVelmarManagerDoc.h"
#include "DocumentUndoStack.h"
#include "OutlookBar.h"
#include "SettingsCommands.h"
#include "ViewIds.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTest>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace {
const QString AccessString
    = u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;DefaultDir=;UID=admin;PWD=;"_s;

CAdminLoginDlg *loginDialog(const CMainFrame &frame)
{
    return frame.findChild<CAdminLoginDlg *>();
}

// A frame whose close is refused, as the save question will refuse it.
class RefusingFrame : public CMainFrame
{
public:
    using CMainFrame::CMainFrame;
    bool queryClose() override
    {
        ++asked;
        return false;
    }
    int asked = 0;
};
} // namespace

class MainFrameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pathsAndBalloonDefault();
    void balloonToggleWritesHive();
    void commandTable();
    void toolBarAndStatusBarToggles();
    void viewsSwitchInPane();
    void aboutAndPasswordCommandsOpenDialogs();
    void dashboardWorkingDatabase();
    void dashboardBrokenDatabase();
    void dashboardRemoteDatabase();
    void dashboardMasksPassword();
    void promptLetsAdministratorIn();
    void promptCancelCloses();
};

void MainFrameTest::pathsAndBalloonDefault()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    QCOMPARE(frame.windowTitle(), u"VelmarManager[*]"_s); // [*]: the modified marker
    QCOMPARE(frame.programDirectory(), f.dir.programDir());
    QCOMPARE(frame.accessDatabasePath(), f.dir.programDir() + u"/VelmarDB.mdb"_s);
    QCOMPARE(frame.profilePath(), f.dir.programDir() + u"/Serverinfo.ini"_s);
    // The start-up step for the database settings has run.
    QCOMPARE(registryString(f.dir.hives(), RegistryRoot::LocalMachine, DatabaseKey, u"SetDBType"_s),
        std::optional<QString>(u"MDB"_s));
    // Nothing stored: tips are shown, and nothing is written for it.
    QVERIFY(frame.balloonHelp());
    QVERIFY(frame.commandAction(CommandId::BalloonHelp)->isChecked());
    QVERIFY(!registryKeyExists(f.dir.hives(), RegistryRoot::CurrentUser, ConsoleKey));
}

// Any non-zero value stored shows the tips; the toggle writes 0 and 1.
void MainFrameTest::balloonToggleWritesHive()
{
    FrameFixture f;
    QVERIFY(setRegistryNumber(
        f.dir.hives(), RegistryRoot::CurrentUser, ConsoleKey, u"BalloonHelp"_s, 5));
    CMainFrame &frame = f.makeFrame();
    QVERIFY(frame.balloonHelp());
    QSignalSpy spy(&frame, &CMainFrame::balloonHelpChanged);
    QAction *toggle = frame.commandAction(CommandId::BalloonHelp);
    QVERIFY(toggle->isCheckable() && toggle->isChecked());
    toggle->trigger();
    QVERIFY(!frame.balloonHelp());
    QCOMPARE(registryNumber(f.dir.hives(), RegistryRoot::CurrentUser, ConsoleKey, u"BalloonHelp"_s),
        std::optional<qint32>(0));
    toggle->trigger();
    QCOMPARE(registryNumber(f.dir.hives(), RegistryRoot::CurrentUser, ConsoleKey, u"BalloonHelp"_s),
        std::optional<qint32>(1));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).toBool(), false);
    QCOMPARE(spy.at(1).at(0).toBool(), true);
    // The next start reads 0 back.
    toggle->trigger();
    CMainFrame second(f.context());
    QVERIFY(!second.balloonHelp());
    QVERIFY(!second.commandAction(CommandId::BalloonHelp)->isChecked());
}

void MainFrameTest::commandTable()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    const auto row = [&frame](int id, const QString &menu, const QString &label, bool enabled,
                         const QString &shortcut = QString()) {
        if (QTest::currentTestFailed())
            return;
        QAction *action = frame.commandAction(id);
        QVERIFY2(action, qPrintable(label));
        QCOMPARE(action->text(), label);
        QCOMPARE(action->shortcut(), QKeySequence(shortcut));
        QCOMPARE(action->isEnabled(), enabled);
        QMenu *owner = nullptr;
        for (QAction *menuAction : frame.menuBar()->actions()) {
            if (menuAction->menu() && menuAction->menu()->actions().contains(action))
                owner = menuAction->menu();
        }
        QVERIFY2(owner && owner->title() == menu, qPrintable(label));
    };
    const QString file = u"文件(&F)"_s, edit = u"编辑(&E)"_s, view = u"查看(&V)"_s,
                  services = u"服务管理(&M)"_s, settings = u"服务设置(&D)"_s, help = u"帮助(&H)"_s;
    row(32803, file, u"登记发送邮件(设置文件)(&M)"_s, false);
    row(32804, file, u"使用外部数据(&O)"_s, false, u"Ctrl+O"_s);
    row(32781, file, u"保存(&S)"_s, false, u"Ctrl+S"_s);
    row(57665, file, u"退出(&X)"_s, true);
    row(32784, edit, u"添加 类别(&A)"_s, false);
    row(32785, edit, u"修改 类别(&M)"_s, false);
    row(32786, edit, u"删除 类别(&D)"_s, false);
    row(32787, edit, u"添加 用户(&U)"_s, false);
    row(32788, edit, u"删除 用户(&R)"_s, false);
    row(32789, edit, u"添加 等级(&A)"_s, true);
    row(32790, edit, u"修改 等级(&M)"_s, false);
    row(32791, edit, u"删除 等级(&D)"_s, false);
    row(32792, edit, u"删除 权限(&D)"_s, false);
    row(32827, edit, u"自动分配电话号码"_s, false);
    row(32840, edit, u"数据检查(&K)"_s, false);
    row(59392, view, u"工具栏(&T)"_s, true);
    row(59393, view, u"状态栏(&S)"_s, true);
    row(32808, view, u"帮助栏(&B)"_s, true);
    row(32801, services, u"启动服务(&S)"_s, false);
    row(32802, services, u"停止服务(&T)"_s, false);
    row(32823, services, u"数据库 设置/更改"_s, true);
    row(32825, services, u"文件服务管理(&F)"_s, false);
    row(32821, settings, u"版权设置 (&C)"_s, false);
    row(32820, settings, u"主页设置 (&H)"_s, false);
    row(32826, settings, u"邮件设置(&M)"_s, false);
    row(32830, settings, u"管理员验证设置(&P)"_s, true);
    row(32813, help, u"快速导航(&Q)"_s, true);
    row(57664, help, u"VelmarManager 信息(&A)"_s, true);
    // Those are all, in menus in this order.
    QCOMPARE(frame.commandIds().size(), 28);
    QStringList titles;
    for (QAction *menuAction : frame.menuBar()->actions())
        titles.append(menuAction->text());
    QCOMPARE(titles, QStringList({ file, edit, view, services, settings, help }));
}

void MainFrameTest::toolBarAndStatusBarToggles()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    frame.show();
    QVERIFY(QTest::qWaitForWindowExposed(&frame));
    QAction *toolBar = frame.commandAction(CommandId::ToolBar);
    QAction *statusBar = frame.commandAction(CommandId::StatusBar);
    QVERIFY(toolBar->isChecked() && statusBar->isChecked());
    QVERIFY(frame.mainToolBar()->isVisible());
    QVERIFY(frame.statusBar()->isVisible());

    toolBar->trigger();
    QVERIFY(frame.mainToolBar()->isHidden());
    statusBar->trigger();
    QVERIFY(frame.statusBar()->isHidden());

    // Shown again through the bar's own context menu: the menu check follows.
    frame.mainToolBar()->toggleViewAction()->trigger();
    QVERIFY(toolBar->isChecked());
}

void MainFrameTest::viewsSwitchInPane()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    OutlookBar *bar = frame.outlookBar();
    QCOMPARE(frame.currentViewId(), ViewId::Home);
    QCOMPARE(frame.view(ViewId::Home), frame.dashboard());
    // Every view is there from the start, enabled in the bar.
    QStringList shown;
    for (int id : { int(ViewId::Home), int(ViewId::Organize), int(ViewId::Position),
             int(ViewId::AccessControl), int(ViewId::ChatLog), int(ViewId::SystemLog),
             int(ViewId::UserLog), int(ViewId::FileBox), int(ViewId::Notice) })
        shown << u"%1 %2 %3"_s.arg(bar->isItemEnabled(id))
                     .arg(frame.view(id)->objectName(), bar->itemCaption(id));
    QCOMPARE(shown,
        QStringList({ u"1 mainFormView 快速导航"_s, u"1 organizeView 组织管理"_s,
            u"1 positionView 等级管理"_s, u"1 accessControlView 权限管理"_s,
            u"1 chatLogView 对话记录"_s, u"1 sysLogView 系统日志"_s, u"1 userLogView 用户日志"_s,
            u"1 fileBoxView 文件夹权限"_s, u"1 noticeView 公告管理"_s }));
    QCOMPARE(bar->itemIds(u"类别管理"_s).first(), ViewId::Organize);
    // The log views sit in their group before the log settings.
    QCOMPARE(bar->itemIds(u"日志管理"_s),
        (QList<int> { ViewId::ChatLog, ViewId::SystemLog, ViewId::UserLog,
            SettingsCommands::LogSettingsItem }));

    // A view added later takes its place holder's place and is chosen from the bar.
    QSignalSpy changed(&frame, &CMainFrame::viewChanged);
    auto *organize = new QWidget;
    frame.addView(ViewId::Organize, u"类别管理"_s, u"组织管理"_s, organize);
    QVERIFY(bar->isItemEnabled(ViewId::Organize));
    Q_EMIT bar->viewSelected(ViewId::Organize);
    QCOMPARE(frame.currentViewId(), ViewId::Organize);
    auto *pane = frame.findChild<QStackedWidget *>(u"viewPane"_s);
    QCOMPARE(pane->currentWidget(), organize);
    QCOMPARE(changed.count(), 1);

    // Quick navigation brings the home view back and marks it in the bar.
    frame.commandAction(CommandId::QuickNavigation)->trigger();
    QCOMPARE(frame.currentViewId(), ViewId::Home);
    QCOMPARE(pane->currentWidget(), frame.dashboard());
    QCOMPARE(bar->currentView(), ViewId::Home);
    QCOMPARE(changed.count(), 2);
}

void MainFrameTest::aboutAndPasswordCommandsOpenDialogs()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    frame.show();
    QVERIFY(QTest::qWaitForWindowExposed(&frame));

    frame.commandAction(CommandId::About)->trigger();
    auto *about = frame.findChild<CAboutDlg *>();
    QVERIFY(about);
    QVERIFY(about->isVisible());
    about->findChild<QPushButton *>(u"okButton"_s)->click();
    QTRY_VERIFY(!frame.findChild<CAboutDlg *>());

    frame.commandAction(CommandId::AdminPassword)->trigger();
    auto *settings = frame.findChild<CAdmSetupPasswordDlg *>();
    QVERIFY(settings);
    QVERIFY(settings->isVisible());
    QVERIFY(settings->isModal() || settings->windowModality() != Qt::NonModal);
    settings->findChild<QPushButton *>(u"control1108"_s)->click();
    QTRY_VERIFY(!frame.findChild<CAdmSetupPasswordDlg *>());
}

void MainFrameTest::dashboardWorkingDatabase()
{
    FrameFixture f;
    QVERIFY(createSqliteDatabase(f.dir.databasePath()));
    CMainFrame &frame = f.makeFrame();
    CMainFormView *dashboard = frame.dashboard();
    QCOMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Unchecked);
    frame.show();
    QTRY_COMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Opens);
    QCOMPARE(dashboard->databaseStateText(), u"可以打开"_s);
    QCOMPARE(dashboard->databaseDetail(), u"QSQLITE"_s);
    QCOMPARE(dashboard->findChild<QLabel *>(u"checkedAtValue"_s)->text(), u"2024-03-05 09:30:15"_s);
    QCOMPARE(dashboard->shownConnectionString(), AccessString.arg(f.dir.databasePath()));
    QCOMPARE(dashboard->findChild<QLabel *>(u"databaseTypeValue"_s)->text(), u"MDB"_s);
    QCOMPARE(dashboard->findChild<QLabel *>(u"programDirectoryValue"_s)->text(),
        QDir::toNativeSeparators(f.dir.programDir()));
    QVERIFY(f.messages.boxes().isEmpty());
    // The frame's own way to the database works on the same settings.
    QVERIFY(!frame.OpenDBConnection().isNull());
}

// Why a database does not open is the session's to test; one cause shows the state.
void MainFrameTest::dashboardBrokenDatabase()
{
    FrameFixture f;
    QVERIFY(f.dir.writeFile(
        u"VelmarDB.mdb"_s, QByteArray("this is not an SQLite file, it is text\n").repeated(40)));
    CMainFrame &frame = f.makeFrame();
    CMainFormView *dashboard = frame.dashboard();
    frame.show();
    QTRY_COMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Fails);
    QCOMPARE(dashboard->databaseStateText(), u"无法打开"_s);
    QVERIFY2(dashboard->databaseDetail().startsWith(u"(80004005) "_s),
        qPrintable(dashboard->databaseDetail()));
    QVERIFY(dashboard->databaseDetail().contains(u"\nSource - QSQLITE\nDesc - "_s));

    // Visiting the home view again checks again, still without a message box.
    auto *other = new QWidget;
    frame.addView(ViewId::Notice, u"会员管理"_s, u"公告管理"_s, other);
    frame.showView(ViewId::Notice);
    QSignalSpy checked(dashboard, &CMainFormView::databaseChecked);
    frame.showView(ViewId::Home);
    QTRY_COMPARE(checked.count(), 1);
    QCOMPARE(dashboard->databaseState(), CMainFormView::DatabaseState::Fails);
    QVERIFY(f.messages.boxes().isEmpty());

    // The frame's own open reports in the designed way: one box, no owner.
    QVERIFY(frame.OpenDBConnection().isNull());
    QCOMPARE(f.messages.boxes().size(), 1);
    QCOMPARE(f.messages.boxes().first().parent, nullptr);
}

void MainFrameTest::dashboardRemoteDatabase()
{
    FrameFixture f;
    QVERIFY(createSqliteDatabase(f.dir.databasePath()));
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s, "[DBInfo]\r\nDBAddr=10.1.2.3\r\n"));
    CMainFrame &frame = f.makeFrame();
    frame.show();
    QTRY_COMPARE(frame.dashboard()->databaseState(), CMainFormView::DatabaseState::Disabled);
    QVERIFY(frame.dashboard()->databaseDetail().contains(u"10.1.2.3"_s));
    QVERIFY(f.messages.boxes().isEmpty());
}

void MainFrameTest::dashboardMasksPassword()
{
    FrameFixture f;
    QVERIFY(setRegistryString(
        f.dir.hives(), RegistryRoot::LocalMachine, DatabaseKey, u"SetDBType"_s, u"PGSQL"_s));
    QVERIFY(setRegistryString(f.dir.hives(), RegistryRoot::LocalMachine, DatabaseKey,
        u"ConnectionString"_s,
        u"DRIVER={SQLite3};Database=%1/missing/x.db;UID=v;PWD=topsecret;"_s.arg(f.dir.root())));
    CMainFrame &frame = f.makeFrame();
    frame.show();
    QTRY_VERIFY(frame.dashboard()->databaseState() != CMainFormView::DatabaseState::Checking
        && frame.dashboard()->databaseState() != CMainFormView::DatabaseState::Unchecked);
    const QString shown = frame.dashboard()->shownConnectionString();
    QVERIFY(!shown.contains(u"topsecret"_s));
    QVERIFY(shown.endsWith(u"UID=v;PWD=******;"_s));
    QCOMPARE(frame.dashboard()->findChild<QLabel *>(u"databaseTypeValue"_s)->text(), u"PGSQL"_s);
}

void MainFrameTest::promptLetsAdministratorIn()
{
    FrameFixture f;
    QVERIFY(f.lock(AdminPasswordStore::digest(u"Secret1"_s).toUpper()));
    CMainFrame &frame = f.makeFrame();
    QSignalSpy ready(&frame, &CMainFrame::startupReady);
    frame.show();
    QTRY_VERIFY(loginDialog(frame));
    CAdminLoginDlg *dialog = loginDialog(frame);
    QVERIFY(dialog->isVisible());
    QVERIFY(dialog->windowModality() != Qt::NonModal);
    QCOMPARE(ready.count(), 0); // nothing is loaded before the administrator is in

    QTest::keyClicks(dialog->passwordField(), u"Secret1"_s);
    QTest::keyClick(dialog->passwordField(), Qt::Key_Return);
    QTRY_COMPARE(ready.count(), 1);
    QTRY_VERIFY(!loginDialog(frame));
    QVERIFY(frame.isVisible());
    QVERIFY(f.messages.boxes().isEmpty());

    // Once per run: later paints ask nothing.
    frame.repaint();
    QTest::qWait(20);
    QVERIFY(!loginDialog(frame));
    QCOMPARE(ready.count(), 1);
}

void MainFrameTest::promptCancelCloses()
{
    FrameFixture f;
    QVERIFY(f.lock(AdminPasswordStore::digest(u"Secret1"_s)));
    RefusingFrame frame(f.context());
    frame.show();
    QTRY_VERIFY(loginDialog(frame));
    loginDialog(frame)->findChild<QPushButton *>(u"control1104"_s)->click();
    // The close request goes the way of a user's close, through queryClose.
    QTRY_COMPARE(frame.asked, 1);
    QVERIFY(f.messages.boxes().isEmpty());
}

int runMainFrameTests(int argc, char **argv)
{
    MainFrameTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MainFrameTest.moc"
