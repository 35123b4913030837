#include "StartupOptions.h"

#include "ServerFolder.h"
#include "ServerFolderChoice.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

StartupOptions StartupOptions::parse(const QStringList &arguments, const QString &executableDir,
    const QString &environmentServerDir, const QString &environmentRegistryDir,
    const QString &rememberedServerDir)
{
    StartupOptions options;
    QString serverDir;
    QStringList loose; // everything that is not one of our options or its value

    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        QString name = argument;
        QString value;
        bool hasInlineValue = false;
        if (argument.startsWith(u"--"_s)) {
            const qsizetype equals = argument.indexOf(u'=');
            if (equals > 0) {
                name = argument.left(equals);
                value = argument.mid(equals + 1);
                hasInlineValue = true;
            }
        }
        static const QStringList withValue = { u"--server-dir"_s, u"--registry-dir"_s,
            u"--sql-trace"_s, u"--screenshot"_s, u"--view"_s };
        if (withValue.contains(name)) {
            if (!hasInlineValue) {
                if (i + 1 >= arguments.size()) {
                    options.error = u"%1 needs a value"_s.arg(name);
                    return options;
                }
                value = arguments.at(++i);
            }
            if (value.isEmpty()) {
                options.error = u"%1 needs a value"_s.arg(name);
                return options;
            }
            if (name == u"--server-dir"_s)
                serverDir = value;
            else if (name == u"--registry-dir"_s)
                options.registryDirectory = ServerFolder::cleanDirectory(value);
            else if (name == u"--sql-trace"_s)
                options.sqlTracePath = QDir().absoluteFilePath(value);
            else if (name == u"--view"_s)
                options.startView = value;
            else
                options.screenshotPath = QDir().absoluteFilePath(value);
            continue;
        }
        if (name == u"--help"_s || name == u"-h"_s) {
            options.help = true;
            continue;
        }
        if (name.startsWith(u"--"_s)) {
            options.error = u"unknown option %1"_s.arg(name);
            return options;
        }
        loose.append(argument);
    }

    // Other switches are ignored. A plain word naming a folder is the server
    // folder (the desktop entry passes one); any other would be a document
    // to open, which this console does not have.
    QStringList switches;
    for (const QString &word : std::as_const(loose)) {
        const bool isSwitch = word.startsWith(u'-') || word.startsWith(u'/');
        if (QFileInfo(word).isDir() && serverDir.isEmpty() && word != u"/install"_s) {
            serverDir = word;
            continue;
        }
        if (!isSwitch) {
            options.error = u"cannot open %1: the console opens no documents"_s.arg(word);
            return options;
        }
        switches.append(word);
    }

    // "/install" counts wherever it appears in the rest of the command line,
    // also inside a longer word, as the service registration has always
    // looked for it. Folders are left out so that a folder named
    // ".../install" does not register services.
    options.install = switches.join(u' ').contains(u"/install"_s);

    if (!options.startView.isEmpty() && !startViews().contains(options.startView)) {
        options.error
            = u"unknown view %1 (one of %2)"_s.arg(options.startView, startViews().join(u", "_s));
        return options;
    }

    options.programDirectory = ServerFolderChoice::choose(
        serverDir, executableDir, environmentServerDir, rememberedServerDir)
                                   .directory;
    if (!options.programDirectory.isEmpty() && !QFileInfo(options.programDirectory).isDir()) {
        options.error = u"the server folder %1 does not exist"_s.arg(options.programDirectory);
        return options;
    }
    if (options.registryDirectory.isEmpty() && !environmentRegistryDir.isEmpty())
        options.registryDirectory = ServerFolder::cleanDirectory(environmentRegistryDir);
    return options;
}

QString StartupOptions::usage()
{
    return u"Usage: VelmarManager [options] [DIR] [/install]\n"
           "  --server-dir DIR     server folder, also given as DIR (default: the folder of\n"
           "                       this program when it holds Serverinfo.ini, else\n"
           "                       $VELMAR_SERVER_DIR, else the folder used last, else\n"
           "                       asked for)\n"
           "  --registry-dir DIR   folder of the registry hive files (default:\n"
           "                       $VELMAR_REGISTRY_DIR, else /etc/velmar and ~/.config/velmar)\n"
           "  --sql-trace FILE     write every SQL statement executed to FILE\n"
           "  --screenshot FILE    after start-up, save the main window as PNG to FILE and quit\n"
           "  --view NAME          show a view at start: home, organize, positions,\n"
           "                       permissions, filebox, notices, chatlog, syslog, userlog,\n"
           "                       import or invite; with --screenshot a log view first\n"
           "                       searches the last week; import opens the import wizard (on\n"
           "                       the server folder's ImportDemo.csv, at its field page, when\n"
           "                       there is one); invite the mail composer for the first members\n"
           "  --version            print the version and the commit it was built from\n"
           "  -h, --help           print this help\n"
           "  /install             register the server's services\n"_s;
}

QStringList StartupOptions::startViews()
{
    return { u"home"_s, u"organize"_s, u"positions"_s, u"permissions"_s, u"filebox"_s, u"notices"_s,
        u"chatlog"_s, u"syslog"_s, u"userlog"_s, u"import"_s, u"invite"_s };
}
