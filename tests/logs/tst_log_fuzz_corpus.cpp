#include "LogFuzzTargets.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray corpusFile(const QString &relative)
{
    QFile file(qEnvironmentVariable("VELMAR_TEST_DATA") + u"/fuzz/"_s + relative);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void addCorpus(const QString &folder)
{
    QTest::addColumn<QString>("file");
    const QDir dir(qEnvironmentVariable("VELMAR_TEST_DATA") + u"/fuzz/"_s + folder);
    const QStringList names = dir.entryList(QDir::Files, QDir::Name);
    QVERIFY2(!names.isEmpty(), qPrintable(dir.path()));
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << folder + u'/' + name;
}

} // namespace

// Replays the fuzz corpus (inputs that once took a parser somewhere odd)
// through every parser, as the fuzzers run them.
class tst_LogFuzzCorpus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chat_data() { addCorpus(u"chat"_s); }
    void chat()
    {
        QFETCH(QString, file);
        QCOMPARE(LogFuzzTargets::chatFile(corpusFile(file)), 1);
    }
    void userLog_data() { addCorpus(u"userlog"_s); }
    void userLog()
    {
        QFETCH(QString, file);
        QVERIFY(LogFuzzTargets::userLogFile(corpusFile(file)) >= 0);
    }
    void knownOutcomes()
    {
        // A data block that never ends takes the rest of the file.
        QCOMPARE(LogFuzzTargets::userLogFile(corpusFile(u"userlog/never_ends.txt"_s)), 3);
        // Two thousand receivers on a header cut at 1023 characters: the
        // sent row and one per receiver within them (272, the last one cut).
        QCOMPARE(LogFuzzTargets::userLogFile(corpusFile(u"userlog/many_receivers.txt"_s)), 273);
        // Only semicolons: no receiver, no received rows.
        QCOMPARE(LogFuzzTargets::userLogFile(corpusFile(u"userlog/semicolons.txt"_s)), 1);
        // A header cut after the service is still a header: one row.
        QCOMPARE(LogFuzzTargets::userLogFile(corpusFile(u"userlog/truncated_header.txt"_s)), 1);
    }
};

QTEST_GUILESS_MAIN(tst_LogFuzzCorpus)
#include "tst_log_fuzz_corpus.moc"
