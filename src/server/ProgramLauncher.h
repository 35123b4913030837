#pragma once

#include <QString>
#include <QStringList>

// Starts an outside program without waiting for it (the "pskill" tool, a
// daemon registering itself). Returns whether the program could be started.
class ProgramLauncher
{
public:
    virtual ~ProgramLauncher() = default;
    virtual bool launchDetached(
        const QString &program, const QStringList &arguments, const QString &workingDirectory)
        = 0;
};

class DetachedProcessLauncher final : public ProgramLauncher
{
public:
    bool launchDetached(const QString &program, const QStringList &arguments,
        const QString &workingDirectory) override;
};
