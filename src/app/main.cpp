#include "AllocatorTuning.h"
#include "CVelmarManagerApp.h"
#include "StartupOptions.h"

#include <cstdio>
#include <cstring>

int main(int argc, char *argv[])
{
    AllocatorTuning::prepare(argv);
    // The usage is printed before any window system is needed.
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(StartupOptions::usage().toLocal8Bit().constData(), stdout);
            return 0;
        }
    }
    CVelmarManagerApp app(argc, argv);
    if (!app.initInstance())
        return app.startupExitCode();
    return app.exec();
}
