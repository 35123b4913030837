#include "CodePage.h"

#include <QtTest>

using namespace Qt::StringLiterals;

using Encoding = CodePage::FileEncoding;

class TestCodePage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qunsetenv("VELMAR_CODEPAGE"); }
    void cleanup() { qunsetenv("VELMAR_CODEPAGE"); }

    void systemCodePage()
    {
        QCOMPARE(CodePage::system().name(), QByteArray("GBK"));
        QCOMPARE(CodePage::system().byteLength(u"中文a"_s), 5);

        qputenv("VELMAR_CODEPAGE", "UTF-8");
        QCOMPARE(CodePage::system().name(), QByteArray("UTF-8"));
        QCOMPARE(CodePage::system().byteLength(u"中文a"_s), 7);

        // A name no converter knows must not leave lengths to chance.
        qputenv("VELMAR_CODEPAGE", "no-such-codepage");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unknown code page"_s));
        QCOMPARE(CodePage::system().name(), QByteArray("GBK"));
    }

    void gbkRoundTrip()
    {
        const CodePage gbk("GBK");
        const QByteArray bytes = gbk.encode(u"服务器a"_s);
        QCOMPARE(bytes, QByteArray::fromHex("b7fecef1c6f761"));
        QCOMPARE(gbk.decode(bytes), u"服务器a"_s);
        // Characters GBK lacks count as the one '?' the conversion puts there.
        QCOMPARE(gbk.byteLength(u"😀"_s), 1);
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
};

QTEST_GUILESS_MAIN(TestCodePage)
#include "tst_codepage.moc"
