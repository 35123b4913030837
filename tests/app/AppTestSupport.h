#pragma once

#include "CMainFrame.h"
#include "RegistryTypes.h"
#include "ScriptedMessageService.h"
#include "TempServerDir.h"

#include <memory>
#include <optional>
#include <QDateTime>
#include <QString>

class QLineEdit;

// Registry access for test set-up and checks, through the same wrapper the console uses.
bool setRegistryString(RegistryHives &hives, RegistryRoot root, const QString &key,
    const QString &name, const QString &value);
bool setRegistryNumber(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name, qint32 value);
std::optional<QString> registryString(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name);
std::optional<qint32> registryNumber(
    RegistryHives &hives, RegistryRoot root, const QString &key, const QString &name);
bool registryKeyExists(RegistryHives &hives, RegistryRoot root, const QString &key);

// The administrator values live here, in the machine hive.
extern const QString ConsoleKey;
extern const QString DatabaseKey;

// A server folder, scripted message boxes, a fixed clock and the frame built on them.
struct FrameFixture
{
    TempServerDir dir;
    ScriptedMessageService messages;
    QDateTime now = QDateTime(QDate(2024, 3, 5), QTime(9, 30, 15));
    std::unique_ptr<CMainFrame> frame;
    QList<QUrl> openedUrls; // what the frame opened in the browser

    MainFrameContext context();
    CMainFrame &makeFrame();
    // Locks the console with this password digest: the frame asks for it first.
    bool lock(const QString &digest);
};

// Writes a small SQLite database file (the local "VelmarDB.mdb" of this platform).
bool createSqliteDatabase(const QString &path);

bool wholeTextSelected(const QLineEdit *field);

// Shows the window and waits until it is the active one, so that focus
// changes send their events (a field that loses the focus drops its selection).
bool showActive(QWidget *window);
