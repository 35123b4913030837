#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// One run of a command-line tool of the project (velmarctl), as an
// administrator's script would run it.
struct CtlRun
{
    int exitCode = -1; // -1: it did not finish on its own within two minutes
    QByteArray out;
    QString err;

    QString outText() const { return QString::fromUtf8(out); }
};

// input goes to the command's standard input, which is then closed.
CtlRun runCommand(const QString &program, const QStringList &arguments,
    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
    const QByteArray &input = {});
