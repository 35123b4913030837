// The server-folder dialog, driven through its widgets: an existing folder
// is checked for "Serverinfo.ini", a new server is created where asked, and
// the main frame offers the dialog in its File menu.

#include "ServerFolderDialog.h"

#include "AppTestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A dialog whose folder browser answers with folder at once.
struct DialogFixture
{
    TempServerDir dir;
    ScriptedMessageService messages;
    QString browsed;
    ServerFolderDialog dialog { dir.hives(), messages,
        [this](QWidget *, const QString &) { return browsed; } };

    template<typename W> W *child(const QString &name) { return dialog.findChild<W *>(name); }
    void clickOk() { QTest::mouseClick(child<QPushButton>(u"okButton"_s), Qt::LeftButton); }
    void browse(const QString &folder)
    {
        browsed = folder;
        QTest::mouseClick(child<QPushButton>(u"browseButton"_s), Qt::LeftButton);
    }
};
} // namespace

class ServerFolderDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlsAreNamed();
    void folderWithoutServerIsRefusedOneWithIsOpened();
    void newServerIsCreated();
    void frameOffersTheDialogInItsFileMenu();
};

void ServerFolderDialogTest::controlsAreNamed()
{
    DialogFixture f;
    for (const QString &name : { u"openRadio"_s, u"createRadio"_s, u"folderEdit"_s,
             u"browseButton"_s, u"databaseCombo"_s, u"okButton"_s, u"cancelButton"_s }) {
        const QWidget *widget = f.child<QWidget>(name);
        QVERIFY2(widget, qPrintable(name));
        QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(name));
    }
    // The database is chosen only for a new server.
    QVERIFY(!f.child<QComboBox>(u"databaseCombo"_s)->isEnabled());
    f.child<QRadioButton>(u"createRadio"_s)->click();
    QVERIFY(f.child<QComboBox>(u"databaseCombo"_s)->isEnabled());
}

void ServerFolderDialogTest::folderWithoutServerIsRefusedOneWithIsOpened()
{
    DialogFixture f;
    f.browse(f.dir.root());
    QCOMPARE(f.child<QLineEdit>(u"folderEdit"_s)->text(), f.dir.root());
    f.clickOk();
    QCOMPARE(f.dialog.result(), int(QDialog::Rejected));
    QCOMPARE(f.messages.boxTexts().size(), 1);
    QVERIFY2(f.messages.boxTexts().constFirst().contains(u"不是服务器文件夹"_s),
        qPrintable(f.messages.boxTexts().constFirst()));
    QVERIFY(f.dialog.directory().isEmpty());

    // A folder with one is opened.
    QVERIFY(f.dir.writeFile(u"Serverinfo.ini"_s, "[ServerInfo]\r\n"));
    f.browse(f.dir.programDir() + u'/');
    f.clickOk();
    QCOMPARE(f.messages.boxTexts().size(), 1);
    QCOMPARE(f.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(f.dialog.directory(), f.dir.programDir());
}

void ServerFolderDialogTest::newServerIsCreated()
{
    DialogFixture f;
    f.child<QRadioButton>(u"createRadio"_s)->click();
    // PostgreSQL needs the name of its database.
    f.child<QComboBox>(u"databaseCombo"_s)->setCurrentIndex(1);
    QVERIFY(!f.child<QLineEdit>(u"databaseNameEdit"_s)->isHidden());
    f.browse(f.dir.root() + u"/pg-server"_s);
    f.clickOk();
    QCOMPARE(f.dialog.result(), int(QDialog::Rejected));
    QCOMPARE(f.messages.boxTexts(), QStringList({ u"请输入 PostgreSQL 数据库名."_s }));
    QVERIFY(!QFile::exists(f.dir.root() + u"/pg-server/Serverinfo.ini"_s));

    // SQLite, the first choice, needs nothing more.
    const QString target = f.dir.root() + u"/new-server"_s;
    f.child<QComboBox>(u"databaseCombo"_s)->setCurrentIndex(0);
    f.browse(target);
    f.clickOk();
    QCOMPARE(f.messages.boxTexts().size(), 1);
    QCOMPARE(f.dialog.result(), int(QDialog::Accepted));
    QCOMPARE(f.dialog.directory(), target);
    // What a new server holds is the server folder's to test.
    QVERIFY(QFile::exists(target + u"/Serverinfo.ini"_s));

    // Creating it a second time refuses and keeps the dialog open.
    DialogFixture again;
    again.child<QRadioButton>(u"createRadio"_s)->click();
    again.browse(target);
    again.clickOk();
    QCOMPARE(again.dialog.result(), int(QDialog::Rejected));
    QCOMPARE(again.messages.boxTexts().size(), 1);
}

void ServerFolderDialogTest::frameOffersTheDialogInItsFileMenu()
{
    FrameFixture f;
    CMainFrame &frame = f.makeFrame();
    auto *file = frame.menuBar()->findChild<QMenu *>(u"menuFile"_s);
    QVERIFY(file);
    QVERIFY(frame.openServerFolderAction());
    QCOMPARE(file->actions().constFirst(), frame.openServerFolderAction());
    QCOMPARE(frame.openServerFolderAction()->text(), u"打开服务器文件夹(&D)…"_s);
    QVERIFY(frame.openServerFolderAction()->isEnabled());
}

int runServerFolderDialogTests(int argc, char **argv)
{
    ServerFolderDialogTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ServerFolderDialogTest.moc"
