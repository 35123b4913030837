#include "DamagedConfigLines.h"
#include "FileBytes.h"
#include "PrivilegeDrop.h"
#include "ProfileFile.h"

#include <limits>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

using Encoding = CodePage::FileEncoding;

namespace {

const CodePage Gbk("GBK");

} // namespace

// Serverinfo.ini read and written in place, and the code pages of the
// server's files.
class TestProfileFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qunsetenv("VELMAR_CODEPAGE");
        m_dir.emplace();
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath(u"Serverinfo.ini"_s);
    }

    void read_data()
    {
        // Always [ServerInfo] Key.
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QString>("defaultValue");
        QTest::addColumn<int>("bufferSize");
        QTest::addColumn<QString>("expected");

        const QString d = u"dflt"_s;
        auto row = [&](const char *name, const QByteArray &contents, const QString &expected,
                       int bufferSize = 256) {
            QTest::newRow(name) << contents << d << bufferSize << expected;
        };
        row("plain", "[ServerInfo]\r\nKey=1\r\n", u"1"_s);
        row("names ignore case", "[SERVERINFO]\r\nkEY=1\r\n", u"1"_s);
        row("trimmed", "  [ ServerInfo ]  \r\n   Key   =   two words   \r\n", u"two words"_s);
        row("lf line ends", "[ServerInfo]\nKey=1\n", u"1"_s);
        row("no final line end", "[ServerInfo]\r\nKey=1", u"1"_s);
        row("double quotes", "[ServerInfo]\r\nKey=\"  padded  \"\r\n", u"  padded  "_s);
        row("single quotes", "[ServerInfo]\r\nKey='x'\r\n", u"x"_s);
        row("one pair only", "[ServerInfo]\r\nKey=\"\"x\"\"\r\n", u"\"x\""_s);
        row("quotes must match", "[ServerInfo]\r\nKey=\"x'\r\n", u"\"x'"_s);
        row("lone quote", "[ServerInfo]\r\nKey=\"\r\n", u"\""_s);
        row("empty quotes", "[ServerInfo]\r\nKey=\"\"\r\n", QString());
        row("equals in value", "[ServerInfo]\r\nKey=a=b\r\n", u"a=b"_s);
        row("first key wins", "[ServerInfo]\r\nKey=1\r\nKEY=2\r\n", u"1"_s);
        row("first section wins", "[ServerInfo]\r\nOther=1\r\n[ServerInfo]\r\nKey=2\r\n", d);
        row("key of another section", "[DBInfo]\r\nKey=1\r\n[ServerInfo]\r\n", d);
        row("before the first section", "Key=1\r\n[ServerInfo]\r\n", d);
        row("missing section", "[DBInfo]\r\nKey=1\r\n", d);
        row("line without equals reads empty", "[ServerInfo]\r\nKey\r\n", QString());
        row("comment is no key", "[ServerInfo]\r\n;Key=1\r\n", d);
        row("bracket line without close is no section", "[ServerInfo\r\nKey=1\r\n", d);
        row("cut to buffer", "[ServerInfo]\r\nKey=abcdef\r\n", u"abc"_s, 4);
        row("cut after unquoting", "[ServerInfo]\r\nKey=\"abcdef\"\r\n", u"abc"_s, 4);
        row("cut never splits a gbk character", "[ServerInfo]\r\nKey=中文字\r\n", u"中文"_s, 6);
        row("buffer of one", "[ServerInfo]\r\nKey=abc\r\n", QString(), 1);
        row("gbk file", Gbk.encode(u"[ServerInfo]\r\nKey=数据库服务器\r\n"_s), u"数据库服务器"_s);
        QTest::newRow("default trailing blanks dropped")
            << QByteArray("[ServerInfo]\r\n") << u"dflt  "_s << 256 << d;
        QTest::newRow("default cut") << QByteArray() << u"abcdef"_s << 3 << u"ab"_s;
    }

    void read()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, defaultValue);
        QFETCH(int, bufferSize);
        QFETCH(QString, expected);

        if (!contents.isEmpty())
            QVERIFY(writeBytes(m_path, contents));
        const ProfileFile file(m_path, Gbk);
        QCOMPARE(file.readString(u"ServerInfo"_s, u"Key"_s, defaultValue, bufferSize), expected);
    }

    void parseDecimal_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("expected");

        QTest::newRow("plain") << u"12"_s << 12;
        QTest::newRow("trailing text") << u"-12abc"_s << -12;
        QTest::newRow("no digits") << u"abc"_s << 0;
        QTest::newRow("plus") << u"+7"_s << 7;
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("sign only") << u"-"_s << 0;
        QTest::newRow("blank after sign") << u"- 5"_s << 0;
        QTest::newRow("leading blanks") << u"  42"_s << 42;
        QTest::newRow("leading zeros") << u"0009"_s << 9;
        QTest::newRow("no hex") << u"0x10"_s << 0;
        QTest::newRow("too big") << u"99999999999"_s << std::numeric_limits<int>::max();
        QTest::newRow("too small") << u"-99999999999"_s << std::numeric_limits<int>::min();
        QTest::newRow("smallest") << u"-2147483648"_s << std::numeric_limits<int>::min();
    }

    void parseDecimal()
    {
        QFETCH(QString, text);
        QFETCH(int, expected);
        QCOMPARE(ProfileFile::parseDecimal(text), expected);
    }

    void readInt()
    {
        // Without a file every read gives its default, and reading makes no file.
        QCOMPARE(ProfileFile(m_path, Gbk).readInt(u"GroupInfo"_s, u"Version"_s, 0), 0);
        QVERIFY(!QFile::exists(m_path));
        QVERIFY(writeBytes(
            m_path, "[ServerInfo]\r\nDefaultPositionID=\"5\"\r\nEmpty=\r\nWord=-12abc\r\n"));
        const ProfileFile file(m_path, Gbk);
        // Unquoted and read as parseDecimal reads.
        QCOMPARE(file.readInt(u"ServerInfo"_s, u"DefaultPositionID"_s, 9), 5);
        QCOMPARE(file.readInt(u"ServerInfo"_s, u"Word"_s, 9), -12);
        QCOMPARE(file.readInt(u"ServerInfo"_s, u"Missing"_s, 9), 9);
        QCOMPARE(file.readInt(u"ServerInfo"_s, u"Empty"_s, 9), 9); // empty counts as absent
    }

    void write_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("after");

        const auto row = [](const char *name, const QByteArray &before, const QString &section,
                             const QString &key, const QString &value, const QByteArray &after) {
            QTest::newRow(name) << before << section << key << value << after;
        };
        row("replace keeps the rest",
            "; server settings\r\n[ServerInfo]\r\nUseDist = 0\r\n\r\n"
            "[GroupInfo]\r\nVersion=0001\r\n; end\r\n",
            u"GroupInfo"_s, u"version"_s, u"0002"_s,
            "; server settings\r\n[ServerInfo]\r\nUseDist = 0\r\n\r\n"
            "[GroupInfo]\r\nVersion=0002\r\n; end\r\n");
        row("replaced line loses its blanks", "[S]\r\n  Key =  old  \r\n", u"S"_s, u"KEY"_s,
            u"new"_s, "[S]\r\nKey=new\r\n");
        row("section matched without case", "[groupinfo]\r\nVERSION=1\r\n", u"GroupInfo"_s,
            u"Version"_s, u"2"_s, "[groupinfo]\r\nVERSION=2\r\n");
        row("new key after the section's last entry",
            "[A]\r\nx=1\r\n\r\n; about B\r\n[B]\r\ny=2\r\n", u"A"_s, u"z"_s, u"3"_s,
            "[A]\r\nx=1\r\nz=3\r\n\r\n; about B\r\n[B]\r\ny=2\r\n");
        row("new key in an empty section", "[A]\r\n[B]\r\n", u"A"_s, u"z"_s, u"3"_s,
            "[A]\r\nz=3\r\n[B]\r\n");
        row("new key at the end without final line end", "[A]\r\nx=1", u"A"_s, u"z"_s, u"3"_s,
            "[A]\r\nx=1\r\nz=3");
        row("new section at the end", "top\r\n[A]\r\nx=1\r\n", u"New"_s, u"k"_s, u"v"_s,
            "top\r\n[A]\r\nx=1\r\n\r\n[New]\r\nk=v\r\n");
        row("new section after a blank line", "[A]\r\nx=1\r\n\r\n", u"New"_s, u"k"_s, u"v"_s,
            "[A]\r\nx=1\r\n\r\n[New]\r\nk=v\r\n");
        row("lf file stays lf", "[A]\nx=1\n", u"New"_s, u"k"_s, u"v"_s, "[A]\nx=1\n\n[New]\nk=v\n");
        row("first of duplicate sections", "[A]\r\nx=1\r\n[A]\r\ny=1\r\n", u"A"_s, u"y"_s, u"2"_s,
            "[A]\r\nx=1\r\ny=2\r\n[A]\r\ny=1\r\n");
        row("first of duplicate keys", "[A]\r\nx=1\r\nx=2\r\n", u"A"_s, u"X"_s, u"3"_s,
            "[A]\r\nx=3\r\nx=2\r\n");
        row("empty value", "[A]\r\nx=1\r\n", u"A"_s, u"x"_s, QString(), "[A]\r\nx=\r\n");
        // No file yet: made with CRLF line ends, in the code page.
        row("new file", QByteArray(), u"ServerInfo"_s, u"Name"_s, u"服务器"_s,
            Gbk.encode(u"[ServerInfo]\r\nName=服务器\r\n"_s));
    }

    void write()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);

        if (!before.isNull())
            QVERIFY(writeBytes(m_path, before));
        ProfileFile file(m_path, Gbk);
        QVERIFY(file.writeString(section, key, value));
        QCOMPARE(fileBytes(m_path), after);
        QCOMPARE(file.readString(section, key, u"missing"_s, 256), value);
    }

    void encodingIsKept_data()
    {
        QTest::addColumn<QByteArray>("codePage");
        QTest::addColumn<CodePage::FileEncoding>("encoding");

        QTest::newRow("gbk") << QByteArray("GBK") << CodePage::FileEncoding::CodePage;
        // Each detected encoding is the codec's (serverFiles); one is enough here.
        QTest::newRow("utf-16le bom") << QByteArray("GBK") << CodePage::FileEncoding::Utf16LeBom;
        QTest::newRow("utf-8 code page, ascii file")
            << QByteArray("UTF-8") << CodePage::FileEncoding::CodePage;
    }

    void encodingIsKept()
    {
        QFETCH(QByteArray, codePage);
        QFETCH(CodePage::FileEncoding, encoding);

        const CodePage page(codePage);
        const QString original = encoding == CodePage::FileEncoding::CodePage && codePage != "GBK"
            ? u"; ascii only\r\n[DBInfo]\r\nDBAddr=db\r\n"_s
            : u"; 服务器设置\r\n[DBInfo]\r\nDBAddr=数据库\r\n"_s;
        QVERIFY(writeBytes(m_path, page.encodeServerFile(original, encoding)));

        ProfileFile file(m_path, page);
        QVERIFY(file.writeString(u"DBInfo"_s, u"DBAddr"_s, u"新地址"_s));
        QString expectedText = original;
        expectedText.replace(u"=数据库"_s, u"=新地址"_s).replace(u"=db"_s, u"=新地址"_s);
        QCOMPARE(fileBytes(m_path), page.encodeServerFile(expectedText, encoding));
        QCOMPARE(file.readString(u"DBInfo"_s, u"DBAddr"_s, QString(), 256), u"新地址"_s);
    }

    void refusedWritesLeaveTheFile_data()
    {
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");

        QTest::newRow("line break in value") << u"A"_s << u"x"_s << u"1\r\n[B]"_s;
        QTest::newRow("equals in key") << u"A"_s << u"x=y"_s << u"1"_s;
        QTest::newRow("bracket in section") << u"A]"_s << u"x"_s << u"1"_s;
        QTest::newRow("empty key") << u"A"_s << u" "_s << u"1"_s;
        QTest::newRow("empty section") << QString() << u"x"_s << u"1"_s;
    }

    void refusedWritesLeaveTheFile()
    {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        const QByteArray before("[A]\r\nx=0\r\n");
        QVERIFY(writeBytes(m_path, before));
        ProfileFile file(m_path, Gbk);
        QVERIFY(!file.writeString(section, key, value));
        QCOMPARE(fileBytes(m_path), before);
    }

    void damagedLinesAreSkippedAndNotRewritten()
    {
        // A header cut short, the zeros a crash leaves: each line is skipped, the keys around it
        // read as ever.
        QByteArray before("[ServerInfo]\r\nA=1\r\n[GroupInfo\r\nB=2\r\n");
        before += QByteArrayView("Version=00\0\0\r\n", 14);
        before += "[DBInfo]\r\nD=4\r\n";
        QVERIFY(writeBytes(m_path, before));
        ProfileFile file(m_path, Gbk);
        QCOMPARE(file.readString(u"ServerInfo"_s, u"A"_s, QString(), 64), u"1"_s);
        // B stays in ServerInfo: the cut header opens no section.
        QCOMPARE(file.readString(u"ServerInfo"_s, u"B"_s, QString(), 64), u"2"_s);
        QCOMPARE(file.readInt(u"ServerInfo"_s, u"Version"_s, 7), 7);
        QCOMPARE(file.readString(u"DBInfo"_s, u"D"_s, QString(), 64), u"4"_s);
        QList<int> lines;
        for (const ProfileFile::Damage &damage : file.damagedLines())
            lines << damage.line;
        QCOMPARE(lines, QList<int>({ 3, 5 }));
        const QStringList report = DamagedConfigLines::ofProfile(m_path);
        QCOMPARE(report.size(), 2);
        QVERIFY2(report.first().startsWith(QDir::toNativeSeparators(m_path) + u":3: "_s),
            qPrintable(report.first()));

        QVERIFY(!file.writeString(u"GroupInfo"_s, u"Version"_s, u"0002"_s));
        QCOMPARE(fileBytes(m_path), before);

        // Agreed: the damaged lines become comments, nothing else changes,
        // and the file is written as any other.
        QVERIFY(file.commentOutDamagedLines());
        QVERIFY(file.damagedLines().isEmpty());
        QVERIFY(file.writeString(u"GroupInfo"_s, u"Version"_s, u"0002"_s));
        QByteArray after("[ServerInfo]\r\nA=1\r\n;[GroupInfo\r\nB=2\r\n;Version=00??\r\n");
        after += "[DBInfo]\r\nD=4\r\n";
        after += "\r\n[GroupInfo]\r\nVersion=0002\r\n";
        QCOMPARE(fileBytes(m_path), after);
    }

    void unwritableFileOrFolder()
    {
        const QByteArray before("[GroupInfo]\r\nVersion=0001\r\n");
        QVERIFY(writeBytes(m_path, before));
        ProfileFile file(m_path, Gbk);
        QVERIFY(PrivilegeDrop::openToOthers(m_dir->path()));

        // A read-only file in a folder anyone may write to.
        QVERIFY(QFile::setPermissions(m_dir->path(),
            QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther
                | QFile::WriteOther | QFile::ExeOther));
        QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::ReadOther));
        {
            PrivilegeDrop nobody;
            QVERIFY(nobody.ok());
            QVERIFY(!file.writeString(u"GroupInfo"_s, u"Version"_s, u"0002"_s));
        }
        QCOMPARE(fileBytes(m_path), before);

        // A writable file in a read-only folder: the temporary file cannot be made.
        QVERIFY(QFile::setPermissions(
            m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther | QFile::WriteOther));
        QVERIFY(QFile::setPermissions(m_dir->path(),
            QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther));
        bool written = true;
        QString read;
        {
            PrivilegeDrop nobody;
            QVERIFY(nobody.ok());
            written = file.writeString(u"GroupInfo"_s, u"Version"_s, u"0002"_s);
            read = file.readString(u"GroupInfo"_s, u"Version"_s, QString(), 128);
        }
        PrivilegeDrop::openToOthers(m_dir->path());
        QVERIFY(!written);
        QCOMPARE(read, u"0001"_s);
        QCOMPARE(fileBytes(m_path), before);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden),
            QStringList { u"Serverinfo.ini"_s });

        // A folder that does not exist is not made.
        ProfileFile elsewhere(m_dir->filePath(u"missing/Serverinfo.ini"_s), Gbk);
        QVERIFY(!elsewhere.writeString(u"A"_s, u"x"_s, u"1"_s));
    }

    void cleanup() { qunsetenv("VELMAR_CODEPAGE"); }

    void systemCodePage()
    {
        QCOMPARE(CodePage::system().name(), QByteArray("GBK"));
        qputenv("VELMAR_CODEPAGE", "UTF-8");
        QCOMPARE(CodePage::system().name(), QByteArray("UTF-8"));

        // A name no converter knows must not leave lengths to chance.
        qputenv("VELMAR_CODEPAGE", "no-such-codepage");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unknown code page"_s));
        QCOMPARE(CodePage::system().name(), QByteArray("GBK"));
    }

    void truncatedToBytes_data()
    {
        QTest::addColumn<QByteArray>("codePage");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("maxBytes");
        QTest::addColumn<QString>("expected");

        QTest::newRow("fits") << QByteArray("GBK") << u"中文"_s << 4 << u"中文"_s;
        QTest::newRow("half a character left out")
            << QByteArray("GBK") << u"中文"_s << 3 << u"中"_s;
        QTest::newRow("ascii then chinese") << QByteArray("GBK") << u"a中b"_s << 2 << u"a"_s;
        QTest::newRow("exact after chinese") << QByteArray("GBK") << u"a中b"_s << 3 << u"a中"_s;
        QTest::newRow("zero") << QByteArray("GBK") << u"abc"_s << 0 << QString();
        // Characters GBK lacks count as the one '?' the conversion puts there.
        QTest::newRow("gbk lacks a character") << QByteArray("GBK") << u"😀a"_s << 1 << u"😀"_s;
        QTest::newRow("utf-8 three bytes") << QByteArray("UTF-8") << u"中文"_s << 5 << u"中"_s;
        QTest::newRow("surrogate pair kept whole") << QByteArray("UTF-8") << u"a😀"_s << 4 << u"a"_s;
        QTest::newRow("surrogate pair fits") << QByteArray("UTF-8") << u"a😀"_s << 5 << u"a😀"_s;
    }

    void truncatedToBytes()
    {
        QFETCH(QByteArray, codePage);
        QFETCH(QString, text);
        QFETCH(int, maxBytes);
        QFETCH(QString, expected);
        const CodePage page(codePage);
        const QString result = page.truncatedToBytes(text, maxBytes);
        QCOMPARE(result, expected);
        QVERIFY(page.byteLength(result) <= maxBytes);
    }

    void serverFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::addColumn<Encoding>("encoding");

        const QString chinese = u"[ServerInfo]\r\nName=服务器\r\n"_s;
        QTest::newRow("utf-8 bom")
            << QByteArray("\xEF\xBB\xBF") + chinese.toUtf8() << chinese << Encoding::Utf8Bom;
        QTest::newRow("utf-16le bom") << QByteArray("\xFF\xFE")
                + QByteArray(reinterpret_cast<const char *>(chinese.utf16()), chinese.size() * 2)
                                      << chinese << Encoding::Utf16LeBom;
        QByteArray be("\xFE\xFF");
        for (QChar c : chinese) {
            be.append(char(c.unicode() >> 8));
            be.append(char(c.unicode() & 0xff));
        }
        QTest::newRow("utf-16be bom") << be << chinese << Encoding::Utf16BeBom;
        QTest::newRow("valid utf-8") << chinese.toUtf8() << chinese << Encoding::Utf8;
        QTest::newRow("gbk") << CodePage("GBK").encode(chinese) << chinese << Encoding::CodePage;
        QTest::newRow("ascii") << QByteArray("[A]\nb=1\n") << u"[A]\nb=1\n"_s << Encoding::CodePage;
        QTest::newRow("empty") << QByteArray() << QString() << Encoding::CodePage;
    }

    void serverFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QFETCH(Encoding, encoding);
        const CodePage gbk("GBK");
        Encoding detected = Encoding::Utf16BeBom;
        QCOMPARE(gbk.decodeServerFile(bytes, &detected), text);
        QCOMPARE(detected, encoding);
        // Written back in the encoding it came in, byte for byte.
        QCOMPARE(gbk.encodeServerFile(text, detected), bytes);
    }

private:
    std::optional<QTemporaryDir> m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestProfileFile)
#include "tst_profilefile.moc"
