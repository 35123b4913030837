// The service-management commands of the main window.

#include <QApplication>
#include <QTest>

int runServiceCommandsTests(int argc, char **argv);

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QTEST_SET_MAIN_SOURCE_PATH
    return runServiceCommandsTests(argc, argv);
}
