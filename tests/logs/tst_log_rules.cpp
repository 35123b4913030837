#include "CBStringTokenizer.h"
#include "CRegistry.h"
#include "LogFileNames.h"
#include "LogFilterRules.h"
#include "LogLocations.h"
#include "LogSearch.h"
#include "NewestFirst.h"
#include "TempServerDir.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QDateTime at(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), u"yyyy-MM-dd HH:mm:ss"_s);
}

bool writeMachineString(
    RegistryHives &hives, const QString &key, const QString &name, const QString &value)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    return registry.createKey(RegistryRoot::LocalMachine, key) && registry.writeString(name, value);
}

} // namespace

class tst_LogRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void periodButtons()
    {
        const QDateTime now = at("2024-03-15 14:25:30");
        using B = LogFilterRules::PeriodButton;
        const auto today = LogFilterRules::periodFor(B::Today, now);
        QCOMPARE(today.start, at("2024-03-15 00:25:30"));
        QCOMPARE(today.end, at("2024-03-15 23:59:59"));
        const auto week = LogFilterRules::periodFor(B::Week, now);
        QCOMPARE(week.start, at("2024-03-08 00:25:30"));
        QCOMPARE(week.end, at("2024-03-15 23:59:59"));
        // The month's period ends early in the current day.
        const auto month = LogFilterRules::periodFor(B::Month, now);
        QCOMPARE(month.start, at("2024-02-14 00:25:30"));
        QCOMPARE(month.end, at("2024-03-15 01:59:59"));

        QCOMPARE(LogFilterRules::buttonText(B::Today), u"当日"_s);
        QCOMPARE(LogFilterRules::buttonText(B::Week), u"1周"_s);
        QCOMPARE(LogFilterRules::buttonText(B::Month), u"1个月"_s);

        // Milliseconds of the clock never reach the pickers.
        const QDateTime withMs = now.addMSecs(789);
        QCOMPARE(LogFilterRules::periodFor(B::Today, withMs).start, at("2024-03-15 00:25:30"));
    }

    void searchRuleMovesBothEnds()
    {
        LogFilter f = LogFilterRules::searchFilter(
            at("2024-03-15 14:25:30"), at("2024-03-20 13:45:10"), false);
        QCOMPARE(f.start, at("2024-03-15 00:25:30"));
        QCOMPARE(f.end, at("2024-03-21 00:45:10"));
        QVERIFY(!f.newestFirst);
        f = LogFilterRules::searchFilter(
            at("2024-12-31 00:00:00"), at("2024-12-31 23:59:59"), true);
        QCOMPARE(f.start, at("2024-12-31 00:00:00"));
        QCOMPARE(f.end, at("2025-01-01 00:59:59"));
        QVERIFY(f.newestFirst);
    }

    void todayThenSearchAcceptsTomorrowMidnightHour()
    {
        const auto period = LogFilterRules::periodFor(
            LogFilterRules::PeriodButton::Today, at("2024-03-15 14:25:30"));
        const LogFilter f = LogFilterRules::searchFilter(period.start, period.end, true);
        QCOMPARE(f.start, at("2024-03-15 00:25:30"));
        QCOMPARE(f.end, at("2024-03-16 00:59:59"));
        QVERIFY(LogFilterRules::inPeriod(f, *LogFileNames::hourlyStamp(u"u2024031600.txt"_s)));
        QVERIFY(!LogFilterRules::inPeriod(f, *LogFileNames::hourlyStamp(u"u2024031601.txt"_s)));
        // The start keeps its minutes: the file of today's 00 o'clock is before it.
        QVERIFY(!LogFilterRules::inPeriod(f, *LogFileNames::hourlyStamp(u"u2024031500.txt"_s)));
        // Chat files count to the minute: 00:25 is before 00:25:30, 00:26 is not.
        QVERIFY(!LogFilterRules::inPeriod(f, *LogFileNames::chatStamp(u"c202403150025_1.txt"_s)));
        QVERIFY(LogFilterRules::inPeriod(f, *LogFileNames::chatStamp(u"c202403150026_1.txt"_s)));
    }

    void pickersStayOrdered()
    {
        const QDateTime early = at("2024-03-10 08:00:00");
        const QDateTime late = at("2024-03-12 09:00:00");
        QCOMPARE(LogFilterRules::endAfterStartChanged(late, early), late);
        QCOMPARE(LogFilterRules::endAfterStartChanged(early, late), late);
        QCOMPARE(LogFilterRules::startAfterEndChanged(late, early), early);
        QCOMPARE(LogFilterRules::startAfterEndChanged(early, late), early);
    }

    void periodTestIsInclusive()
    {
        const QDateTime stamp = *LogFileNames::chatStamp(u"c200710081230_1.txt"_s);
        QCOMPARE(stamp, at("2007-10-08 12:30:00"));
        QVERIFY(LogFilterRules::inPeriod({ stamp, at("2007-10-08 23:59:59"), true }, stamp));
        QVERIFY(LogFilterRules::inPeriod({ at("2007-10-08 00:00:00"), stamp, true }, stamp));
        QVERIFY(LogFilterRules::inPeriod({ stamp, stamp, true }, stamp));
        QVERIFY(!LogFilterRules::inPeriod(
            { stamp.addSecs(1), at("2007-10-09 00:00:00"), true }, stamp));
        QVERIFY(!LogFilterRules::inPeriod(
            { at("2007-10-01 00:00:00"), stamp.addSecs(-1), true }, stamp));
        // A start later than the end accepts nothing, not even what lies between.
        QVERIFY(!LogFilterRules::inPeriod(
            { at("2007-10-09 00:00:00"), at("2007-10-01 00:00:00"), true }, stamp));
        // A name that is no real date and time is in no period.
        const auto invalid = LogFileNames::chatStamp(u"c2007AB081230_1.txt"_s);
        QVERIFY(invalid);
        QVERIFY(!LogFilterRules::inPeriod(
            { at("0001-01-01 00:00:00"), at("9999-01-01 00:00:00"), true }, *invalid));
    }

    void fileNameDating()
    {
        QCOMPARE(*LogFileNames::chatStamp(u"c200710081230_1.txt"_s), at("2007-10-08 12:30:00"));
        QVERIFY(!LogFileNames::chatStamp(u"c2007_1.txt"_s));
        QVERIFY(!LogFileNames::chatStamp(u"c2007100812_.txt"_s)); // 16 characters
        QVERIFY(LogFileNames::chatStamp(u"c200710081230.tx"_s) == std::nullopt);
        QCOMPARE(*LogFileNames::chatStamp(u"c200710081230_.txt"_s), at("2007-10-08 12:30:00"));

        QCOMPARE(*LogFileNames::hourlyStamp(u"s2007100814.txt"_s), at("2007-10-08 14:00:00"));
        QCOMPARE(*LogFileNames::hourlyStamp(u"u2007100814.txt"_s), at("2007-10-08 14:00:00"));
        QVERIFY(!LogFileNames::hourlyStamp(u"u200710081.txt"_s));
        QVERIFY(!LogFileNames::hourlyStamp(u"u20071008140.txt"_s));
        // Non-digit parts convert to 0: month 0 is no date.
        QVERIFY(!LogFileNames::hourlyStamp(u"sxxxxxxxxxx.txt"_s)->isValid());
    }

    void decimalPrefixConversion()
    {
        QCOMPARE(LogFileNames::decimalPrefix(u"12ab"), 12);
        QCOMPARE(LogFileNames::decimalPrefix(u"ab12"), 0);
        QCOMPARE(LogFileNames::decimalPrefix(u"  -7x"), -7);
        QCOMPARE(LogFileNames::decimalPrefix(QByteArrayView("-")), 0);
        QCOMPARE(LogFileNames::decimalPrefix(QByteArrayView("")), 0);
        QVERIFY(LogFileNames::decimalPrefix(QByteArrayView("99999999999999999999999999")) > 0);
    }

    void wildcardPatterns()
    {
        QVERIFY(LogSearch::matchesPattern(u"c200710081230_1.txt", u"c*_*.txt"));
        QVERIFY(LogSearch::matchesPattern(u"C200710081230_1.TXT", u"c*_*.txt"));
        QVERIFY(!LogSearch::matchesPattern(u"c200710081230.txt", u"c*_*.txt"));
        QVERIFY(!LogSearch::matchesPattern(u"c200710081230_1.txt.bak", u"c*_*.txt"));
        QVERIFY(LogSearch::matchesPattern(u"s2007100814.txt", u"s*.txt"));
        QVERIFY(!LogSearch::matchesPattern(u"u2007100814.txt", u"s*.txt"));
        QCOMPARE(LogSearch::pattern(LogSearch::Kind::Chat), u"c*_*.txt"_s);
        QCOMPARE(LogSearch::pattern(LogSearch::Kind::System), u"s*.txt"_s);
        QCOMPARE(LogSearch::pattern(LogSearch::Kind::User), u"u*.txt"_s);
    }

    void tokenizer()
    {
        CBStringTokenizer t(u"a||b|"_s, u"|"_s);
        QStringList tokens;
        QString token;
        while (t.nextToken(token))
            tokens << token;
        QCOMPARE(tokens, QStringList({ u"a"_s, QString(), u"b"_s, QString() }));
        token = u"kept"_s;
        QVERIFY(!t.nextToken(token));
        QCOMPARE(token, u"kept"_s);

        CBStringTokenizer empty(QString(), u"|"_s);
        QVERIFY(!empty.nextToken(token));
    }

    void logRootFromRegistry()
    {
        TempServerDir dir;
        QVERIFY(dir.isValid());
        const QString program = dir.programDir();
        // No key at all.
        QCOMPARE(LogLocations::logRoot(dir.hives(), program), program + u"/LogFiles/"_s);
        const QString key = u"SOFTWARE\\Velmar\\LogManager"_s;
        QVERIFY(writeMachineString(dir.hives(), key, u"LogPath"_s, QString()));
        QCOMPARE(LogLocations::logRoot(dir.hives(), program), program + u"/LogFiles/"_s);
        QVERIFY(writeMachineString(dir.hives(), key, u"LogPath"_s, u"/srv/velmar/logs"_s));
        QCOMPARE(LogLocations::logRoot(dir.hives(), program), u"/srv/velmar/logs/"_s);
        QVERIFY(writeMachineString(dir.hives(), key, u"LogPath"_s, u"/srv/velmar/logs/"_s));
        QCOMPARE(LogLocations::logRoot(dir.hives(), program), u"/srv/velmar/logs/"_s);
        // A value the store's 200-byte buffer cannot hold is not read.
        QVERIFY(writeMachineString(dir.hives(), key, u"LogPath"_s, u"/"_s + QString(220, u'x')));
        QCOMPARE(LogLocations::logRoot(dir.hives(), program), program + u"/LogFiles/"_s);
        // A program folder given with its separator does not double it.
        QCOMPARE(LogLocations::logRootFrom(QString(), u"/opt/v/"_s), u"/opt/v/LogFiles/"_s);
    }

    void daemonFoldersAndUploadFolder()
    {
        QCOMPARE(LogLocations::daemonFolder(u"/srv/logs/"_s, u"ChatD"_s), u"/srv/logs//ChatD/"_s);
        QCOMPARE(LogLocations::chatDaemons(), QStringList { u"ChatD"_s });
        QCOMPARE(LogLocations::systemDaemons(),
            QStringList({ u"VelmarD"_s, u"GroupD"_s, u"RelayD"_s, u"FileDispatchD"_s,
                u"FileSessionD"_s, u"ChatD"_s }));
        QCOMPARE(LogLocations::userDaemons(), QStringList { u"VelmarD"_s });

        TempServerDir dir;
        QVERIFY(dir.isValid());
        QCOMPARE(LogLocations::sessionUploadFolder(dir.hives(), dir.programDir(), u"s1"_s),
            dir.programDir() + u"/VelmarFile2Upload/s1"_s);
        QCOMPARE(
            LogLocations::sessionUploadFolder(dir.hives(), dir.programDir(), QString()), QString());
        QVERIFY(writeMachineString(dir.hives(), u"SOFTWARE\\Velmar\\Services\\SessionFolder"_s,
            u"UploadPath"_s, u"/data/up"_s));
        QCOMPARE(LogLocations::sessionUploadFolder(dir.hives(), dir.programDir(), u"s1"_s),
            u"/data/up/s1"_s);
    }

    void newestFirstIsStable()
    {
        // (time, order read): rows of one time keep the order they were read in,
        // whether the rows came oldest first, as runs (daemons' files one after
        // the other, an odd number of them) or newest first.
        using Row = std::pair<int, int>;
        const std::vector<std::vector<int>> inputs { {}, { 5 }, { 1, 1, 1 },
            { 1, 2, 2, 3, 3, 3, 4 }, { 1, 2, 3, 1, 2, 3 }, { 3, 3, 1, 2, 2, 1 },
            { 2, 2, 1, 3, 3, 2, 2, 1, 4 }, { 5, 4, 3, 2, 1 } };
        for (const std::vector<int> &times : inputs) {
            std::vector<Row> rows;
            for (int i = 0; i < int(times.size()); ++i)
                rows.emplace_back(times[size_t(i)], i);
            std::vector<Row> expected = rows;
            std::stable_sort(expected.begin(), expected.end(),
                [](const Row &a, const Row &b) { return a.first > b.first; });
            sortNewestFirst(rows, [](const Row &row) { return row.first; });
            QCOMPARE(rows, expected);
        }
    }
};

QTEST_GUILESS_MAIN(tst_LogRules)
#include "tst_log_rules.moc"
