// The order in which a program finds its server folder, on real folders, and
// the folder the console remembers in its settings.

#include "ServerFolderChoice.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TstServerFolderChoice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The console's settings go to a test folder, not the user's.
        QStandardPaths::setTestModeEnabled(true);
    }

    void order_data()
    {
        // Which of the four candidates are given and hold "Serverinfo.ini";
        // "-" stands for not given.
        QTest::addColumn<QString>("option");
        QTest::addColumn<bool>("executableIsServer");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("remembered");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<ServerFolderChoice::Reason>("reason");

        using R = ServerFolderChoice::Reason;
        QTest::newRow("option beats a server beside the program")
            << u"opt"_s << true << u"env"_s << u"mem"_s << u"opt"_s << R::Option;
        QTest::newRow("the program's folder when it holds a server")
            << u"-"_s << true << u"env"_s << u"mem"_s << u"exe"_s << R::ExecutableFolder;
        QTest::newRow("environment")
            << u"-"_s << false << u"env"_s << u"mem"_s << u"env"_s << R::Environment;
        QTest::newRow("remembered")
            << u"-"_s << false << u"-"_s << u"mem"_s << u"mem"_s << R::Remembered;
        QTest::newRow("a remembered folder that lost its server is passed over")
            << u"-"_s << false << u"-"_s << u"gone"_s << QString() << R::None;
        QTest::newRow("nothing") << u"-"_s << false << u"-"_s << u"-"_s << QString() << R::None;
    }

    void order()
    {
        QFETCH(QString, option);
        QFETCH(bool, executableIsServer);
        QFETCH(QString, environment);
        QFETCH(QString, remembered);
        QFETCH(QString, expected);
        QFETCH(ServerFolderChoice::Reason, reason);

        QTemporaryDir root;
        for (const QString &name : { u"opt"_s, u"exe"_s, u"env"_s, u"mem"_s, u"gone"_s })
            QVERIFY(QDir(root.path()).mkdir(name));
        for (const QString &name : { u"opt"_s, u"env"_s, u"mem"_s })
            makeServer(root.filePath(name));
        if (executableIsServer)
            makeServer(root.filePath(u"exe"_s));
        const auto path = [&root](const QString &name) {
            return name == u"-"_s ? QString() : root.filePath(name);
        };

        const ServerFolderChoice::Choice choice = ServerFolderChoice::choose(
            path(option), root.filePath(u"exe"_s) + u'/', path(environment), path(remembered));
        QCOMPARE(choice.reason, reason);
        QCOMPARE(choice.directory, expected.isEmpty() ? QString() : root.filePath(expected));
        QVERIFY(!ServerFolderChoice::describe(choice).isEmpty());
    }

    void relativeOptionIsFromWorkingDirectory()
    {
        const ServerFolderChoice::Choice choice
            = ServerFolderChoice::choose(u"server/../server/"_s, {}, {}, {});
        QCOMPARE(choice.directory, QDir::current().absoluteFilePath(u"server"_s));
    }

    void rememberedFolderIsKept()
    {
        QTemporaryDir folder;
        ServerFolderChoice::remember(folder.path() + u"/./"_s);
        QCOMPARE(ServerFolderChoice::remembered(), folder.path());
    }

private:
    static void makeServer(const QString &directory)
    {
        QFile ini(directory + u"/Serverinfo.ini"_s);
        QVERIFY(ini.open(QIODevice::WriteOnly));
    }
};

QTEST_GUILESS_MAIN(TstServerFolderChoice)
#include "tst_serverfolderchoice.moc"
