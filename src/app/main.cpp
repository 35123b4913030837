#include "CVelmarManagerApp.h"

int main(int argc, char *argv[])
{
    CVelmarManagerApp app(argc, argv);
    if (!app.initInstance())
        return app.startupExitCode();
    return app.exec();
}
