#include "StartupOptions.h"

#include "ServerFolder.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

StartupOptions StartupOptions::parse(const QStringList &arguments, const QString &executableDir,
    const QString &environmentServerDir, const QString &environmentRegistryDir)
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

    // "/install" counts wherever it appears in the rest of the command line,
    // also inside a longer word, as the service registration has always
    // looked for it. Our own option values (folders) are left out so that a
    // folder named ".../install" does not register services.
    options.install = loose.join(u' ').contains(u"/install"_s);

    // Other switches are ignored; a plain word would be a document to open,
    // which this console does not have.
    for (const QString &word : std::as_const(loose)) {
        if (!word.startsWith(u'/') && !word.startsWith(u'-')) {
            options.error = u"cannot open %1: the console opens no documents"_s.arg(word);
            return options;
        }
    }

    if (!options.startView.isEmpty() && !startViews().contains(options.startView)) {
        options.error
            = u"unknown view %1 (one of %2)"_s.arg(options.startView, startViews().join(u", "_s));
        return options;
    }

    options.programDirectory
        = ServerFolder::chooseDirectory(serverDir, environmentServerDir, executableDir);
    if (!QFileInfo(options.programDirectory).isDir()) {
        options.error = u"the server folder %1 does not exist"_s.arg(options.programDirectory);
        return options;
    }
    if (options.registryDirectory.isEmpty() && !environmentRegistryDir.isEmpty())
        options.registryDirectory = ServerFolder::cleanDirectory(environmentRegistryDir);
    return options;
}

QString StartupOptions::usage()
{
    return u"Usage: VelmarManager [options] [/install]\n"
           "  --server-dir DIR     server folder (default: $VELMAR_SERVER_DIR, else the\n"
           "                       folder of this program)\n"
           "  --registry-dir DIR   folder of the registry hive files (default:\n"
           "                       $VELMAR_REGISTRY_DIR, else /etc/velmar and ~/.config/velmar)\n"
           "  --sql-trace FILE     write every SQL statement executed to FILE\n"
           "  --screenshot FILE    after start-up, save the main window as PNG to FILE and quit\n"
           "  --view NAME          show a view at start: home, organize, positions,\n"
           "                       permissions, filebox, notices, chatlog, syslog or userlog;\n"
           "                       with --screenshot a log view first searches the last week\n"
           "  --version            print the version and the commit it was built from\n"
           "  -h, --help           print this help\n"
           "  /install             register the server's services\n"_s;
}

QStringList StartupOptions::startViews()
{
    return { u"home"_s, u"organize"_s, u"positions"_s, u"permissions"_s, u"filebox"_s, u"notices"_s,
        u"chatlog"_s, u"syslog"_s, u"userlog"_s };
}
