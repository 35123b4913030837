#pragma once

#include <QString>

// What a program says about itself with --version: the project's version and
// the commit its sources were at when it was built.
class BuildInfo final
{
public:
    static QString version(); // "0.1.0"
    static QString commit(); // short hash, "-modified" for a changed tree, or "unknown"
    // "0.1.0 (commit 1a2b3c4d5e6f)"
    static QString versionText();
    // "velmarctl 0.1.0 (commit 1a2b3c4d5e6f)"
    static QString versionLine(const QString &program);
};
