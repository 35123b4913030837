#include "AllocatorTuning.h"
#include "BuildInfo.h"
#include "CVelmarManagerApp.h"
#include "StartupOptions.h"

#include <cstdio>
#include <cstring>

int main(int argc, char *argv[])
{
    AllocatorTuning::prepare(argv);
    // The usage and the version are printed before any window system is needed.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(StartupOptions::usage().toLocal8Bit().constData(), stdout);
            return 0;
        }
        if (std::strcmp(argv[i], "--version") == 0) {
            const QString line = BuildInfo::versionLine(QStringLiteral("VelmarManager")) + u'\n';
            std::fputs(line.toLocal8Bit().constData(), stdout);
            return 0;
        }
    }
    CVelmarManagerApp app(argc, argv);
    if (!app.initInstance())
        return app.startupExitCode();
    return app.exec();
}
