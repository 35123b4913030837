#include "CodePage.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

CtlRun gbkCtl(const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"VELMAR_CODEPAGE"_s, u"GBK"_s);
    return velmarctl(arguments, environment);
}

QStringList logsArguments(TempServerDir &dir, const QString &kind, const QStringList &more = {})
{
    return QStringList { u"logs"_s, kind, u"--from"_s, u"2007-10-08T00:00:00"_s, u"--to"_s,
        u"2007-10-08 23:59:59"_s }
    + dirArguments(dir) + more;
}

QStringList lines(const QByteArray &out)
{
    QStringList result = QString::fromUtf8(out).split(u'\n');
    if (!result.isEmpty() && result.last().isEmpty())
        result.removeLast();
    return result;
}

const CodePage Gbk("GBK");

void writeLogs(TempServerDir &dir, const QString &root)
{
    auto write = [&](const QString &relative, const QByteArray &bytes) {
        QVERIFY(dir.writeFile(root + relative, bytes));
    };
    write(u"/VelmarD/u2007100810.txt"_s,
        Gbk.encode(
            u"2007-10-08 10:05:09 VelmarD 10.0.0.1 5000 MSG_SENT 1 1 2;9 10.0.0.9 0 0 64\r\n"
            u"MESSAGE: 你好\tthere\r\n.END_OF_DATA\r\n"
            u"2007-10-08 10:07:00 VelmarD 10.0.0.1 5000 MSG_RECV 1 2 1 10.0.0.9 0 0 0\r\n"_s));
    write(u"/VelmarD/u2007100910.txt"_s,
        "2007-10-09 10:05:09 VelmarD 10.0.0.1 5000 MSG_RECV 1 2 1 10.0.0.9 0 0 0\r\n");
    write(u"/VelmarD/s2007100811.txt"_s, "2007-10-08 11:00:00 VelmarD started\r\n");
    write(u"/RelayD/s2007100809.txt"_s, "2007-10-08 09:00:00 RelayD relay up\r\n");
    write(u"/ChatD/c200710081230_1.txt"_s,
        Gbk.encode(u"2007-10-08 12:30:01 CR7 2|1|a|b|c|2|a|b|c\r\n"
                   u"2007-10-08 12:30:05 Anna(anna)\r\n早上好\r\n"_s));
}

} // namespace

class tst_VelmarctlLogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void userLogWithNamesFromTheDatabase()
    {
        TempServerDir dir;
        TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY(db.execAll(sqlStatements(u"velmarctl/log-members.sql"_s)));
        writeLogs(dir, u"LogFiles"_s);

        const CtlRun run = gbkCtl(logsArguments(dir, u"user"_s));
        QCOMPARE(run.exitCode, 0);
        const QString block = u"MESSAGE: 你好\\tthere\\r\\n.END_OF_DATA\\r\\n"_s;
        // The sent message and a received copy per receiver; which rows there
        // are, and the names given to them, are the user log reader's to test.
        const QStringList out = lines(run.out);
        QCOMPARE(out.size(), 4);
        QCOMPARE(out.mid(0, 2),
            QStringList({
                u"2007-10-08 10:07:00\t\tVelmarD\t10.0.0.1\t5000\tMSG_RECV\t1\t博\tAnna\t10.0.0.9\t0\t0\t0\t"_s,
                u"2007-10-08 10:05:09\t\tVelmarD\t10.0.0.1\t5000\tMSG_SENT\t1\tAnna\t博\t10.0.0.9\t0\t0\t64\t"_s
                    + block,
            }));
    }

    void systemAndChatLogs()
    {
        TempServerDir dir;
        writeLogs(dir, u"LogFiles"_s);
        CtlRun run = gbkCtl(logsArguments(dir, u"system"_s));
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(lines(run.out),
            QStringList({ u"2007-10-08 11:00:00\t\tVelmarD\tstarted"_s,
                u"2007-10-08 09:00:00\t\tRelayD\trelay up"_s }));
        run = gbkCtl(logsArguments(dir, u"chat"_s));
        QCOMPARE(run.exitCode, 0);
        // No database: the participants are unknown, so the Users cell is empty.
        QCOMPARE(lines(run.out),
            QStringList { u"2007-10-08 12:30:01\t\t\tAnna(anna) 早上好\t"_s + dir.programDir()
                + u"/LogFiles//ChatD/c200710081230_1.txt"_s });
        QVERIFY(!QFile::exists(dir.databasePath())); // looking did not create one
    }

    void jsonAndOldestFirst()
    {
        TempServerDir dir;
        writeLogs(dir, u"LogFiles"_s);
        const CtlRun run = gbkCtl(
            logsArguments(dir, u"user"_s, { u"--oldest-first"_s, u"--format"_s, u"json"_s }));
        QCOMPARE(run.exitCode, 0);
        const QStringList out = lines(run.out);
        QCOMPARE(out.size(), 4);
        const QJsonArray first = QJsonDocument::fromJson(out.at(0).toUtf8()).array();
        QCOMPARE(first.size(), 14);
        QCOMPARE(first.at(0).toString(), u"2007-10-08 10:05:09"_s);
        QCOMPARE(first.at(5).toString(), u"MSG_SENT"_s);
        // Without a database the names are the reader's (tst_log_readers); here
        // the block goes out as it stands.
        QCOMPARE(first.at(13).toString(), u"MESSAGE: 你好\tthere\r\n.END_OF_DATA\r\n"_s);
        QCOMPARE(QJsonDocument::fromJson(out.at(3).toUtf8()).array().at(0).toString(),
            u"2007-10-08 10:07:00"_s);
    }

    void usageErrors()
    {
        TempServerDir dir;
        CtlRun run = gbkCtl({ u"logs"_s, u"audit"_s, u"--from"_s, u"2007-10-08T00:00:00"_s,
            u"--to"_s, u"2007-10-08T00:00:00"_s });
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.err.contains(u"logs chat, logs system or logs user"_s));
        run = gbkCtl({ u"logs"_s, u"chat"_s, u"--from"_s, u"2007-10-08"_s, u"--to"_s,
            u"2007-10-08T00:00:00"_s });
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.err.contains(u"--from and --to"_s));
        run = gbkCtl(logsArguments(dir, u"chat"_s, { u"--format"_s, u"xml"_s }));
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.err.contains(u"tsv or json"_s));
    }
};

QTEST_GUILESS_MAIN(tst_VelmarctlLogs)
#include "tst_velmarctl_logs.moc"
