#include "ProgramLauncher.h"

#include <QProcess>

bool DetachedProcessLauncher::launchDetached(
    const QString &program, const QStringList &arguments, const QString &workingDirectory)
{
    return QProcess::startDetached(program, arguments, workingDirectory);
}
