#pragma once

#include "CtlProcess.h"
#include "TempServerDir.h"

#include <QFile>

// The velmarctl of the build, for tests whose target defines VELMARCTL_PATH.

inline CtlRun velmarctl(const QStringList &arguments,
    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
    const QByteArray &input = {})
{
    return runCommand(QStringLiteral(VELMARCTL_PATH), arguments, environment, input);
}

inline QStringList dirArguments(const TempServerDir &dir)
{
    return { QStringLiteral("--server-dir"), dir.programDir(), QStringLiteral("--registry-dir"),
        dir.registryDir() };
}

// velmarctl on the folders of dir; input goes to its standard input.
inline CtlRun ctl(
    const TempServerDir &dir, const QStringList &arguments, const QByteArray &input = {})
{
    return velmarctl(
        arguments + dirArguments(dir), QProcessEnvironment::systemEnvironment(), input);
}

// A file of tests/data (VELMAR_TEST_DATA, which velmar_add_test sets).
inline QString testDataPath(const QString &relative)
{
    return qEnvironmentVariable("VELMAR_TEST_DATA") + u'/' + relative;
}

inline QByteArray testData(const QString &relative)
{
    QFile file(testDataPath(relative));
    if (file.open(QIODevice::ReadOnly))
        return file.readAll();
    qWarning("cannot read %s (is VELMAR_TEST_DATA set?)", qPrintable(file.fileName()));
    return {};
}

// The statements of an SQL file of tests/data, one a line; lines starting
// "--" are comments.
inline QStringList sqlStatements(const QString &relative)
{
    QStringList statements;
    for (const QByteArray &line : testData(relative).split('\n')) {
        if (!line.isEmpty() && !line.startsWith("--"))
            statements << QString::fromUtf8(line);
    }
    return statements;
}
