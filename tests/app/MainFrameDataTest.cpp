// The main frame with the server's data: the load it starts once the
// administrator is in (worker, progress dialog, dashboard counts), the save
// command and the save question when the window closes, on a server folder
// with a real SQLite database. The save notifies 127.0.0.1:55051/55052, which
// these tests listen on (redirected to ports of their own).

#include "AppTestSupport.h"
#include "CMainFormView.h"
#include "CMainFrame.h"
#include "CommandIds.h"
#include "CProgressDlg.h"
#include "CVelmarManagerDoc.h"
#include "DataCheckDialog.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "GroupTreeModel.h"
#include "LoadedServer.h"
#include "NotificationListeners.h"
#include "SaveJournal.h"
#include "SavePreviewDialog.h"
#include "SaveWaitDialog.h"
#include "ServerDataFixture.h"
#include "ServerDataSet.h"
#include "ServerFolderLock.h"
#include "ServerNotification.h"
#include "TestDatabase.h"

#include <memory>
#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QFile>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// A ceiling for the worker, generous for sanitizer builds; nothing is timed.
constexpr int LoadTimeoutMs = 60000;

// What the load looked like right after it started: seen from a handler of
// startupReady connected after the frame's own.
struct LoadStart
{
    bool started = false;
    QPointer<CProgressDlg> dialog;
    bool dialogVisible = false;
    bool dialogModal = true;
    QString dialogTitle;
    bool waitCursor = false;
    bool saveEnabled = true;
};

// A server folder (with or without a database), a frame that loads its data
// and listeners on the notification ports.
class DataFrame
{
public:
    // The SQLite file backend is enough here: the load and the save themselves
    // run on every backend in the directory tests.
    bool createDatabase(const QStringList &statements, QString *error)
    {
        db = serverDatabase(f.dir, statements, error);
        return db != nullptr;
    }

    CMainFrame &start()
    {
        MainFrameContext context = f.context();
        context.loadServerData = true;
        f.frame = std::make_unique<CMainFrame>(context);
        CMainFrame *frame = f.frame.get();
        QObject::connect(frame, &CMainFrame::startupReady, frame, [this, frame] {
            load.started = true;
            load.dialog = frame->findChild<CProgressDlg *>();
            if (load.dialog) {
                load.dialogVisible = load.dialog->isVisible();
                load.dialogModal = load.dialog->isModal();
                load.dialogTitle = load.dialog->windowTitle();
            }
            const QCursor *cursor = QGuiApplication::overrideCursor();
            load.waitCursor = cursor && cursor->shape() == Qt::WaitCursor;
            load.saveEnabled = frame->commandAction(CommandId::Save)->isEnabled();
        });
        frame->show();
        return *frame;
    }

    // True once the worker's run is over: its progress dialog is gone.
    bool loadEnded() const { return load.started && !load.dialog; }

    QStringList databaseDump() { return dumpDataSet(readBack(f.dir)); }

    FrameFixture f;
    std::unique_ptr<TestDatabase> db;
    NotificationListeners listeners;
    LoadStart load;
};

// The frame's environment, with a database of these statements (none: no
// database file at all).
#define DATA_FRAME(env, statements)                                                                \
    DataFrame env;                                                                                 \
    do {                                                                                           \
        QString setUpError;                                                                        \
        QVERIFY2(env.listeners.bind(&setUpError), qPrintable(setUpError));                         \
        const QStringList rows = statements;                                                       \
        QVERIFY2(rows.isEmpty() || env.createDatabase(rows, &setUpError), qPrintable(setUpError)); \
    } while (false)

#define WAIT_FOR_LOAD(env)                                                                         \
    do {                                                                                           \
        QTRY_VERIFY_WITH_TIMEOUT(env.loadEnded(), LoadTimeoutMs);                                  \
        QVERIFY2(env.load.dialogVisible, "no progress dialog was shown while loading");            \
    } while (false)

// The dashboard's directory rows as "caption value".
QStringList directoryRows(const CMainFrame &frame)
{
    QStringList rows;
    for (int i = 0;; ++i) {
        auto *value = frame.dashboard()->findChild<QLabel *>(u"directoryValue%1"_s.arg(i));
        if (!value)
            break;
        auto *form = qobject_cast<QFormLayout *>(value->parentWidget()->layout());
        auto *caption = form ? qobject_cast<QLabel *>(form->labelForField(value)) : nullptr;
        rows << (caption ? caption->text() : u"?"_s) + u' ' + value->text();
    }
    return rows;
}

void addGroup(CMainFrame &frame, const QString &name)
{
    CVelmarManagerDoc &document = *frame.serverData();
    document.editor().addGroup(false, document.directory()->treeData(false).root(), name);
}

} // namespace

class MainFrameDataTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadFillsDashboard();
    void saveCommand();
    void closeAfterLoad_data();
    void closeAfterLoad();
    void closeAfterFailedLoad_data();
    void closeAfterFailedLoad();
    void unfinishedSaveAtStart_data();
    void unfinishedSaveAtStart();
    void sharedFolder();
    void dataCheck();
    void previewDialog();
};

// (What the load makes of an empty database is the loader's to test.)
void MainFrameDataTest::loadFillsDashboard()
{
    DATA_FRAME(env, populatedDatabase());
    CMainFrame &frame = env.start();
    QCOMPARE(directoryRows(frame), QStringList({ u"成员: —"_s, u"群组: —"_s }));
    WAIT_FOR_LOAD(env);
    QVERIFY(!env.load.dialogModal);
    QCOMPARE(env.load.dialogTitle, u"打开数据库."_s);
    QVERIFY(env.load.waitCursor);
    QVERIFY(!env.load.saveEnabled);

    // The fixture's members, groups and memberships (a relation without a
    // member places nobody).
    QCOMPARE(directoryRows(frame), QStringList({ u"成员: 7"_s, u"群组: 5"_s, u"所属关系: 6"_s }));
    QVERIFY(!QGuiApplication::overrideCursor());
    QVERIFY(frame.commandAction(CommandId::Save)->isEnabled());
    QCOMPARE(frame.serverData()->loadState(), CVelmarManagerDoc::LoadState::Complete);
    // The working copy is what the database holds, and nothing is edited yet.
    QCOMPARE(dumpServerData(*frame.serverData()), env.databaseDump());
    QVERIFY(!frame.isWindowModified());
    QVERIFY(env.f.messages.boxes().isEmpty());
    QVERIFY(env.listeners.drain().isEmpty());
}

// A declined save, and which ports a save notifies, are the saver's to test.
void MainFrameDataTest::saveCommand()
{
    DATA_FRAME(env, populatedDatabase());
    CMainFrame &frame = env.start();
    WAIT_FOR_LOAD(env);

    addGroup(frame, u"Support"_s);
    QVERIFY(frame.isWindowModified());
    const QStringList edited = dumpServerData(*frame.serverData());
    QVERIFY(env.databaseDump() != edited);

    // The shortcut of the menu command, as the administrator saves.
    QVERIFY(showActive(&frame));
    env.f.messages.queueAnswer(MessageService::Yes);
    QTest::keyClick(&frame, Qt::Key_S, Qt::ControlModifier);

    // The question, the statements and the notification are the saver's to test.
    QCOMPARE(env.f.messages.boxTexts(), QStringList { u"确定要保存?"_s });
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(env.databaseDump(), edited);
    QVERIFY(!frame.isWindowModified() && !frame.serverData()->isModified());
}

void MainFrameDataTest::closeAfterLoad_data()
{
    QTest::addColumn<int>("answer"); // to "确定要保存编辑的内容?"; closes and saves on Yes
    QTest::newRow("cancel") << int(MessageService::Cancel);
    // Not edited, No, and a Yes whose save fails, are the saver's (saveOnClose) to test.
    QTest::newRow("yes") << int(MessageService::Yes);
}

void MainFrameDataTest::closeAfterLoad()
{
    QFETCH(int, answer);
    const bool written = answer == MessageService::Yes;
    DATA_FRAME(env, populatedDatabase());
    CMainFrame &frame = env.start();
    WAIT_FOR_LOAD(env);
    addGroup(frame, u"Support"_s);
    const QStringList before = env.databaseDump();
    const QStringList memory = dumpServerData(*frame.serverData());
    env.f.messages.queueAnswer(answer);

    frame.commandAction(CommandId::Exit)->trigger();

    QCOMPARE(frame.isVisible(), !written);
    // The question is the saver's (saveOnClose) to test.
    QCOMPARE(env.f.messages.boxTexts(), QStringList { u"确定要保存编辑的内容?"_s });
    QCOMPARE(env.databaseDump(), written ? memory : before);
    // What was not saved stays in memory, still to be saved.
    QCOMPARE(dumpServerData(*frame.serverData()), memory);
    QCOMPARE(frame.isWindowModified(), !written);
}

void MainFrameDataTest::unfinishedSaveAtStart_data()
{
    // The answers to the start-up questions, and what follows from them.
    QTest::addColumn<QList<int>>("answers");
    QTest::addColumn<bool>("loads"); // and finishes the save
    const int yes = MessageService::Yes;
    const int ok = MessageService::Ok;
    const int cancel = MessageService::Cancel;
    // The other answers are the recovery's own to test (tst_saverecovery).
    QTest::newRow("finish") << QList<int> { yes, ok } << true;
    QTest::newRow("quit") << QList<int> { cancel } << false;
}

void MainFrameDataTest::unfinishedSaveAtStart()
{
    QFETCH(QList<int>, answers);
    QFETCH(bool, loads);
    const bool finished = loads;
    DATA_FRAME(env, populatedDatabase());
    const QString journal = SaveJournal::pathFor(env.f.dir.iniPath());

    // A save that fails after the directory was rewritten, then closing
    // without saving again: the database keeps an emptied Rank.
    {
        CMainFrame &frame = env.start();
        WAIT_FOR_LOAD(env);
        addGroup(frame, u"Support"_s);
        QString error;
        QVERIFY2(
            createPoisonTrigger(*env.db, u"INSERT"_s, u"Rank"_s, {}, &error), qPrintable(error));
        env.f.messages.queueAnswer(MessageService::Yes);
        frame.commandAction(CommandId::Save)->trigger();
        QCOMPARE(env.f.messages.balloonTexts(), QStringList { u"数据库发生错误."_s });
        QVERIFY(QFile::exists(journal));
        env.f.messages.queueAnswer(MessageService::No);
        frame.commandAction(CommandId::Exit)->trigger();
        QVERIFY(!frame.isVisible());
    }
    const QStringList memory = dumpServerData(*env.f.frame->serverData());
    const QStringList halfWritten = env.databaseDump();
    QVERIFY(halfWritten != memory);
    QVERIFY(dropPoisonTrigger(*env.db, u"Rank"_s));
    QVERIFY(env.listeners.drain().isEmpty());

    // The next start asks before anything reads the database.
    env.f.frame.reset();
    env.f.messages.clear();
    env.load = LoadStart();
    for (const int answer : answers)
        env.f.messages.queueAnswer(answer);
    CMainFrame &frame = env.start();
    if (loads) {
        WAIT_FOR_LOAD(env);
    } else {
        QTRY_VERIFY(env.load.started);
        QTRY_VERIFY(!frame.isVisible());
        QVERIFY(!env.load.dialog);
    }

    // The questions and their texts are the recovery's to test; the frame asks
    // them before anything reads the database, and follows the answers.
    QCOMPARE(env.f.messages.boxes().size(), answers.size());
    QCOMPARE(env.databaseDump(), finished ? memory : halfWritten);
    QCOMPARE(env.f.dir.savedVersion(), finished ? u"0001"_s : u"absent"_s);
    QCOMPARE(env.listeners.drain(), finished ? QStringList { u"55052"_s } : QStringList());
    // Quitting leaves the journal for the next start; the other answers use it up.
    QCOMPARE(QFile::exists(journal), !loads);
    if (loads)
        QCOMPARE(dumpServerData(*frame.serverData()), env.databaseDump());
}

void MainFrameDataTest::closeAfterFailedLoad_data()
{
    QTest::addColumn<bool>("schema"); // else no database file at all
    QTest::addColumn<QString>("failure");
    QTest::newRow("no database") << false << u"打开数据库时发生错误."_s;
    QTest::newRow("read fails part-way") << true << u"当读数据时发生错误."_s;
}

void MainFrameDataTest::closeAfterFailedLoad()
{
    QFETCH(bool, schema);
    QFETCH(QString, failure);
    DATA_FRAME(env, schema ? populatedDatabase() : QStringList());
    if (schema) {
        // The notices are read last: everything before them is in memory.
        QVERIFY2(env.db->exec(u"DROP TABLE CONTENTS"_s), qPrintable(env.db->errorString()));
    }

    CMainFrame &frame = env.start();
    WAIT_FOR_LOAD(env);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(env.f.messages.boxTexts().value(env.f.messages.boxTexts().size() - 1), failure);
    QCOMPARE(directoryRows(frame), QStringList({ u"成员: —"_s, u"群组: —"_s }));
    QVERIFY(!frame.commandAction(CommandId::Save)->isEnabled());
    // The data check names the rows a load stopped on.
    QCOMPARE(frame.commandAction(CommandId::DataCheck)->isEnabled(), schema);
    QCOMPARE(frame.serverData()->loadState(),
        schema ? CVelmarManagerDoc::LoadState::Partial : CVelmarManagerDoc::LoadState::NotLoaded);

    // Even an edit of what a failed load left is not offered for saving: the
    // save rewrites whole tables and would delete every row that was not read.
    addGroup(frame, u"Support"_s);
    QVERIFY(frame.isWindowModified());
    const int boxes = int(env.f.messages.boxes().size());
    const QList<QVariantList> groupRows = schema
        ? env.db->rows(u"SELECT OGroupID, GroupName FROM [Group] ORDER BY OGroupID"_s)
        : QList<QVariantList>();

    QVERIFY(showActive(&frame));
    QTest::keyClick(&frame, Qt::Key_S, Qt::ControlModifier);
    frame.commandAction(CommandId::Exit)->trigger();

    QVERIFY(!frame.isVisible());
    QCOMPARE(env.f.messages.boxes().size(), boxes);
    QVERIFY(env.f.messages.balloons().isEmpty());
    QCOMPARE(env.f.dir.savedVersion(), u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    if (schema)
        QCOMPARE(env.db->rows(u"SELECT OGroupID, GroupName FROM [Group] ORDER BY OGroupID"_s),
            groupRows);
    else
        QVERIFY(!QFile::exists(env.f.dir.databasePath()));
}

void MainFrameDataTest::sharedFolder()
{
    DATA_FRAME(env, populatedDatabase());
    const QString profile = env.f.dir.iniPath();

    // Another console has the folder open: said at start-up, and going on loads.
    ServerFolderLock otherConsole(ServerFolderLock::consolePathFor(profile));
    QCOMPARE(
        otherConsole.acquire(ServerFolderLock::Mode::Exclusive), ServerFolderLock::Status::Locked);
    env.f.messages.queueAnswer(MessageService::Yes);
    CMainFrame &frame = env.start();
    WAIT_FOR_LOAD(env);
    QCOMPARE(env.f.messages.boxTexts(),
        QStringList { CMainFrame::secondConsoleText(frame.programDirectory()) });
    QCOMPARE(env.f.messages.boxes().constFirst().buttons, MessageService::Buttons::YesNo);
    env.f.messages.clear();
    addGroup(frame, u"Support"_s);
    const QStringList before = env.databaseDump();

    // Another program's save holds the folder: the save waits with a dialog
    // whose cancel ends it with nothing written.
    ServerFolderLock otherSave(ServerFolderLock::savePathFor(profile));
    QCOMPARE(
        otherSave.acquire(ServerFolderLock::Mode::Exclusive), ServerFolderLock::Status::Locked);
    bool dialogSeen = false;
    QTimer::singleShot(300, &frame, [&frame, &dialogSeen] {
        auto *dialog = frame.findChild<QProgressDialog *>(u"saveWaitDialog"_s);
        if (!dialog)
            return;
        dialogSeen = dialog->isVisible() && dialog->labelText() == SaveWaitDialog::labelText();
        if (auto *cancel = dialog->findChild<QPushButton *>(u"cancelButton"_s))
            QTest::mouseClick(cancel, Qt::LeftButton);
    });
    env.f.messages.queueAnswer(MessageService::Yes); // "确定要保存?"
    frame.commandAction(CommandId::Save)->trigger();
    QVERIFY(dialogSeen);
    QVERIFY(!frame.findChild<QProgressDialog *>(u"saveWaitDialog"_s));
    otherSave.release(); // (a load would wait for it too)
    QCOMPARE(env.databaseDump(), before);
    QVERIFY(frame.serverData()->isModified());

    // Another program saved meanwhile: asked, and reloading takes its data
    // in place of the working copy's.
    QVERIFY(env.db->exec(
        u"INSERT INTO Member (OMemberID, MemberID, Passwd, IsGuestMember) VALUES (99,'zed','x',0)"_s));
    env.f.messages.clear();
    env.f.messages.queueAnswer(MessageService::Yes); // "确定要保存?"
    env.f.messages.queueAnswer(MessageService::Yes); // reload
    frame.commandAction(CommandId::Save)->trigger();
    QCOMPARE(env.f.messages.boxTexts().size(), 2);
    QVERIFY(env.f.messages.boxTexts().at(1).contains(u"Member: 7 → 8 行 (+1)"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!frame.isLoading(), LoadTimeoutMs);
    QVERIFY(!frame.serverData()->isModified());
    QCOMPARE(dumpServerData(*frame.serverData()), env.databaseDump());
    QVERIFY(env.databaseDump() != before);
    QCOMPARE(env.db->count(u"[Group]"_s, u"GroupName = 'Support'"_s), 0);
}

void MainFrameDataTest::dataCheck()
{
    DATA_FRAME(env,
        populatedDatabase()
            << u"INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (777,10,1,5,0)"_s);
    CMainFrame &frame = env.start();
    WAIT_FOR_LOAD(env);
    QAction *command = frame.commandAction(CommandId::DataCheck);
    QVERIFY(command->isEnabled());

    // The findings in the dialog's grid; the repair is a step of the journal.
    QStringList rows;
    QString status;
    QTimer::singleShot(0, &frame, [&frame, &rows, &status] {
        auto *dialog = frame.findChild<DataCheckDialog *>(u"dataCheckDialog"_s);
        if (!dialog)
            return;
        auto *table = dialog->findChild<QTableView *>(u"findingsTable"_s);
        for (int row = 0; row < table->model()->rowCount(); ++row)
            rows << table->model()->index(row, 0).data().toString() + u' '
                    + table->model()->index(row, 1).data().toString();
        QTest::mouseClick(dialog->findChild<QPushButton *>(u"repairButton"_s), Qt::LeftButton);
        status = dialog->statusText();
        dialog->reject();
    });
    command->trigger();
    QVERIFY2(rows.contains(u"所属关系的成员不存在 1"_s), qPrintable(rows.join(u'\n')));
    QVERIFY2(rows.contains(u"成员编号重复 1"_s), qPrintable(rows.join(u'\n')));
    QCOMPARE(status, u"已添加 1 个修复步骤 (可以撤销). 保存后, 可由保存修复的问题会消失."_s);
    QCOMPARE(frame.serverData()->undoStack()->count(), 1);
    QVERIFY(frame.isWindowModified());
    frame.serverData()->undoStack()->undo();
    QVERIFY(!frame.serverData()->isModified());
}

void MainFrameDataTest::previewDialog()
{
    // Counts first, the rows on request.
    ServerDataSaver::Preview preview;
    preview.ok = true;
    SavePreview::Table groups;
    groups.name = u"[Group]"_s;
    groups.added = { u"OGroupID=52, GroupName=West"_s };
    groups.changed = { u"20 (GroupName: HQ → Office)"_s };
    preview.tables = { groups, SavePreview::Table { u"Rank"_s, {}, {}, {}, {} } };
    SavePreviewDialog dialog(preview);
    QCOMPARE(dialog.windowTitle(), u"显示更改"_s);
    QCOMPARE(dialog.shownText(), u"[Group]: +1 -0 ~1"_s);
    auto *rows = dialog.findChild<QPushButton *>(u"rowsButton"_s);
    QCOMPARE(rows->accessibleName(), u"显示行"_s);
    QTest::mouseClick(rows, Qt::LeftButton);
    QCOMPARE(dialog.shownText(),
        u"[Group]: +1 -0 ~1\n  + OGroupID=52, GroupName=West\n  ~ 20 (GroupName: HQ → Office)"_s);
    QVERIFY(!rows->isEnabled());

    // A refused text or a busy folder is said instead.
    preview.ok = false;
    preview.busy = true;
    SavePreviewDialog busy(preview);
    QVERIFY(busy.shownText().startsWith(u"另一个程序正在保存"_s));
    QVERIFY(!busy.findChild<QPushButton *>(u"rowsButton"_s)->isEnabled());
}

int main(int argc, char **argv)
{
    // The digests are taken over GBK bytes, the system code page by default.
    qunsetenv("VELMAR_CODEPAGE");
    QApplication app(argc, argv);
    QTEST_SET_MAIN_SOURCE_PATH
    MainFrameDataTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MainFrameDataTest.moc"
