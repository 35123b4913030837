#pragma once

#include <QString>

// Which server folder a program works on when it starts. The console and
// velmarctl take the same order:
//   1. --server-dir (or the folder named on the console's command line);
//   2. the executable's own folder, when it holds "Serverinfo.ini" - the
//      server installation puts the console beside the daemons;
//   3. VELMAR_SERVER_DIR;
//   4. the folder the console used last, while it still holds "Serverinfo.ini";
// and otherwise none: the console asks, velmarctl refuses.
class ServerFolderChoice final
{
public:
    enum class Reason { Option, ExecutableFolder, Environment, Remembered, None };

    struct Choice
    {
        QString directory; // clean and absolute; empty with Reason::None
        Reason reason = Reason::None;
    };

    static Choice choose(const QString &option, const QString &executableDir,
        const QString &environment, const QString &remembered);

    // Whether directory holds "Serverinfo.ini".
    static bool holdsServer(const QString &directory);
    // Why a folder was chosen, for velmarctl --verbose.
    static QString describe(const Choice &choice);

    // The folder the console used last, kept in its settings
    // (~/.config/Velmar/VelmarManager.conf); empty when none is kept.
    static QString remembered();
    static void remember(const QString &directory);
};
