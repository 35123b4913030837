// The application shell: start-up settings, the main window and its command
// table, the home view, and the administrator password. One executable runs
// the three test classes.

#include <QApplication>
#include <QTest>

int runShellLogicTests(int argc, char **argv);
int runMainFrameTests(int argc, char **argv);
int runPasswordDialogsTests(int argc, char **argv);
int runServerFolderDialogTests(int argc, char **argv);

int main(int argc, char **argv)
{
    // The digests are taken over GBK bytes, the system code page by default.
    qunsetenv("VELMAR_CODEPAGE");
    QApplication app(argc, argv);
    QTEST_SET_MAIN_SOURCE_PATH
    int failures = 0;
    failures += runShellLogicTests(argc, argv);
    failures += runMainFrameTests(argc, argv);
    failures += runPasswordDialogsTests(argc, argv);
    failures += runServerFolderDialogTests(argc, argv);
    return failures;
}
