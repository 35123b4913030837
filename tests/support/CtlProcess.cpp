#include "CtlProcess.h"

#include <QProcess>

CtlRun runCommand(const QString &program, const QStringList &arguments,
    const QProcessEnvironment &environment, const QByteArray &input)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!input.isEmpty())
        process.write(input);
    process.closeWriteChannel();
    CtlRun run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}
