#include "CRegistry.h"
#include "DamagedConfigLines.h"
#include "FileBytes.h"
#include "PrivilegeDrop.h"
#include "RegEditFormat.h"
#include "RegistryHive.h"
#include "RegistryHives.h"
#include "TempServerDir.h"

#include <QProcess>
#include <QThread>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

const QString DatabaseKey = u"SOFTWARE\\Velmar\\Services\\Database"_s;
const QString ManagerKey = u"Software\\Velmar\\VelmarManager"_s;
const QString RaceKey = u"Software\\Velmar\\Race"_s;
const QString WriterArgument = u"--hive-writer"_s;

RegistryHive::Value text(quint32 type, const QString &value)
{
    return { type, value, 0, {} };
}

RegistryHive::Value number(quint32 value)
{
    return { RegistryType::DWord, {}, value, {} };
}

RegistryHive::Value raw(quint32 type, const QByteArray &bytes)
{
    return { type, {}, 0, bytes };
}

QString describe(const RegistryHive::Value &value)
{
    return u"type %1 text \"%2\" number %3 raw %4"_s.arg(value.type)
        .arg(value.text)
        .arg(value.number)
        .arg(QString::fromLatin1(value.raw.toHex()));
}

// The second writer of the cross-process test: this executable started again.
int runHiveWriter(const QStringList &arguments)
{
    if (arguments.size() != 5)
        return 2;
    RegistryHives hives(arguments.at(2));
    CRegistry registry(hives, RegistryRoot::CurrentUser);
    if (!registry.createKey(RegistryRoot::CurrentUser, RaceKey))
        return 3;
    QTextStream(stdout) << "ready" << Qt::endl;
    const int count = arguments.at(4).toInt();
    for (int i = 0; i < count; ++i) {
        if (!registry.writeNumber(arguments.at(3) + QString::number(i), i))
            return 4;
    }
    return 0;
}

} // namespace

class TestRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qunsetenv("VELMAR_CODEPAGE"); }
    // A fresh installation for every test.
    void init() { dir = std::make_unique<TempServerDir>(); }

    void valuesRecordTypeAndSize()
    {
        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QCOMPARE(registry.lastType(), RegistryType::None);
        QCOMPARE(registry.lastSize(), 0u);

        QVERIFY(registry.writeString(u"SetDBType"_s, u"MDB"_s));
        QCOMPARE(registry.lastType(), RegistryType::String);
        QCOMPARE(registry.lastSize(), 4u); // the terminating zero is stored
        QVERIFY(registry.writeString(u"Name"_s, u"服务器"_s));
        QCOMPARE(registry.lastSize(), 7u); // GBK: two bytes a character
        QVERIFY(registry.writeString(u"Empty"_s, QString()));
        QCOMPARE(registry.lastSize(), 1u);
        QVERIFY(registry.writeNumber(u"Port"_s, -2));
        QCOMPARE(registry.lastType(), RegistryType::DWord);
        QCOMPARE(registry.lastSize(), 4u);
        // The machine hive holds connection strings: for its owner alone, however often written.
        QCOMPARE(QFileInfo(dir->hives().hive(RegistryRoot::LocalMachine).filePath()).permissions(),
            QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);

        CRegistry reader(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(reader.openKey(RegistryRoot::LocalMachine, DatabaseKey));
        QCOMPARE(reader.keyName(), DatabaseKey);
        QString value;
        QVERIFY(reader.readString(u"Name"_s, value));
        QCOMPARE(value, u"服务器"_s);
        QCOMPARE(reader.lastType(), RegistryType::String);
        QCOMPARE(reader.lastSize(), 7u);
        qint32 port = 0;
        QVERIFY(reader.readNumber(u"Port"_s, port));
        QCOMPARE(port, -2);
        QCOMPARE(reader.lastResult(), RegistryStatus::Success);

        // Opening again starts the record afresh.
        QVERIFY(reader.openKey(RegistryRoot::LocalMachine, DatabaseKey));
        QCOMPARE(reader.lastType(), RegistryType::None);
        QCOMPARE(reader.lastSize(), 0u);
    }

    // CRegistry reads into a buffer of 200 bytes (GBK: two a character, and
    // the terminating zero), the read-only reader into one of 1024.
    void readStringBuffer_data()
    {
        QTest::addColumn<bool>("readOnlyReader");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("fits");

        QTest::newRow("199 ascii") << false << QString(199, u'a') << true;
        QTest::newRow("200 ascii") << false << QString(200, u'a') << false;
        QTest::newRow("99 chinese + 1 ascii") << false << QString(99, u'中') + u'a' << true;
        QTest::newRow("100 chinese") << false << QString(100, u'中') << false;
        QTest::newRow("read-only 1023 ascii") << true << QString(1023, u'a') << true;
        QTest::newRow("read-only 1024 ascii") << true << QString(1024, u'a') << false;
        QTest::newRow("read-only 511 chinese + 1 ascii")
            << true << QString(511, u'中') + u'a' << true;
        QTest::newRow("read-only 512 chinese") << true << QString(512, u'中') << false;
    }

    void readStringBuffer()
    {
        QFETCH(bool, readOnlyReader);
        QFETCH(QString, stored);
        QFETCH(bool, fits);

        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(registry.writeString(u"Text"_s, stored));
        const quint32 size = registry.lastSize();

        QString value = u"unchanged"_s;
        if (readOnlyReader) {
            QCOMPARE(readRegistryString(
                         dir->hives(), RegistryRoot::LocalMachine, DatabaseKey, u"Text"_s, value),
                fits ? 1 : -1);
        } else {
            QCOMPARE(registry.readString(u"Text"_s, value), fits);
            QCOMPARE(registry.lastSize(), size);
            QCOMPARE(
                registry.lastResult(), fits ? RegistryStatus::Success : RegistryStatus::MoreData);
        }
        QCOMPARE(value, fits ? stored : u"unchanged"_s);
    }

    void failedReadsKeepOutValue()
    {
        CRegistry registry(dir->hives(), RegistryRoot::CurrentUser);
        QVERIFY(registry.createKey(RegistryRoot::CurrentUser, ManagerKey));
        QVERIFY(registry.writeString(u"Short"_s, u"1"_s));
        QVERIFY(registry.writeString(u"Long"_s, u"12345"_s));
        QVERIFY(registry.writeNumber(u"BalloonHelp"_s, 1));

        qint32 number = 77;
        QVERIFY(!registry.readNumber(u"Missing"_s, number));
        QCOMPARE(registry.lastResult(), RegistryStatus::FileNotFound);
        // A string is never taken for a number: too long for four bytes is
        // MoreData, short enough is a type mismatch.
        QVERIFY(!registry.readNumber(u"Long"_s, number));
        QCOMPARE(registry.lastResult(), RegistryStatus::MoreData);
        QCOMPARE(registry.lastType(), RegistryType::String);
        QCOMPARE(registry.lastSize(), 6u);
        QVERIFY(!registry.readNumber(u"Short"_s, number));
        QCOMPARE(registry.lastResult(), RegistryStatus::UnsupportedType);
        QCOMPARE(number, 77);

        QString value = u"unchanged"_s;
        QVERIFY(!registry.readString(u"BalloonHelp"_s, value));
        QCOMPARE(registry.lastResult(), RegistryStatus::UnsupportedType);
        QVERIFY(!registry.readString(u"Missing"_s, value));
        QCOMPARE(registry.lastResult(), RegistryStatus::FileNotFound);
        // The read-only reader: a missing key, a missing value, a number, the other hive.
        const QList<std::tuple<RegistryRoot, QString, QString>> failing {
            { RegistryRoot::CurrentUser, u"Software\\Nothing"_s, u"Short"_s },
            { RegistryRoot::CurrentUser, ManagerKey, u"Missing"_s },
            { RegistryRoot::CurrentUser, ManagerKey, u"BalloonHelp"_s },
            { RegistryRoot::LocalMachine, ManagerKey, u"Short"_s }
        };
        for (const auto &[root, key, name] : failing)
            QCOMPARE(readRegistryString(dir->hives(), root, key, name, value), -1);
        QCOMPARE(value, u"unchanged"_s);

        // A quiet write leaves the record of the last call alone.
        QCOMPARE(registry.writeNumberQuietly(u"Count"_s, 9), RegistryStatus::Success);
        QCOMPARE(registry.lastResult(), RegistryStatus::FileNotFound);
        QCOMPARE(registry.lastType(), RegistryType::None);
        QCOMPARE(registry.lastSize(), 0u);
        QVERIFY(registry.readNumber(u"Count"_s, number));
        QCOMPARE(number, 9);
    }

    void closedHandle()
    {
        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(!registry.openKey(RegistryRoot::LocalMachine, DatabaseKey));
        QCOMPARE(registry.lastResult(), RegistryStatus::FileNotFound);
        QCOMPARE(registry.keyName(), DatabaseKey); // remembered even when the open fails
        QVERIFY(!registry.isOpen());

        qint32 number = 5;
        QString value = u"unchanged"_s;
        for (const std::function<bool()> &call : std::initializer_list<std::function<bool()>> {
                 [&] { return registry.writeNumber(u"A"_s, 1); },
                 [&] { return registry.writeString(u"A"_s, u"x"_s); },
                 [&] { return registry.readNumber(u"A"_s, number); },
                 [&] { return registry.readString(u"A"_s, value); } }) {
            QVERIFY(!call());
            QCOMPARE(registry.lastResult(), RegistryStatus::InvalidHandle);
        }
        QCOMPARE(registry.writeNumberQuietly(u"A"_s, 1), RegistryStatus::InvalidHandle);
        QCOMPARE(number, 5);
        QCOMPARE(value, u"unchanged"_s);

        QVERIFY(registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(registry.writeNumber(u"A"_s, 1));
        registry.close();
        QVERIFY(!registry.isOpen());
        QVERIFY(!registry.writeNumber(u"A"_s, 2));
        QCOMPARE(registry.lastResult(), RegistryStatus::InvalidHandle);
        QVERIFY(!QFile::exists(dir->hives().hive(RegistryRoot::CurrentUser).filePath()));
    }

    void namesIgnoreCaseAndKeepIt()
    {
        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(registry.writeString(u"ConnectionString"_s, u"first"_s));

        // The same key, written with a capital B, as the start-up code does.
        QVERIFY(registry.createKey(
            RegistryRoot::LocalMachine, u"software\\velmar\\services\\DataBase"_s));
        QVERIFY(registry.writeString(u"CONNECTIONSTRING"_s, u"second"_s));
        QString value;
        QVERIFY(registry.readString(u"connectionstring"_s, value));
        QCOMPARE(value, u"second"_s);

        const QByteArray file = fileBytes(dir->hives().hive(RegistryRoot::LocalMachine).filePath());
        QVERIFY(file.contains("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Velmar\\Services\\Database]\n"
                              "\"ConnectionString\"=\"second\"\n"));
        QCOMPARE(file.count("Database]"), 1);
        QCOMPARE(file.toLower().count("connectionstring"), 1);
    }

    void keyNamesAndDeletion()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::CurrentUser);
        const QString longest(255, u'k');
        QCOMPARE(hive.createKey(u"Software\\"_s + longest, false), RegistryStatus::Success);
        QCOMPARE(hive.keyExists(u"Software\\"_s + longest.toUpper()), RegistryStatus::Success);
        QCOMPARE(hive.createKey(u"Software\\"_s + longest + u'k', false),
            RegistryStatus::InvalidParameter);
        QCOMPARE(hive.createKey(u"Software\\\\Velmar"_s, false), RegistryStatus::InvalidParameter);
        QCOMPARE(
            hive.createKey(u"Software\\Line\nBreak"_s, false), RegistryStatus::InvalidParameter);
        QCOMPARE(hive.setValue(u"Software"_s, u"Line\nBreak"_s, number(1)),
            RegistryStatus::InvalidParameter);
        // A trailing backslash names the same key.
        QCOMPARE(hive.keyExists(u"Software\\"_s), RegistryStatus::Success);

        // Deleting, names matched without case; a key goes with its sub-keys.
        QCOMPARE(hive.createKey(u"Software\\Velmar\\A\\B"_s, false), RegistryStatus::Success);
        QCOMPARE(
            hive.setValue(u"Software\\Velmar\\A"_s, u"X"_s, number(1)), RegistryStatus::Success);
        QCOMPARE(hive.deleteValue(u"Software\\Velmar\\A"_s, u"x"_s), RegistryStatus::Success);
        QCOMPARE(hive.deleteValue(u"Software\\Velmar\\A"_s, u"x"_s), RegistryStatus::FileNotFound);
        QCOMPARE(hive.deleteKey(u"software\\velmar\\a"_s), RegistryStatus::Success);
        QCOMPARE(hive.keyExists(u"Software\\Velmar\\A\\B"_s), RegistryStatus::FileNotFound);
        QCOMPARE(hive.keyExists(u"Software\\Velmar"_s), RegistryStatus::Success);
        QCOMPARE(hive.deleteKey(u"Software\\Velmar\\A"_s), RegistryStatus::FileNotFound);
        QVERIFY(!fileBytes(hive.filePath()).contains("Velmar\\A"));
    }

    void fileFormatRoundTrip()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::LocalMachine);
        const QString key = u"SOFTWARE\\Velmar\\Services"_s;
        const QList<std::pair<QString, RegistryHive::Value>> values = {
            { QString(), text(RegistryType::String, u"默认值"_s) },
            { u"Path"_s, text(RegistryType::String, u"C:\\Data\\\"quoted\""_s) },
            { u"Name \"with\" \\ quotes"_s, text(RegistryType::String, u"x"_s) },
            { u"Lines"_s, text(RegistryType::String, u"one\r\ntwo"_s) },
            { u"Count"_s, number(10) },
            { u"Max"_s, number(0xffffffffu) },
            { u"Expand"_s, text(RegistryType::ExpandString, u"%SystemRoot%\\日志"_s) },
            { u"Blob"_s, raw(RegistryType::Binary, QByteArray(100, '\xab')) },
            { u"EmptyBlob"_s, raw(RegistryType::Binary, QByteArray()) },
            { u"Multi"_s, raw(RegistryType::MultiString, QByteArray("a\0b\0\0", 5)) },
            { u"Big"_s, raw(RegistryType::QWord, QByteArray::fromHex("0102030405060708")) },
        };
        QCOMPARE(hive.createKey(key, false), RegistryStatus::Success);
        for (const auto &[name, value] : values)
            QCOMPARE(hive.setValue(key, name, value), RegistryStatus::Success);

        const QByteArray file = fileBytes(hive.filePath());
        QVERIFY2(file.startsWith("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Velmar]\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Velmar\\Services]\n"),
            file.constData());
        // Long data continues on indented lines.
        for (const QByteArray &line : { QStringLiteral("\n@=\"默认值\"\n").toUtf8(),
                 QByteArray("\n\"Path\"=\"C:\\\\Data\\\\\\\"quoted\\\"\"\n"),
                 QByteArray("\n\"Name \\\"with\\\" \\\\ quotes\"=\"x\"\n"),
                 QByteArray("\n\"Count\"=dword:0000000a\n"),
                 QByteArray("\n\"Max\"=dword:ffffffff\n"),
                 QByteArray("\n\"Lines\"=hex(1):6f,6e,65,0d,0a,74,77,6f,00\n"),
                 QByteArray("\n\"Big\"=hex(b):01,02,03,04,05,06,07,08\n"),
                 QByteArray("\n\"EmptyBlob\"=hex:\n"), QByteArray("\n\"Blob\"=hex:ab,ab,"),
                 QByteArray(",\\\n  ab,ab,") })
            QVERIFY2(file.contains(line), line.constData());
        for (const QByteArray &line : file.split('\n'))
            QVERIFY2(line.size() <= 80, line.constData());

        // A second console reads exactly what was written.
        RegistryHives other(dir->registryDir());
        for (const auto &[name, expected] : values) {
            RegistryHive::Value read;
            QCOMPARE(other.hive(RegistryRoot::LocalMachine).queryValue(key, name, &read),
                RegistryStatus::Success);
            QVERIFY2(describe(read) == describe(expected), qPrintable(name));
        }
        // Parsing and writing again gives the same bytes.
        const RegEditFormat::ParseResult parsed
            = RegEditFormat::parse(file, u"HKEY_LOCAL_MACHINE"_s);
        QVERIFY(parsed.ok);
        QCOMPARE(RegEditFormat::serialize(parsed.root, u"HKEY_LOCAL_MACHINE"_s), file);
    }

    void handEditedFile()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::LocalMachine);
        const QByteArray handMade = "\xEF\xBB\xBF"
                                    "REGEDIT4\r\n"
                                    "\r\n"
                                    "; the database the server uses\r\n"
                                    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Velmar\\Services\\Database]\r\n"
                                    "\"ConnectionString\"=\"DBQ=C:\\Velmar\\VelmarDB.mdb\"\r\n"
                                    "  \"SetDBType\" = \"MDB\"  \r\n"
                                    "\"Port\"=dword:D6D8\r\n"
                                    "\"Blob\"=hex:01,02,\\\r\n"
                                    "    03,04\r\n"
                                    "@=\"默认\"\r\n"
                                    "[hkey_local_machine\\SOFTWARE\\Velmar\\LogManager]\r\n"
                                    "\"LogRoot\"=hex(2):43,3a,5c,4c,6f,67,73,00\r\n"
                                    "\"Level\"=hex(4):03,00,00,00\r\n"
                                    "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Old]\r\n"
                                    "\"Gone\"=\"x\"\r\n";
        QVERIFY(writeBytes(hive.filePath(), handMade));
        QVERIFY(hive.parseError().isEmpty());

        const QString logKey = u"SOFTWARE\\Velmar\\LogManager"_s;
        const QList<std::tuple<QString, QString, RegistryHive::Value>> expected = {
            { DatabaseKey, u"ConnectionString"_s,
                text(RegistryType::String, u"DBQ=C:\\Velmar\\VelmarDB.mdb"_s) },
            { DatabaseKey, u"SetDBType"_s, text(RegistryType::String, u"MDB"_s) },
            { DatabaseKey, u"Port"_s, number(55000) },
            { DatabaseKey, u"Blob"_s, raw(RegistryType::Binary, QByteArray::fromHex("01020304")) },
            { DatabaseKey, QString(), text(RegistryType::String, u"默认"_s) },
            { logKey, u"LogRoot"_s, text(RegistryType::ExpandString, u"C:\\Logs"_s) },
            { logKey, u"Level"_s, number(3) },
        };
        auto checkAll = [&](const RegistryHive &reader) {
            for (const auto &[key, name, value] : expected) {
                RegistryHive::Value read;
                if (reader.queryValue(key, name, &read) != RegistryStatus::Success)
                    return false;
                if (describe(read) != describe(value)) {
                    qWarning() << name << describe(read);
                    return false;
                }
            }
            return true;
        };
        QVERIFY(checkAll(hive));
        QCOMPARE(hive.keyExists(u"SOFTWARE\\Old"_s), RegistryStatus::FileNotFound);

        // A change through the console keeps everything written by hand.
        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QVERIFY(registry.openKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(registry.writeString(u"SetDBType"_s, u"MDB"_s)); // unchanged: no rewrite
        QCOMPARE(fileBytes(hive.filePath()), handMade);
        QVERIFY(registry.writeNumber(u"Added"_s, 1));
        RegistryHives other(dir->registryDir());
        QVERIFY(checkAll(other.hive(RegistryRoot::LocalMachine)));
        const QByteArray rewritten = fileBytes(hive.filePath());
        QVERIFY(rewritten.contains("\"ConnectionString\"=\"DBQ=C:\\\\Velmar\\\\VelmarDB.mdb\"\n"));
        QVERIFY(rewritten.contains("\"Port\"=dword:0000d6d8\n\"Blob\"=hex:01,02,03,04\n"));
    }

    void stringTerminatorSurvivesASave_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("expected");

        // A NUL typed at the end of a quoted string is its terminator, as it
        // is in hex(1) data; one inside the text is kept (and written as hex(1)).
        QTest::newRow("quoted, trailing NULs")
            << QByteArray("\"A\"=\"abc~~\"").replace('~', '\0') << u"abc"_s;
        QTest::newRow("hex(1), trailing NULs")
            << QByteArray("\"A\"=hex(1):61,62,63,00,00") << u"abc"_s;
        QTest::newRow("quoted, inner NUL") << QByteArray("\"A\"=\"ab~c\"").replace('~', '\0')
                                           << QStringLiteral("ab") + QChar(u'\0') + u"c"_s;
    }

    void stringTerminatorSurvivesASave()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, expected);
        const QString root = u"HKEY_LOCAL_MACHINE"_s;
        QByteArray file = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\X]\n" + line + '\n';
        for (int pass = 0; pass < 2; ++pass) {
            const RegEditFormat::ParseResult read = RegEditFormat::parse(file, root);
            QVERIFY2(read.ok, qPrintable(read.errorReason));
            const RegistryHive::Value *value = read.root.find({ u"X"_s })->value(u"A");
            QVERIFY(value);
            QCOMPARE(value->text, expected);
            file = RegEditFormat::serialize(read.root, root);
        }
    }

    void regeditVersion5Export()
    {
        // What regedit writes on export: UTF-16 with a byte-order mark, and
        // hex(2) text in UTF-16 as well.
        const QString exported = u"Windows Registry Editor Version 5.00\r\n\r\n"
                                 "[HKEY_CURRENT_USER\\Software\\Velmar\\VelmarManager]\r\n"
                                 "\"Caption\"=\"管理器\"\r\n"
                                 "\"Home\"=hex(2):25,00,48,00,4f,00,4d,00,45,00,25,00,00,00\r\n"_s;
        QByteArray bytes("\xFF\xFE");
        bytes.append(reinterpret_cast<const char *>(exported.utf16()), exported.size() * 2);

        RegistryHive &hive = dir->hives().hive(RegistryRoot::CurrentUser);
        QVERIFY(writeBytes(hive.filePath(), bytes));
        RegistryHive::Value read;
        QCOMPARE(hive.queryValue(ManagerKey, u"caption"_s, &read), RegistryStatus::Success);
        QCOMPARE(read.text, u"管理器"_s);
        QCOMPARE(hive.queryValue(ManagerKey, u"Home"_s, &read), RegistryStatus::Success);
        QCOMPARE(describe(read), describe(text(RegistryType::ExpandString, u"%HOME%"_s)));

        // Written back as REGEDIT4 in UTF-8.
        QCOMPARE(hive.setValue(ManagerKey, u"BalloonHelp"_s, number(0)), RegistryStatus::Success);
        const QByteArray file = fileBytes(hive.filePath());
        QVERIFY(file.startsWith("REGEDIT4\n"));
        QVERIFY(file.contains(QStringLiteral("\"Caption\"=\"管理器\"\n").toUtf8()));
        QVERIFY(file.contains("\"Home\"=hex(2):25,48,4f,4d,45,25,00\n"));
    }

    void damagedLinesAreSkippedAndTheFileNeverWritten_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<int>("line");

        // Only a file without the header is no hive at all; otherwise the
        // damaged line (and the values of a damaged key line) is left out.
        QTest::newRow("no header") << QByteArray("[HKEY_LOCAL_MACHINE\\SOFTWARE]\n") << 1;
        QTest::newRow("unterminated string") << QByteArray(
            "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Velmar]\n\"A\"=\"1\"\n"
            "\"B\"=\"oops\n") << 5;
        QTest::newRow("value before key") << QByteArray("REGEDIT4\r\n\"A\"=\"1\"\r\n") << 2;
        QTest::newRow("other root")
            << QByteArray("REGEDIT4\n\n[HKEY_CURRENT_USER\\Software]\n\"A\"=\"1\"\n") << 3;
        QTest::newRow("bad hex") << QByteArray(
            "REGEDIT4\n[HKEY_LOCAL_MACHINE\\X]\n\"B\"=hex:01,\\\n  0g\n")
                                 << 3;
        QTest::newRow("bad dword")
            << QByteArray("REGEDIT4\n[HKEY_LOCAL_MACHINE\\X]\n\"B\"=dword:123456789\n") << 3;
        QTest::newRow("key line without bracket")
            << QByteArray("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\n\"A\"=\"1\"\n") << 3;
        QTest::newRow("empty key name")
            << QByteArray("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\\\Velmar]\n") << 3;
        QTest::newRow("damaged line after a good one of the same name")
            << QByteArray("REGEDIT4\n[HKEY_LOCAL_MACHINE\\X]\n\"B\"=\"1\"\n\"B\"=dword:zz\n") << 4;
        QTest::newRow("unknown data")
            << QByteArray("REGEDIT4\n[HKEY_LOCAL_MACHINE\\X]\n\"B\"=qword:1\n") << 3;
    }

    void damagedLinesAreSkippedAndTheFileNeverWritten()
    {
        QFETCH(QByteArray, contents);
        QFETCH(int, line);
        const bool hive = line > 1;
        // A well-formed key after the damage, which is read unless the file
        // is no hive.
        contents += "\n[HKEY_LOCAL_MACHINE\\Good]\n\"G\"=\"yes\"\n";

        RegistryHive &file = dir->hives().hive(RegistryRoot::LocalMachine);
        QVERIFY(writeBytes(file.filePath(), contents));

        const QString where
            = QDir::toNativeSeparators(file.filePath()) + u':' + QString::number(line) + u": "_s;
        // Said once, however often the file is read.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QRegularExpression::escape(where)));
        QTest::failOnWarning(QRegularExpression(u"cannot be parsed"_s));
        QVERIFY2(file.parseError().startsWith(where), qPrintable(file.parseError()));
        QCOMPARE(DamagedConfigLines::of(dir->hives(), dir->iniPath()).value(0).left(where.size()),
            where);

        RegistryHive::Value good;
        QCOMPARE(file.queryValue(u"Good"_s, u"G"_s, &good),
            hive ? RegistryStatus::Success : RegistryStatus::FileNotFound);
        QCOMPARE(good.text, hive ? u"yes"_s : QString());
        // What the damaged line held reads as missing.
        CRegistry registry(dir->hives(), RegistryRoot::LocalMachine);
        QCOMPARE(registry.openKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar"_s),
            QByteArray(QTest::currentDataTag()) == "unterminated string");
        QCOMPARE(file.queryValue(u"X"_s, u"B"_s, nullptr), RegistryStatus::FileNotFound);
        QCOMPARE(file.queryValue(u"SOFTWARE"_s, u"A"_s, nullptr), RegistryStatus::FileNotFound);

        QVERIFY(!registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QCOMPARE(registry.lastResult(), RegistryStatus::BadDatabase);
        QCOMPARE(file.setValue(u"Good"_s, u"A"_s, number(1)), RegistryStatus::BadDatabase);
        QCOMPARE(file.deleteKey(u"Good"_s), RegistryStatus::BadDatabase);
        QCOMPARE(fileBytes(file.filePath()), contents);

        // Once repaired, the hive works again.
        QVERIFY(writeBytes(file.filePath(), "REGEDIT4\n"));
        QVERIFY(file.parseError().isEmpty());
        QVERIFY(registry.createKey(RegistryRoot::LocalMachine, DatabaseKey));
    }

    void missingFileIsEmptyHive()
    {
        RegistryHives hives(dir->root() + u"/not/yet/there"_s);
        RegistryHive &hive = hives.hive(RegistryRoot::CurrentUser);
        QCOMPARE(hive.keyExists(ManagerKey), RegistryStatus::FileNotFound);
        QCOMPARE(
            hive.queryValue(ManagerKey, u"BalloonHelp"_s, nullptr), RegistryStatus::FileNotFound);
        QVERIFY(hive.parseError().isEmpty());
        QVERIFY(!QFile::exists(hive.filePath())); // reading creates nothing

        CRegistry registry(hives, RegistryRoot::CurrentUser);
        QVERIFY(registry.createKey(RegistryRoot::CurrentUser, ManagerKey));
        QVERIFY(registry.writeNumber(u"BalloonHelp"_s, 1));
        QVERIFY(fileBytes(hive.filePath()).startsWith("REGEDIT4\n\n"));
    }

    void volatileKeysStayInMemory()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::CurrentUser);
        CRegistry registry(dir->hives(), RegistryRoot::CurrentUser);
        // A new object stands on the hive's root.
        QVERIFY(registry.isOpen());
        QVERIFY(registry.writeString(u"AtRoot"_s, u"1"_s));
        QVERIFY(registry.createKey(RegistryRoot::CurrentUser, ManagerKey));
        QVERIFY(registry.writeNumber(u"Lasting"_s, 1));
        QVERIFY(
            registry.createKey(RegistryRoot::CurrentUser, ManagerKey + u"\\Session\\Now"_s, true));
        QVERIFY(registry.writeString(u"Token"_s, u"abc"_s));
        QString value;
        QVERIFY(registry.readString(u"Token"_s, value));
        QCOMPARE(value, u"abc"_s);

        // A lasting key cannot hang below a volatile one.
        QCOMPARE(hive.createKey(ManagerKey + u"\\Session\\Disk"_s, false),
            RegistryStatus::ChildMustBeVolatile);
        // Later writes to the file leave the volatile keys out.
        QVERIFY(registry.createKey(RegistryRoot::CurrentUser, ManagerKey));
        QVERIFY(registry.writeNumber(u"Lasting"_s, 2));
        const QByteArray file = fileBytes(hive.filePath());
        QVERIFY(file.contains("[HKEY_CURRENT_USER]\n\"AtRoot\"=\"1\"\n"));
        QVERIFY(file.contains("\"Lasting\"=dword:00000002"));
        QVERIFY(!file.contains("Session"));
        QVERIFY(!file.contains("Token"));
        QCOMPARE(hive.deleteKey(ManagerKey + u"\\Session"_s), RegistryStatus::Success);
        QCOMPARE(hive.keyExists(ManagerKey + u"\\Session\\Now"_s), RegistryStatus::FileNotFound);
    }

    void changesOnDiskAreSeen()
    {
        RegistryHives console(dir->registryDir());
        RegistryHives server(dir->registryDir());
        CRegistry mine(console, RegistryRoot::LocalMachine);
        CRegistry theirs(server, RegistryRoot::LocalMachine);
        QVERIFY(mine.createKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(mine.writeString(u"SetDBType"_s, u"MDB"_s));

        QVERIFY(theirs.openKey(RegistryRoot::LocalMachine, DatabaseKey));
        QVERIFY(theirs.writeString(u"ConnectionString"_s, u"DSN=1"_s));
        QString value;
        QVERIFY(mine.readString(u"ConnectionString"_s, value));
        QCOMPARE(value, u"DSN=1"_s);

        // A write builds on what the other writer left, not on an old copy.
        QVERIFY(mine.writeNumber(u"Port"_s, 1));
        QVERIFY(theirs.readString(u"SetDBType"_s, value));
        QVERIFY(theirs.readString(u"ConnectionString"_s, value));

        // An edit that keeps the size of the file is seen too.
        const QString path = console.hive(RegistryRoot::LocalMachine).filePath();
        QByteArray bytes = fileBytes(path);
        bytes.replace("DSN=1", "DSN=2");
        QVERIFY(writeBytes(path, bytes));
        QVERIFY(mine.readString(u"ConnectionString"_s, value));
        QCOMPARE(value, u"DSN=2"_s);
    }

    void threadsShareOneHive()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::CurrentUser);
        QCOMPARE(hive.createKey(RaceKey, false), RegistryStatus::Success);
        constexpr int count = 30;
        auto writer = [&](const QString &prefix) {
            for (int i = 0; i < count; ++i)
                hive.setValue(RaceKey, prefix + QString::number(i), number(quint32(i)));
        };
        std::atomic<bool> readerFailed = false;
        std::unique_ptr<QThread> first(QThread::create(writer, u"First"_s));
        std::unique_ptr<QThread> second(QThread::create(writer, u"Second"_s));
        std::unique_ptr<QThread> reader(QThread::create([&] {
            for (int i = 0; i < count; ++i) {
                if (hive.keyExists(RaceKey) != RegistryStatus::Success)
                    readerFailed = true;
            }
        }));
        first->start();
        second->start();
        reader->start();
        QVERIFY(first->wait() && second->wait() && reader->wait());
        QVERIFY(!readerFailed);
        for (const QString &prefix : { u"First"_s, u"Second"_s }) {
            for (int i = 0; i < count; ++i) {
                RegistryHive::Value read;
                QCOMPARE(hive.queryValue(RaceKey, prefix + QString::number(i), &read),
                    RegistryStatus::Success);
                QCOMPARE(read.number, quint32(i));
            }
        }
    }

    void twoProcessesKeepEachOthersWrites()
    {
        constexpr int count = 100;
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(),
            { WriterArgument, dir->registryDir(), u"Child"_s, QString::number(count) });
        QVERIFY(child.waitForStarted());
        QVERIFY(child.waitForReadyRead(60000)); // the child is about to start writing

        CRegistry registry(dir->hives(), RegistryRoot::CurrentUser);
        QVERIFY(registry.createKey(RegistryRoot::CurrentUser, RaceKey));
        for (int i = 0; i < count; ++i)
            QVERIFY(registry.writeNumber(u"Parent"_s + QString::number(i), i));
        QVERIFY(child.waitForFinished(120000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);

        RegistryHives fresh(dir->registryDir());
        CRegistry reader(fresh, RegistryRoot::CurrentUser);
        QVERIFY(reader.openKey(RegistryRoot::CurrentUser, RaceKey));
        for (const QString &prefix : { u"Parent"_s, u"Child"_s }) {
            for (int i = 0; i < count; ++i) {
                qint32 value = -1;
                QVERIFY2(reader.readNumber(prefix + QString::number(i), value),
                    qPrintable(prefix + QString::number(i)));
                QCOMPARE(value, i);
            }
        }
    }

    void readOnlyFolderRefusesWrites()
    {
        RegistryHive &hive = dir->hives().hive(RegistryRoot::CurrentUser);
        QCOMPARE(hive.createKey(ManagerKey, false), RegistryStatus::Success);
        QCOMPARE(hive.setValue(ManagerKey, u"BalloonHelp"_s, number(1)), RegistryStatus::Success);
        const QByteArray before = fileBytes(hive.filePath());
        QVERIFY(PrivilegeDrop::openToOthers(dir->root()));
        QVERIFY(QFile::setPermissions(dir->registryDir(),
            QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther));
        qint32 status = 0;
        RegistryHive::Value read;
        {
            PrivilegeDrop nobody;
            QVERIFY(nobody.ok());
            status = hive.setValue(ManagerKey, u"BalloonHelp"_s, number(0));
            QCOMPARE(hive.queryValue(ManagerKey, u"BalloonHelp"_s, &read), RegistryStatus::Success);
        }
        PrivilegeDrop::openToOthers(dir->registryDir());
        QCOMPARE(status, RegistryStatus::AccessDenied);
        QCOMPARE(read.number, 1u);
        QCOMPARE(fileBytes(hive.filePath()), before);
    }

    void hivesFromEnvironment()
    {
        const auto restore = qScopeGuard([saved = QProcessEnvironment::systemEnvironment()] {
            for (const QString &name :
                { u"VELMAR_REGISTRY_DIR"_s, u"XDG_CONFIG_HOME"_s, u"HOME"_s }) {
                if (saved.contains(name))
                    qputenv(name.toLatin1().constData(), saved.value(name).toLocal8Bit());
                else
                    qunsetenv(name.toLatin1().constData());
            }
        });

        qputenv("VELMAR_REGISTRY_DIR", "/srv/reg");
        auto hives = RegistryHives::fromEnvironment();
        QCOMPARE(hives->hive(RegistryRoot::LocalMachine).filePath(),
            u"/srv/reg/HKEY_LOCAL_MACHINE.reg"_s);
        QCOMPARE(
            hives->hive(RegistryRoot::CurrentUser).filePath(), u"/srv/reg/HKEY_CURRENT_USER.reg"_s);
        QCOMPARE(hives->hive(RegistryRoot::CurrentUser).rootName(), u"HKEY_CURRENT_USER"_s);

        qputenv("VELMAR_REGISTRY_DIR", "");
        qputenv("XDG_CONFIG_HOME", "/xdg");
        hives = RegistryHives::fromEnvironment();
        QCOMPARE(hives->hive(RegistryRoot::LocalMachine).filePath(),
            u"/etc/velmar/HKEY_LOCAL_MACHINE.reg"_s);
        QCOMPARE(hives->hive(RegistryRoot::CurrentUser).filePath(),
            u"/xdg/velmar/HKEY_CURRENT_USER.reg"_s);

        qputenv("XDG_CONFIG_HOME", "");
        qputenv("HOME", "/home/admin");
        hives = RegistryHives::fromEnvironment();
        QCOMPARE(hives->hive(RegistryRoot::CurrentUser).filePath(),
            u"/home/admin/.config/velmar/HKEY_CURRENT_USER.reg"_s);
    }

private:
    std::unique_ptr<TempServerDir> dir;
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() > 1 && arguments.at(1) == WriterArgument)
        return runHiveWriter(arguments);
    TestRegistry test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_registry.moc"
