#pragma once

#include <QString>
#include <QStringList>

// What the command line and the environment tell the console at start.
struct StartupOptions
{
    QString programDirectory; // the server folder: every file path derives from it
    QString registryDirectory; // empty: the hives' usual places
    QString sqlTracePath;
    QString screenshotPath;
    QString startView; // --view: "chatlog", "syslog" or "userlog", shown at start
    bool install = false; // "/install" somewhere on the command line
    bool help = false;
    QString error; // non-empty: start-up ends with this text

    // arguments without the program name. The program directory is
    // --server-dir, else environmentServerDir, else executableDir; a relative
    // one is taken from the working directory.
    static StartupOptions parse(const QStringList &arguments, const QString &executableDir,
        const QString &environmentServerDir, const QString &environmentRegistryDir);
    static QString usage();
    // The names --view accepts.
    static QStringList startViews();
};
