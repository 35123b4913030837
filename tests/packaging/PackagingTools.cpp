#include "PackagingTools.h"

#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

ToolRun PackagingTools::run(const QString &program, const QStringList &arguments,
    const QStringList &environment, int timeoutMs)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const QString &entry : environment) {
        const qsizetype equals = entry.indexOf(u'=');
        env.insert(entry.left(equals), entry.mid(equals + 1));
    }
    process.setProcessEnvironment(env);
    process.start(program, arguments);
    ToolRun result;
    result.started = process.waitForStarted();
    if (!result.started)
        return result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QString PackagingTools::missing(const QString &program)
{
    if (!QStandardPaths::findExecutable(program).isEmpty())
        return {};
    return u"%1 is not installed: run scripts/install-deps.sh"_s.arg(program);
}
