#pragma once

#include <QString>
#include <QStringList>

// Runs the packaging tools (groff, bash, lintian, ...) as real processes.
struct ToolRun
{
    bool started = false;
    int exitCode = -1;
    QString out;
    QString err;
};

namespace PackagingTools {
// Waits up to timeoutMs; environment entries "NAME=value" are added to the
// test's own environment.
ToolRun run(const QString &program, const QStringList &arguments,
    const QStringList &environment = {}, int timeoutMs = 120000);
// Empty when the program is on PATH, else what to do about it.
QString missing(const QString &program);
} // namespace PackagingTools

// In a test function: fails it when program is not installed.
#define REQUIRE_TOOL(program)                                                                      \
    do {                                                                                           \
        const QString why = PackagingTools::missing(program);                                      \
        if (!why.isEmpty())                                                                        \
            QFAIL(qPrintable(why));                                                                \
    } while (false)
