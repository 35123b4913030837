// "使用外部数据" in the main frame on a loaded SQLite server database, as an
// administrator uses it: the command opens the wizard, a path is typed into
// the source page, the pages are left with "下一步", the mapping is changed
// in its combo box, and "完成" adds the members to the member grid. The
// import's rules are proven on MemberImporter; here the wizard must reach
// them, show their answers before anything changes, and leave one step.

#include "CMainFrame.h"
#include "CommandIds.h"
#include "COrganizeFormView.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "ImportMappingPage.h"
#include "ImportPreviewModel.h"
#include "ImportRefusalsDialog.h"
#include "ImportSourcePage.h"
#include "ImportTableModel.h"
#include "ImportTablePage.h"
#include "ImportWizard.h"
#include "LoadedFrame.h"
#include "MemberGridView.h"
#include "ViewIds.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLibrary>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Row 3 repeats bert, who is a member already; row 4's gender "男" is not "1".
const char *const StaffCsv = "用户ID,姓名,Mail,性别,部门\n"
                             "erik,Erik,erik@example.com,1,研发\n"
                             "fay,Fay,fay@example.com,0,市场\n"
                             "bert,Bert Two,bert2@example.com,1,行政\n"
                             "gus,Gus,gus@example.com,男,研发\n";

} // namespace

class ImportWizardTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void commandAndPictureOnEveryPage();
    void walkGuessChangePreviewThenStopAtTheRefusedRow();
    void skippedRowsAreListed();
    void everyKindOfSourceOnTheFirstPage();
    void progressCancelAddsNothing();

private:
    CMainFrame &frame() { return m_f->frame(); }
    MemberGridView *grid()
    {
        return qobject_cast<COrganizeFormView *>(frame().view(ViewId::Organize))->memberGrid(false);
    }
    QStringList gridLogins();
    QString writeFile(const QString &name, const QByteArray &content);
    ImportWizard *openWizard();
    // Types a text file's path into the source page and presses Enter,
    // which opens it and, when it opened, goes on to the table page.
    void typeSource(ImportWizard *wizard, const QString &path);
    void next(ImportWizard *wizard);
    ImportWizard *walkToFields(const QString &path);

    std::unique_ptr<LoadedFrame> m_f;
    std::unique_ptr<QTemporaryDir> m_dir;
    QTemporaryDir m_odbcFolder;
    QList<std::shared_ptr<QAbstractItemModelTester>> m_testers;
};

// An SQLite file with the table staff (uid, cn, mail) holding hana.
static bool writePeople(const QString &path)
{
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"people"_s);
        db.setDatabaseName(path);
        QSqlQuery query(db);
        ok = db.open() && query.exec(u"CREATE TABLE staff (uid TEXT, cn TEXT, mail TEXT)"_s)
            && query.exec(u"INSERT INTO staff VALUES ('hana', 'Hana', 'h@example.com')"_s);
        db.close();
    }
    QSqlDatabase::removeDatabase(u"people"_s);
    return ok;
}

void ImportWizardTest::initTestCase()
{
    // unixODBC reads the user's data sources once per process: the test's
    // own data source, over the SQLite ODBC driver, is there first.
    QVERIFY(m_odbcFolder.isValid());
    const QString database = m_odbcFolder.filePath(u"dsn.db"_s);
    QVERIFY(writePeople(database));
    QFile ini(m_odbcFolder.filePath(u"odbc.ini"_s));
    QVERIFY(ini.open(QIODevice::WriteOnly));
    ini.write("[velmar-wizard-dsn]\nDriver=SQLite3\nDatabase=" + database.toUtf8() + "\n");
    ini.close();
    qputenv("ODBCINI", QFile::encodeName(ini.fileName()));
    // The driver loads and unloads libodbcinst; kept loaded, what it caches
    // stays reachable for the leak checker.
    QLibrary odbcinst(u"odbcinst"_s, 2);
    odbcinst.setLoadHints(QLibrary::PreventUnloadHint);
    odbcinst.load();
}

void ImportWizardTest::init()
{
    m_testers.clear();
    OPEN_LOADED_FRAME(m_f);
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_f->messages().clear();
}

QStringList ImportWizardTest::gridLogins()
{
    QStringList logins;
    QAbstractItemModel *model = grid()->model();
    for (int row = 0; row + 1 < model->rowCount(); ++row) // the blank row last
        logins.append(model->index(row, 0).data().toString());
    return logins;
}

QString ImportWizardTest::writeFile(const QString &name, const QByteArray &content)
{
    QFile file(m_dir->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return {};
    return file.fileName();
}

ImportWizard *ImportWizardTest::openWizard()
{
    QAction *command = frame().commandAction(CommandId::UseExternalData);
    if (!command || !command->isEnabled())
        return nullptr;
    command->trigger();
    ImportWizard *wizard = frame().importWizard();
    if (!wizard || !wizard->isVisible())
        return nullptr;
    m_testers.append(std::make_shared<QAbstractItemModelTester>(wizard->tablePage()->previewModel(),
        QAbstractItemModelTester::FailureReportingMode::QtTest));
    m_testers.append(
        std::make_shared<QAbstractItemModelTester>(wizard->mappingPage()->previewModel(),
            QAbstractItemModelTester::FailureReportingMode::QtTest));
    return wizard;
}

void ImportWizardTest::typeSource(ImportWizard *wizard, const QString &path)
{
    auto *field = wizard->findChild<QLineEdit *>(u"importTextPath"_s);
    QVERIFY(field);
    field->setFocus();
    field->selectAll();
    typeText(field, path);
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(field->text(), path);
}

void ImportWizardTest::next(ImportWizard *wizard)
{
    QAbstractButton *button = wizard->button(QWizard::NextButton);
    QVERIFY(button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
}

ImportWizard *ImportWizardTest::walkToFields(const QString &path)
{
    ImportWizard *wizard = openWizard();
    if (!wizard)
        return nullptr;
    typeSource(wizard, path);
    next(wizard);
    return wizard->currentId() == ImportWizard::MappingPage ? wizard : nullptr;
}

void ImportWizardTest::commandAndPictureOnEveryPage()
{
    QAction *command = frame().commandAction(CommandId::UseExternalData);
    QCOMPARE(command->text(), u"使用外部数据(&O)"_s);
    QCOMPARE(command->shortcut(), QKeySequence(u"Ctrl+O"_s));
    QCOMPARE(command->statusTip(), u"读取目录中的用户信息."_s);
    auto *fileMenu = frame().findChild<QMenu *>(u"menuFile"_s);
    QVERIFY(fileMenu && fileMenu->actions().contains(command));

    // The picture beside the console stands on each page.
    QImage picture(40, 80, QImage::Format_RGB32);
    picture.fill(Qt::darkBlue);
    QVERIFY(picture.save(m_f->fixture.dir.programDir() + u"/Wizgration.bmp"_s, "BMP"));
    ImportWizard *wizard = openWizard();
    QVERIFY(wizard);
    const QStringList titles { u"查询原始数据 - 选择原始"_s, u"查询原始数据 - 选择数据表"_s,
        u"查询原始数据 - 设置数据单项"_s };
    for (int id = ImportWizard::SourcePage; id <= ImportWizard::MappingPage; ++id) {
        QCOMPARE(wizard->page(id)->title(), titles.at(id));
        QCOMPARE(wizard->page(id)->pixmap(QWizard::WatermarkPixmap).size(), QSize(40, 80));
    }
    // Every control has its visible title as its accessible name.
    for (QWidget *control : wizard->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QLineEdit *>(control)
            || qobject_cast<QComboBox *>(control) || qobject_cast<QAbstractItemView *>(control))
            QVERIFY2(!control->accessibleName().isEmpty() || !control->isVisibleTo(wizard),
                qPrintable(control->objectName()));
    }
}

void ImportWizardTest::walkGuessChangePreviewThenStopAtTheRefusedRow()
{
    const QString path = writeFile(u"staff.csv"_s, StaffCsv);
    ImportWizard *wizard = openWizard();
    QVERIFY(wizard);
    QVERIFY(!wizard->button(QWizard::NextButton)->isEnabled());
    typeSource(wizard, path);
    QCOMPARE(wizard->currentId(), int(ImportWizard::TablePage));
    // One table, its rows shown before going on.
    auto *tables = wizard->findChild<QListWidget *>(u"importTableList"_s);
    QCOMPARE(tables->count(), 1);
    QCOMPARE(wizard->tablePage()->previewModel()->rowCount(), 4);
    QCOMPARE(
        wizard->tablePage()->previewModel()->headerData(4, Qt::Horizontal).toString(), u"部门"_s);
    next(wizard);

    // The guess (ImportFields' rules) stands in the boxes: Mail is 邮箱; 部门
    // fills nothing.
    ImportMappingPage *page = wizard->mappingPage();
    QCOMPARE(page->mapping().value(ImportFields::Email), 2);
    QCOMPARE(page->fieldBox(ImportFields::OfficePhone)->currentText(), u"(不导入)"_s);

    // 办公电话 takes 部门, chosen with the keys.
    QComboBox *office = page->fieldBox(ImportFields::OfficePhone);
    office->setFocus();
    while (office->currentText() != u"部门"_s && office->currentIndex() < office->count() - 1)
        QTest::keyClick(office, Qt::Key_Down);
    QTRY_COMPARE(page->mapping().value(ImportFields::OfficePhone), 4);
    ImportPreviewModel *preview = page->previewModel();
    QTRY_COMPARE(
        preview->index(0, ImportPreviewModel::fieldColumn(ImportFields::OfficePhone)).data(),
        QVariant(u"研发"_s));
    // Back to the table and on again: the choice stays.
    QTest::mouseClick(wizard->button(QWizard::BackButton), Qt::LeftButton);
    QCOMPARE(wizard->currentId(), int(ImportWizard::TablePage));
    next(wizard);
    QCOMPARE(page->mapping().value(ImportFields::OfficePhone), 4);

    // Nothing has changed yet; the preview says what would.
    QCOMPARE(gridLogins(), (QStringList { u"anna"_s, u"bert"_s, u"carl"_s, u"dora"_s }));
    const int result = preview->resultColumn();
    QCOMPARE(preview->headerData(result, Qt::Horizontal).toString(), u"结果"_s);
    // The file has no password column: the members are added, and the save
    // will want their passwords, which is said now.
    QCOMPARE(preview->index(0, result).data().toString(), u"导入 (没有密码: 保存前须填写)"_s);
    QVERIFY(preview->index(2, result).data().toString().contains(u"用户已存在."_s));
    QVERIFY(preview->index(3, result).data().toString().startsWith(u"不导入"_s));
    const QString summary = wizard->findChild<QLabel *>(u"importPreviewSummary"_s)->text();
    QVERIFY2(summary.contains(u"第 3 行"_s), qPrintable(summary));
    QVERIFY2(summary.contains(u"其中 2 个会员没有密码"_s), qPrintable(summary));

    // 完成: two members, then the refused third row's balloon at the member grid.
    QTest::mouseClick(wizard->button(QWizard::FinishButton), Qt::LeftButton);
    QTRY_VERIFY(!frame().importWizard());
    QCOMPARE(frame().currentViewId(), ViewId::Organize);
    QCOMPARE(gridLogins(),
        (QStringList { u"anna"_s, u"bert"_s, u"carl"_s, u"dora"_s, u"erik"_s, u"fay"_s }));
    QCOMPARE(grid()->currentIndex().data().toString(), u"erik"_s);
    QCOMPARE(m_f->messages().balloonTexts(), QStringList { u"用户已存在."_s });
    QCOMPARE(m_f->messages().balloons().last().anchor, grid()->viewport());

    // One step (the importer's): the frame's undo takes both back.
    frame().undoAction()->trigger();
    QCOMPARE(gridLogins(), (QStringList { u"anna"_s, u"bert"_s, u"carl"_s, u"dora"_s }));
}

void ImportWizardTest::skippedRowsAreListed()
{
    ImportWizard *wizard = walkToFields(writeFile(u"staff.csv"_s, StaffCsv));
    QVERIFY(wizard);
    auto *skip = wizard->findChild<QCheckBox *>(u"importSkipRefused"_s);
    QVERIFY(!skip->isChecked());
    QTest::mouseClick(skip, Qt::LeftButton, {}, QPoint(4, skip->height() / 2));
    ImportPreviewModel *preview = wizard->mappingPage()->previewModel();
    QVERIFY(preview->index(2, preview->resultColumn()).data().toString().startsWith(u"跳过"_s));

    QTest::mouseClick(wizard->button(QWizard::FinishButton), Qt::LeftButton);
    QTRY_VERIFY(!frame().importWizard());
    QCOMPARE(gridLogins(),
        (QStringList {
            u"anna"_s, u"bert"_s, u"carl"_s, u"dora"_s, u"erik"_s, u"fay"_s, u"gus"_s }));
    QVERIFY(m_f->messages().balloonTexts().isEmpty());
    auto *report = frame().findChild<ImportRefusalsDialog *>(u"importRefusalsDialog"_s);
    QVERIFY(report && report->isVisible());
    QTableWidget *list = report->list();
    QCOMPARE(list->rowCount(), 1);
    QCOMPARE(list->item(0, 0)->text(), u"3"_s);
    QCOMPARE(list->item(0, 1)->text(), u"bert"_s);
    QCOMPARE(list->item(0, 2)->text(), u"用户已存在."_s);
    report->accept();
}

void ImportWizardTest::everyKindOfSourceOnTheFirstPage()
{
    ImportWizard *wizard = openWizard();
    QVERIFY(wizard);
    auto *status = wizard->findChild<QLabel *>(u"importSourceStatus"_s);
    auto *open = wizard->findChild<QPushButton *>(u"importOpenSource"_s);
    auto choose = [wizard](const QString &kind) {
        QTest::mouseClick(
            wizard->findChild<QRadioButton *>(kind), Qt::LeftButton, {}, QPoint(4, 8));
    };
    auto type = [wizard](const QString &field, const QString &text) {
        auto *edit = wizard->findChild<QLineEdit *>(field);
        edit->setFocus();
        edit->selectAll();
        typeText(edit, text);
    };

    // A file that is not there: why, on the page, and no way on.
    typeSource(wizard, m_dir->filePath(u"missing.csv"_s));
    QCOMPARE(wizard->currentId(), int(ImportWizard::SourcePage));
    QVERIFY(status->text().startsWith(u"无法读取文件"_s));
    QVERIFY(status->text().contains(u"missing.csv"_s));
    QVERIFY(!wizard->button(QWizard::NextButton)->isEnabled());

    // The data sources unixODBC knows; choosing one is its connection string.
    choose(u"importKindOdbc"_s);
    auto *sources = wizard->findChild<QListWidget *>(u"importOdbcDataSources"_s);
    const QList<QListWidgetItem *> dsn
        = sources->findItems(u"velmar-wizard-dsn"_s, Qt::MatchExactly);
    QCOMPARE(dsn.size(), 1);
    QTest::mouseClick(
        sources->viewport(), Qt::LeftButton, {}, sources->visualItemRect(dsn.first()).center());
    QCOMPARE(wizard->findChild<QLineEdit *>(u"importOdbcConnection"_s)->text(),
        u"DSN=velmar-wizard-dsn;"_s);
    QTest::mouseClick(open, Qt::LeftButton);
    QVERIFY2(wizard->sourcePage()->errorText().isEmpty(), qPrintable(status->text()));
    QVERIFY(wizard->sourceTables().contains(u"staff"_s));

    // A directory server that takes the connection and keeps the answer
    // back: the window goes on (this server is served by the window's own
    // event loop), says what it waits for and stays open; when the server
    // hangs up, why stands on the page.
    choose(u"importKindLdap"_s);
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost, 0));
    QString shownMeanwhile;
    connect(&silent, &QTcpServer::newConnection, this, [&] {
        QTcpSocket *socket = silent.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [&, socket] {
            shownMeanwhile = status->text();
            // Closing the window waits for the answer too.
            QVERIFY(!wizard->close());
            socket->abort();
        });
    });
    type(u"importLdapUrl"_s, u"ldap://127.0.0.1:%1"_s.arg(silent.serverPort()));
    QTest::mouseClick(open, Qt::LeftButton);
    QCOMPARE(shownMeanwhile, u"正在打开数据源..."_s);
    QVERIFY2(wizard->sourcePage()->errorText().startsWith(u"无法"_s), qPrintable(status->text()));
    QVERIFY(!wizard->hasSource());

    // Another kind drops the opened source; an SQLite file is read to the end.
    choose(u"importKindSqlite"_s);
    QVERIFY(!wizard->hasSource());
    QVERIFY(!wizard->button(QWizard::NextButton)->isEnabled());
    const QString dbPath = m_dir->filePath(u"people.db"_s);
    QVERIFY(writePeople(dbPath));
    type(u"importSqlitePath"_s, dbPath);
    QTest::mouseClick(open, Qt::LeftButton);
    QVERIFY2(wizard->sourcePage()->errorText().isEmpty(), qPrintable(status->text()));
    next(wizard);
    auto *tables = wizard->findChild<QListWidget *>(u"importTableList"_s);
    QCOMPARE(tables->currentItem()->text(), u"staff"_s);
    next(wizard);
    QTest::mouseClick(wizard->button(QWizard::FinishButton), Qt::LeftButton);
    QTRY_VERIFY(!frame().importWizard());
    QVERIFY(gridLogins().contains(u"hana"_s));
}

void ImportWizardTest::progressCancelAddsNothing()
{
    const int rows = ImportWizard::ProgressRows + 100;
    QByteArray csv = "userid\tname\n";
    for (int row = 0; row < rows; ++row)
        csv += "bulk" + QByteArray::number(row) + "\tBulk " + QByteArray::number(row) + "\n";
    ImportWizard *wizard = walkToFields(writeFile(u"bulk.tsv"_s, csv));
    QVERIFY(wizard);
    QCOMPARE(wizard->mappingPage()->previewModel()->rowCount(), rows);

    // Cancelled from the progress dialog: nothing added, the wizard stays.
    QTimer::singleShot(0, wizard, [wizard] {
        if (auto *progress = wizard->findChild<QProgressDialog *>(u"importProgress"_s))
            progress->cancel();
    });
    QTest::mouseClick(wizard->button(QWizard::FinishButton), Qt::LeftButton);
    QVERIFY(wizard->lastResult() && wizard->lastResult()->cancelled);
    QCOMPARE(frame().importWizard(), wizard);
    QCOMPARE(wizard->findChild<QLabel *>(u"importPreviewSummary"_s)->text(),
        u"导入已取消, 没有添加会员."_s);
    QCOMPARE(gridLogins().size(), 4);
    QTest::mouseClick(wizard->button(QWizard::FinishButton), Qt::LeftButton);
    QTRY_VERIFY(!frame().importWizard());
    QCOMPARE(gridLogins().size(), 4 + rows);
}

QTEST_MAIN(ImportWizardTest)
#include "tst_import_wizard.moc"
