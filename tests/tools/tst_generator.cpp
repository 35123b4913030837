// The data generator: a generated server folder must hold data the console
// can load and save as it stands, and exactly what was asked for.

#include "CodePage.h"
#include "CRegistry.h"
#include "DbConnection.h"
#include "ProfileFile.h"
#include "Recordset.h"
#include "RegistryHives.h"
#include "TempServerDir.h"
#include "VelmarCtlTool.h"

#include <map>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>
#include <QUuid>
#include <set>

using namespace Qt::StringLiterals;

namespace {

// A small organisation with something of everything, the same every time.
const QStringList GeneratorArguments
    = u"--members 150 --guests 20 --groups 15 --depth 4 --memberships 260 --positions 12 "
      u"--permissions 140 --pool 40 --notices 12 --folders 20 --rights 60 --seed 7 "
      u"--date 2024-06-28 --logs"_s.split(u' ');

CtlRun runGenerator(const QStringList &arguments)
{
    return runCommand(QStringLiteral(VELMAR_GEN_PATH), arguments);
}

// A read-only look at a generated database, separate from the console's own
// connection code so that the checks do not depend on what they check.
class Database
{
public:
    explicit Database(const QString &path)
        : m_name(u"check-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces))
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name);
        db.setDatabaseName(path);
        db.setConnectOptions(u"QSQLITE_OPEN_READONLY"_s);
        db.open();
    }
    ~Database()
    {
        QSqlDatabase::database(m_name).close();
        QSqlDatabase::removeDatabase(m_name);
    }

    QList<QVariantList> rows(const QString &sql) const
    {
        QSqlQuery query(QSqlDatabase::database(m_name));
        QList<QVariantList> out;
        if (!query.exec(sql)) {
            qWarning() << sql << query.lastError().text();
            return out;
        }
        while (query.next()) {
            QVariantList row;
            for (int i = 0; i < query.record().count(); ++i)
                row << query.value(i);
            out << row;
        }
        return out;
    }

    qint64 count(const QString &sql) const
    {
        const auto result = rows(sql);
        return result.isEmpty() ? -1 : result.first().value(0).toLongLong();
    }

    // Every table, every row, in a fixed order: equal dumps mean equal data.
    QString dump() const
    {
        QString out;
        const auto tables
            = rows(u"SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"_s);
        for (const QVariantList &table : tables) {
            const QString name = table.first().toString();
            QStringList lines;
            for (const QVariantList &row : rows(u"SELECT * FROM [%1]"_s.arg(name))) {
                QStringList cells;
                for (const QVariant &v : row)
                    cells << (v.isNull() ? u"<null>"_s : v.toString());
                lines << cells.join(u'|');
            }
            lines.sort();
            out += u"== "_s + name + u'\n' + lines.join(u'\n') + u'\n';
        }
        return out;
    }

private:
    QString m_name;
};

} // namespace

class TstGenerator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void countsMatchArguments_data();
    void countsMatchArguments();
    void idsAreUnique_data();
    void idsAreUnique();
    void noRowBreaksARule_data();
    void noRowBreaksARule();
    void folderPaths();
    void noticesUseServerFormats();
    void consoleResavesItUnchanged();
    void textsFollowTheConsolesRules();
    void registryHivesReadThroughCRegistry();
    void profileHoldsServerKeys();
    void logFilesMatchTheReaders();
    void sameSeedGivesSameData();
    void refusesAFolderItDidNotMake();

private:
    TempServerDir m_server;
    std::unique_ptr<Database> m_db;
};

void TstGenerator::initTestCase()
{
    QVERIFY(m_server.isValid());
    const CtlRun run = runGenerator(QStringList { u"--out"_s, m_server.programDir(),
                                        u"--registry-dir"_s, m_server.registryDir() }
        + GeneratorArguments);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    m_db = std::make_unique<Database>(m_server.databasePath());
}

void TstGenerator::countsMatchArguments_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("members") << u"SELECT COUNT(*) FROM Member"_s << 150LL;
    QTest::newRow("guests") << u"SELECT COUNT(*) FROM Member WHERE IsGuestMember=1"_s << 20LL;
    QTest::newRow("regular groups")
        << u"SELECT COUNT(*) FROM [Group] WHERE IsGuestGroup=0"_s << 15LL;
    QTest::newRow("guest groups") << u"SELECT COUNT(*) FROM [Group] WHERE IsGuestGroup=1"_s << 15LL;
    QTest::newRow("memberships") << u"SELECT COUNT(*) FROM Relation"_s << 260LL;
    QTest::newRow("positions") << u"SELECT COUNT(*) FROM Rank"_s << 12LL;
    QTest::newRow("permissions") << u"SELECT COUNT(*) FROM AccessToken"_s << 140LL;
    QTest::newRow("voip accounts") << u"SELECT COUNT(*) FROM VoipInfo"_s << 140LL;
    QTest::newRow("pool") << u"SELECT COUNT(*) FROM VoipNumberList"_s << 40LL;
    QTest::newRow("notices") << u"SELECT COUNT(*) FROM CONTENTS"_s << 12LL;
    QTest::newRow("folders") << u"SELECT COUNT(*) FROM Folder"_s << 20LL;
    QTest::newRow("rights") << u"SELECT (SELECT COUNT(*) FROM GroupAuthority)"
                               u" + (SELECT COUNT(*) FROM UserAuthority)"_s
                            << 60LL;
    QTest::newRow("deepest group")
        << u"SELECT MAX(Depth) FROM [Group] WHERE IsGuestGroup=0"_s << 4LL;
    QTest::newRow("position 1") << u"SELECT COUNT(*) FROM Rank WHERE ORankID=1"_s << 1LL;
}

void TstGenerator::countsMatchArguments()
{
    QFETCH(QString, sql);
    QFETCH(qint64, expected);
    QCOMPARE(m_db->count(sql), expected);
}

void TstGenerator::idsAreUnique_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("column");
    QTest::newRow("member id") << u"Member"_s << u"OMemberID"_s;
    QTest::newRow("login, any case") << u"Member"_s << u"lower(MemberID)"_s;
    // Group ids come from one counter for both trees.
    QTest::newRow("group id") << u"[Group]"_s << u"OGroupID"_s;
    QTest::newRow("rank id") << u"Rank"_s << u"ORankID"_s;
    QTest::newRow("rank name") << u"Rank"_s << u"RankName"_s;
    QTest::newRow("AccessToken member") << u"AccessToken"_s << u"OMemberID"_s;
    QTest::newRow("VoipInfo member") << u"VoipInfo"_s << u"OMemberID"_s;
    QTest::newRow("pool account") << u"VoipNumberList"_s << u"VOIP_ID"_s;
    QTest::newRow("folder id") << u"Folder"_s << u"OFolderID"_s;
    QTest::newRow("folder path") << u"Folder"_s << u"FolderPath"_s;
    QTest::newRow("notice id") << u"CONTENTS"_s << u"OCONTENTSID"_s;
    QTest::newRow("membership") << u"Relation"_s << u"OMemberID || '/' || OGroupID"_s;
    QTest::newRow("group right") << u"GroupAuthority"_s << u"OFolderID || '/' || OGroupID"_s;
    QTest::newRow("member right") << u"UserAuthority"_s << u"OFolderID || '/' || OMemberID"_s;
}

void TstGenerator::idsAreUnique()
{
    QFETCH(QString, table);
    QFETCH(QString, column);
    const qint64 all = m_db->count(u"SELECT COUNT(*) FROM %1"_s.arg(table));
    QVERIFY(all > 0);
    QCOMPARE(m_db->count(u"SELECT COUNT(DISTINCT %1) FROM %2"_s.arg(column, table)), all);
}

void TstGenerator::noRowBreaksARule_data()
{
    QTest::addColumn<QString>("sql"); // counts the rows that break the rule
    QTest::newRow("relation of an unknown member")
        << u"SELECT COUNT(*) FROM Relation r WHERE NOT EXISTS"
           u" (SELECT 1 FROM Member m WHERE m.OMemberID = r.OMemberID)"_s;
    // A membership belongs to the tree of its group.
    QTest::newRow("relation in the other tree")
        << u"SELECT COUNT(*) FROM Relation r WHERE NOT EXISTS"
           u" (SELECT 1 FROM [Group] g WHERE g.OGroupID = r.OGroupID"
           u" AND g.IsGuestGroup = r.IsGuestRelation)"_s;
    QTest::newRow("relation of an unknown position")
        << u"SELECT COUNT(*) FROM Relation r WHERE r.ORankID <> -1 AND NOT EXISTS"
           u" (SELECT 1 FROM Rank k WHERE k.ORankID = r.ORankID)"_s;
    // An assigned pool account is the VoipInfo account of its member.
    QTest::newRow("pool account not the member's")
        << u"SELECT COUNT(*) FROM VoipNumberList p WHERE p.OMemberID <> 0 AND NOT EXISTS"
           u" (SELECT 1 FROM VoipInfo v WHERE v.OMemberID = p.OMemberID"
           u" AND v.ID = p.VOIP_ID AND v.Pass = p.VOIP_PASS)"_s;
    QTest::newRow("permissions of an unknown member")
        << u"SELECT COUNT(*) FROM AccessToken a WHERE NOT EXISTS"
           u" (SELECT 1 FROM Member m WHERE m.OMemberID = a.OMemberID)"_s;
    // VoIP is only on with an account; file transfer only with messaging.
    QTest::newRow("VoIP without an account")
        << u"SELECT COUNT(*) FROM AccessToken a JOIN VoipInfo v USING (OMemberID)"
           u" WHERE a.VoipOn = 1 AND v.ID = ''"_s;
    QTest::newRow("file transfer without messaging")
        << u"SELECT COUNT(*) FROM AccessToken WHERE FileTransferOn = 1 AND MessageOn = 0"_s;
    QTest::newRow("group right of an unknown group or folder")
        << u"SELECT COUNT(*) FROM GroupAuthority a WHERE"
           u" NOT EXISTS (SELECT 1 FROM [Group] g WHERE g.OGroupID = a.OGroupID)"
           u" OR NOT EXISTS (SELECT 1 FROM Folder f WHERE f.OFolderID = a.OFolderID)"_s;
    QTest::newRow("member right of an unknown member or folder")
        << u"SELECT COUNT(*) FROM UserAuthority a WHERE"
           u" NOT EXISTS (SELECT 1 FROM Member m WHERE m.OMemberID = a.OMemberID)"
           u" OR NOT EXISTS (SELECT 1 FROM Folder f WHERE f.OFolderID = a.OFolderID)"_s;
    QTest::newRow("right of no known kind")
        << u"SELECT COUNT(*) FROM (SELECT Authority FROM GroupAuthority UNION ALL"
           u" SELECT Authority FROM UserAuthority) WHERE Authority NOT IN ('R','W','X','w')"_s;
    // Realistic data has some of each kind.
    QTest::newRow("no guest relation")
        << u"SELECT COUNT(*) = 0 FROM Relation WHERE IsGuestRelation=1"_s;
    QTest::newRow("no free pool account")
        << u"SELECT COUNT(*) = 0 FROM VoipNumberList WHERE OMemberID = 0"_s;
    QTest::newRow("no assigned pool account")
        << u"SELECT COUNT(*) = 0 FROM VoipNumberList WHERE OMemberID <> 0"_s;
}

void TstGenerator::noRowBreaksARule()
{
    QFETCH(QString, sql);
    QCOMPARE(m_db->count(sql), 0);
}

void TstGenerator::folderPaths()
{
    // Paths are kept with doubled backslashes; each folder's parent folder exists too.
    const auto rows = m_db->rows(u"SELECT FolderPath FROM Folder"_s);
    QSet<QString> paths;
    for (const QVariantList &row : rows) {
        const QString stored = row[0].toString();
        QVERIFY2(stored.startsWith(u"\\\\"_s), qPrintable(stored));
        QVERIFY(!stored.contains(u'\''));
        paths.insert(QString(stored).replace(u"\\\\"_s, u"\\"_s));
    }
    for (const QString &path : std::as_const(paths)) {
        const int cut = path.lastIndexOf(u'\\');
        QVERIFY(!path.contains(u"\\\\"_s));
        if (cut > 0)
            QVERIFY2(paths.contains(path.left(cut)), qPrintable(path));
        QVERIFY2(
            QDir(m_server.filePath(u"VelmarBox"_s + QString(path).replace(u'\\', u'/'))).exists(),
            qPrintable(path));
    }
}

void TstGenerator::noticesUseServerFormats()
{
    const auto rows
        = m_db->rows(u"SELECT OCONTENTSID, TITLE, WRITEDATE, OMEMBERID, MEMBERID, CONTENTS,"
                     u" FilePath, FileSessionID, WriteEndDate FROM CONTENTS"_s);
    const QRegularExpression writeDate(u"^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d$"_s);
    const QRegularExpression endDate(u"^(\\d{8})?$"_s);
    int rich = 0;
    int withFiles = 0;
    for (const QVariantList &row : rows) {
        QVERIFY2(writeDate.match(row[2].toString()).hasMatch(), qPrintable(row[2].toString()));
        QVERIFY2(endDate.match(row[8].toString()).hasMatch(), qPrintable(row[8].toString()));
        QCOMPARE(
            m_db->count(u"SELECT COUNT(*) FROM Member WHERE OMemberID = %1 AND MemberID = '%2'"_s
                            .arg(row[3].toInt())
                            .arg(row[4].toString())),
            1);
        // Whoever writes notices stores ' ; and \ as markers.
        for (int column : { 1, 5, 6 }) {
            const QString value = row[column].toString();
            QVERIFY2(!value.contains(u'\'') && !value.contains(u';') && !value.contains(u'\\'),
                qPrintable(value));
        }
        if (row[5].toString().startsWith(u"{###VELMAR-BACKSLASH###rtf1"_s))
            ++rich;
        const QString files = row[6].toString();
        if (files.isEmpty()) {
            QVERIFY(row[7].toString().isEmpty());
            continue;
        }
        ++withFiles;
        // "|count|size|" then index, name, size per file; every file is uploaded.
        const QStringList items = files.split(u'|', Qt::SkipEmptyParts);
        QVERIFY(items.size() >= 5);
        QCOMPARE((items.size() - 2) % 3, 0);
        QCOMPARE(items[0].toInt(), (items.size() - 2) / 3);
        const QDir session(m_server.filePath(u"VelmarFile2Upload/"_s + row[7].toString()));
        for (int i = 3; i < items.size(); i += 3) {
            const QString name = QString(items[i]).replace(u"###VELMAR-BACKSLASH###"_s, u"/"_s);
            QVERIFY2(
                QFileInfo(session.filePath(name)).isFile(), qPrintable(session.filePath(name)));
        }
    }
    QVERIFY(rich > 0);
    QVERIFY(withFiles > 0);
    QVERIFY(
        m_db->count(u"SELECT COUNT(*) FROM CONTENTS WHERE TITLE LIKE '%###VELMAR-QUOTATION###%'"_s)
        > 0);
}

// The console reads everything and writes it back as it stands: group
// depths and sibling order, member levels, escaped texts and every row the
// load keeps come back the same; a quote anywhere the save does not escape
// would have it refuse. Authority codes come back in upper case ('w' is
// read as read-write) and empty texts as '' where the generator left NULL.
void TstGenerator::consoleResavesItUnchanged()
{
    TempServerDir copy;
    QCOMPARE(runGenerator(QStringList { u"--out"_s, copy.programDir(), u"--registry-dir"_s,
                              copy.registryDir() }
                 + GeneratorArguments)
                 .exitCode,
        0);
    const CtlRun resave = ctl(copy, { u"resave"_s });
    QVERIFY2(resave.exitCode == 0, qPrintable(resave.err));
    const Database saved(copy.databasePath());
    const auto folded = [](const Database &db) {
        QStringList lines = db.dump().toUpper().replace(u"<NULL>"_s, QString()).split(u'\n');
        lines.sort();
        return lines;
    };
    QCOMPARE(folded(saved), folded(*m_db));
    // A realistic directory has members of every level: none, guest, regular, both.
    QVERIFY(m_db->count(u"SELECT COUNT(*) FROM Member WHERE MemberLevel IS NULL"_s) > 0);
    for (int level = 1; level <= 3; ++level)
        QVERIFY(
            m_db->count(u"SELECT COUNT(*) FROM Member WHERE MemberLevel = %1"_s.arg(level)) > 0);
}

void TstGenerator::textsFollowTheConsolesRules()
{
    // User IDs: letters, digits, '-' and '_', at most 20 bytes; names at most 20 bytes in GBK.
    const CodePage gbk("GBK");
    const QRegularExpression login(u"^[0-9A-Za-z_-]{1,20}$"_s);
    for (const QVariantList &row :
        m_db->rows(u"SELECT MemberID, MemberName, Passwd, HP FROM Member"_s)) {
        QVERIFY2(login.match(row[0].toString()).hasMatch(), qPrintable(row[0].toString()));
        QVERIFY2(gbk.byteLength(row[1].toString()) <= 20, qPrintable(row[1].toString()));
        QVERIFY(!row[2].toString().isEmpty() && row[2].toString().size() <= 20);
        QVERIFY(row[3].toString().size() <= 13);
    }
}

void TstGenerator::registryHivesReadThroughCRegistry()
{
    RegistryHives hives(m_server.registryDir());
    CRegistry reg(hives, RegistryRoot::LocalMachine);
    QString text;
    qint32 number = 0;

    QVERIFY(reg.openKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\DataBase"_s));
    QVERIFY(reg.readString(u"SetDBType"_s, text));
    QCOMPARE(text, u"MDB"_s);
    QVERIFY(reg.readString(u"connectionstring"_s, text));
    QCOMPARE(text,
        u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;DefaultDir=;UID=admin;PWD=;"_s.arg(
            QDir(m_server.programDir()).absoluteFilePath(u"VelmarDB.mdb"_s)));

    QVERIFY(
        reg.openKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\SessionFolder"_s));
    QVERIFY(reg.readString(u"UploadPath"_s, text));
    QCOMPARE(QDir(text), QDir(m_server.filePath(u"VelmarFile2Upload"_s)));

    QVERIFY(reg.openKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\LogManager"_s));
    QVERIFY(reg.readString(u"LogPath"_s, text));
    QCOMPARE(QDir(text), QDir(m_server.filePath(u"LogFiles"_s)));
    QVERIFY(reg.readNumber(u"DeleteLogAfterDuration"_s, number));

    QVERIFY(reg.openKey(RegistryRoot::CurrentUser, u"Software\\Velmar\\VelmarManager"_s));
    QVERIFY(reg.readNumber(u"BalloonHelp"_s, number));
    QCOMPARE(number, 1);
    QCOMPARE(reg.lastType(), RegistryType::DWord);
}

void TstGenerator::profileHoldsServerKeys()
{
    const ProfileFile profile(m_server.iniPath(), CodePage("GBK"));
    QCOMPARE(profile.readString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"?"_s, 128), u"1"_s);
    QCOMPARE(profile.readString(u"ServerInfo"_s, u"UseDist"_s, u"?"_s, 128), u"0"_s);
    QCOMPARE(profile.readString(u"DBInfo"_s, u"DBAddr"_s, u"absent"_s, 128), u"absent"_s);
    const QString version = profile.readString(u"GroupInfo"_s, u"Version"_s, QString(), 128);
    QVERIFY2(QRegularExpression(u"^\\d{4}$"_s).match(version).hasMatch(), qPrintable(version));
    QVERIFY(!profile.readString(u"SettingInfo"_s, u"CaptionBarName"_s, QString(), 256).isEmpty());
    // A new ini file is written in the code page with CR LF line ends.
    QFile file(m_server.iniPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.contains("[ServerInfo]\r\n"));
    QVERIFY(bytes.contains(CodePage("GBK").encode(u"企业版"_s)));
}

void TstGenerator::logFilesMatchTheReaders()
{
    const QDir root(m_server.filePath(u"LogFiles"_s));
    const CodePage gbk("GBK");
    const QRegularExpression header(u"^\\d\\d\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d .*"_s);

    const QStringList chats
        = QDir(root.filePath(u"ChatD"_s)).entryList({ u"c*_*.txt"_s }, QDir::Files);
    QVERIFY(!chats.isEmpty());
    for (const QString &name : chats)
        QVERIFY2(name.size() >= 17, qPrintable(name));

    int systemFiles = 0;
    for (const QString &daemon : { u"VelmarD"_s, u"GroupD"_s, u"RelayD"_s, u"FileDispatchD"_s,
             u"FileSessionD"_s, u"ChatD"_s }) {
        const QDir dir(root.filePath(daemon));
        for (const QString &name : dir.entryList({ u"s*.txt"_s }, QDir::Files)) {
            QCOMPARE(name.size(), 15);
            QFile file(dir.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QStringList lines
                = gbk.decodeServerFile(file.readAll()).split(u"\r\n"_s, Qt::SkipEmptyParts);
            for (const QString &line : lines) {
                if (line.startsWith(u'#'))
                    continue;
                QVERIFY2(header.match(line).hasMatch(), qPrintable(line));
                QCOMPARE(line.section(u' ', 2, 2), daemon);
            }
            ++systemFiles;
        }
    }
    QVERIFY(systemFiles >= 6);

    // A user record's data block is as long as its header says, and ends the record.
    const QDir velmarD(root.filePath(u"VelmarD"_s));
    const QStringList userLogs = velmarD.entryList({ u"u*.txt"_s }, QDir::Files);
    QVERIFY(!userLogs.isEmpty());
    int records = 0;
    for (const QString &name : userLogs) {
        QCOMPARE(name.size(), 15);
        QFile file(velmarD.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = gbk.decodeServerFile(file.readAll());
        qsizetype at = 0;
        while (at < text.size()) {
            const qsizetype end = text.indexOf(u"\r\n"_s, at);
            QVERIFY(end > at);
            const QString headerLine = text.mid(at, end - at);
            QVERIFY2(header.match(headerLine).hasMatch(), qPrintable(headerLine));
            const QStringList fields = headerLine.split(QRegularExpression(u"\\s+"_s));
            QCOMPARE(fields.size(), 13);
            QCOMPARE(fields[5], u"MSG_SENT"_s);
            const qsizetype blockEnd = text.indexOf(u".END_OF_DATA\r\n"_s, end) + 14;
            QVERIFY(blockEnd > end);
            QCOMPARE(gbk.byteLength(text.mid(end + 2, blockEnd - end - 2)),
                qsizetype(fields[12].toInt()));
            at = blockEnd;
            ++records;
        }
    }
    QVERIFY(records > 0);
}

void TstGenerator::sameSeedGivesSameData()
{
    TempServerDir again;
    const QStringList target { u"--out"_s, again.programDir(), u"--registry-dir"_s,
        again.registryDir() };
    QCOMPARE(runGenerator(target + GeneratorArguments).exitCode, 0);
    {
        const Database copy(again.databasePath());
        QCOMPARE(copy.dump(), m_db->dump());
    }
    // Running it again over its own folder replaces what it made; another
    // seed gives other people.
    QStringList otherSeed = GeneratorArguments;
    otherSeed[otherSeed.indexOf(u"--seed"_s) + 1] = u"8"_s;
    const CtlRun run = runGenerator(target + otherSeed);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    const Database other(again.databasePath());
    QCOMPARE(other.count(u"SELECT COUNT(*) FROM Member"_s), 150);
    QVERIFY(other.dump() != m_db->dump());
}

void TstGenerator::refusesAFolderItDidNotMake()
{
    TempServerDir foreign;
    QVERIFY(foreign.writeFile(u"VelmarDB.mdb"_s, "the server's own database"));
    const CtlRun run = runGenerator({ u"--out"_s, foreign.programDir(), u"--preset"_s, u"demo"_s });
    QVERIFY(run.exitCode != 0);
    QVERIFY2(run.err.contains(u"not made by velmar-gen"_s), qPrintable(run.err));
    QCOMPARE(foreign.readFile(u"VelmarDB.mdb"_s), QByteArray("the server's own database"));
}

QTEST_GUILESS_MAIN(TstGenerator)
#include "tst_generator.moc"
