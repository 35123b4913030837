#include "AppTestSupport.h"

#include "CRegistry.h"
#include "RegistryHives.h"

#include <QLineEdit>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QUuid>

using namespace Qt::StringLiterals;

const QString ConsoleKey = u"Software\\Velmar\\VelmarManager"_s;
const QString DatabaseKey = u"SOFTWARE\\Velmar\\Services\\DataBase"_s;

bool setRegistryString(RegistryHives &hives, RegistryRoot root, const QString &key,
    const QString &name, const QString &value)
{
    CRegistry registry(hives, root);
    return registry.createKey(root, key) && registry.writeString(name, value);
}

bool setRegistryNumber(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name, qint32 value)
{
    CRegistry registry(hives, root);
    return registry.createKey(root, key) && registry.writeNumber(name, value);
}

std::optional<QString> registryString(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name)
{
    CRegistry registry(hives, root);
    QString value;
    if (registry.openKey(root, key) && registry.readString(name, value))
        return value;
    return std::nullopt;
}

std::optional<qint32> registryNumber(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name)
{
    CRegistry registry(hives, root);
    qint32 value = 0;
    if (registry.openKey(root, key) && registry.readNumber(name, value))
        return value;
    return std::nullopt;
}

bool registryKeyExists(RegistryHives &hives, RegistryRoot root, const QString &key)
{
    CRegistry registry(hives, root);
    return registry.openKey(root, key);
}

MainFrameContext FrameFixture::context()
{
    MainFrameContext context { dir.programDir(), dir.hives(), messages, [this] { return now; },
        nullptr };
    context.loadServerData = false;
    // The desktop's browser is never started from a test.
    context.openUrl = [this](const QUrl &url) {
        openedUrls.append(url);
        return true;
    };
    return context;
}

CMainFrame &FrameFixture::makeFrame()
{
    frame = std::make_unique<CMainFrame>(context());
    return *frame;
}

bool FrameFixture::lock(const QString &digest)
{
    return setRegistryNumber(
               dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPasswordState"_s, 1)
        && setRegistryString(
            dir.hives(), RegistryRoot::LocalMachine, ConsoleKey, u"AdmPassword"_s, digest);
}

bool createSqliteDatabase(const QString &path)
{
    const QString name = QUuid::createUuid().toString();
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        db.setDatabaseName(path);
        ok = db.open()
            && QSqlQuery(db).exec(u"CREATE TABLE Member (OMemberID INTEGER, UserID TEXT)"_s);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

bool wholeTextSelected(const QLineEdit *field)
{
    return !field->text().isEmpty() && field->selectedText() == field->text();
}

bool showActive(QWidget *window)
{
    window->show();
    window->activateWindow();
    return QTest::qWaitForWindowActive(window);
}
