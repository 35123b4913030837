#pragma once

#include <QString>
#include <QStringList>

// What the command line and the environment tell the console at start.
struct StartupOptions
{
    // The server folder: every file path derives from it. Empty when none
    // was given or found: the console asks for one.
    QString programDirectory;
    QString registryDirectory; // empty: the hives' usual places
    QString sqlTracePath;
    QString screenshotPath;
    QString startView; // --view: one of startViews(), shown at start
    bool install = false; // "/install" somewhere on the command line
    bool help = false;
    QString error; // non-empty: start-up ends with this text

    // arguments without the program name. The program directory is chosen
    // in ServerFolderChoice's order; a relative one is taken from the
    // working directory.
    static StartupOptions parse(const QStringList &arguments, const QString &executableDir,
        const QString &environmentServerDir, const QString &environmentRegistryDir,
        const QString &rememberedServerDir = {});
    static QString usage();
    // The names --view accepts.
    static QStringList startViews();
};
