#include "CodePage.h"
#include "RtfReader.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// What messenger clients on a Chinese system write: GBK bytes, a font table
// with a Chinese font name, a colour table with the automatic colour first.
const QString ClientMessage
    = uR"({\rtf1\ansi\ansicpg936\deff0\deflang1033\deflangfe2052{\fonttbl{\f0\fnil\fcharset134 \'cb\'ce\'cc\'e5;}{\f1\fswiss\fcharset0 Arial;}}
{\colortbl ;\red255\green0\blue0;\red0\green0\blue255;}
{\*\generator Riched20 5.50.99.2014;}\viewkind4\uc1\pard\lang2052\f0\fs20 \b\'c4\'e3\'ba\'c3\b0 , \i it\i0  \ul under\ulnone  \cf1 red\cf0\par
\pard\qc\f1\fs28 second\line line\par
})"_s;

RtfDocument read(const QString &rtf)
{
    return RtfReader(CodePage("GBK")).read(rtf);
}

QString text(const QString &rtf)
{
    return read(rtf).plainText();
}

// The runs of a paragraph, each as its text and what its format sets, "|"
// between them: b, i, u, s (bold, italic, underline, strike-out), the size
// in half points, the font, the colour and "on" the background colour.
QStringList runs(const RtfParagraph &paragraph)
{
    QStringList out;
    for (const RtfRun &run : paragraph.runs) {
        const RtfCharFormat &f = run.format;
        QStringList parts { run.text };
        for (const auto &[set, letter] : { std::pair(f.bold, u"b"_s), std::pair(f.italic, u"i"_s),
                 std::pair(f.underline, u"u"_s), std::pair(f.strikeOut, u"s"_s) }) {
            if (set)
                parts << letter;
        }
        if (f.halfPoints)
            parts << QString::number(f.halfPoints);
        if (!f.fontFamily.isEmpty())
            parts << f.fontFamily;
        if (f.color)
            parts << u"#%1"_s.arg(*f.color, 6, 16, QChar(u'0'));
        if (f.background)
            parts << u"on #%1"_s.arg(*f.background, 6, 16, QChar(u'0'));
        out << parts.join(u'|');
    }
    return out;
}

} // namespace

class RtfReaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recognisesRichTextByItsFirstCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("rich");
        QTest::newRow("rtf1") << uR"({\rtf1\ansi hello})"_s << true;
        QTest::newRow("leading space") << uR"( {\rtf1\ansi hello})"_s << false;
        QTest::newRow("no version") << uR"({\rtf\ansi hello})"_s << false;
        QTest::newRow("upper case") << uR"({\RTF1 hello})"_s << false;
        QTest::newRow("empty") << QString() << false;
    }

    void recognisesRichTextByItsFirstCharacters()
    {
        QFETCH(QString, text);
        QFETCH(bool, rich);
        QCOMPARE(RtfReader::isRichText(text), rich);
    }

    void readsAClientMessageWithItsFormatting()
    {
        const RtfDocument document = read(ClientMessage);
        QCOMPARE(document.paragraphs.size(), 2);
        QCOMPARE(document.plainText(), u"你好, it under red\nsecond\nline"_s);

        QCOMPARE(runs(document.paragraphs.at(0)),
            QStringList({ u"你好|b|20|宋体"_s, u", |20|宋体"_s, u"it|i|20|宋体"_s, u" |20|宋体"_s,
                u"under|u|20|宋体"_s, u" |20|宋体"_s, u"red|20|宋体|#ff0000"_s }));
        QCOMPARE(document.paragraphs.at(0).alignment, RtfParagraph::Alignment::Left);
        // \cf0: the automatic colour.
        QCOMPARE(runs(document.paragraphs.at(1)), QStringList { u"second\nline|28|Arial"_s });
        QCOMPARE(document.paragraphs.at(1).alignment, RtfParagraph::Alignment::Center);
    }

    void plainText_data()
    {
        QTest::addColumn<QString>("rtf");
        QTest::addColumn<QString>("expected");
        // Bytes decode in the code page of the text.
        QTest::newRow("code page: GBK by default") << uR"({\rtf1 \'c4\'e3\'ba\'c3})"_s << u"你好"_s;
        QTest::newRow("code page: upper-case hex") << uR"({\rtf1 \'C4\'E3})"_s << u"你"_s;
        QTest::newRow("code page: ansicpg 936")
            << uR"({\rtf1\ansi\ansicpg936 \'c4\'e3})"_s << u"你"_s;
        QTest::newRow("code page: ansicpg 950: Big5")
            << uR"({\rtf1\ansi\ansicpg950 \'a7\'41\'a6\'6e})"_s << u"你好"_s;
        QTest::newRow("code page: ansicpg 65001: UTF-8")
            << uR"({\rtf1\ansi\ansicpg65001 \'e4\'bd\'a0})"_s << u"你"_s;
        QTest::newRow("code page: ansicpg 1252")
            << uR"({\rtf1\ansi\ansicpg1252 caf\'e9})"_s << u"café"_s;
        QTest::newRow("code page: unknown ansicpg keeps GBK")
            << uR"({\rtf1\ansi\ansicpg4711 \'c4\'e3})"_s << u"你"_s;
        // A Western font over GBK bytes is what the clients write: the bytes stay GBK.
        QTest::newRow("code page: charset 0 font keeps the text's code page")
            << uR"({\rtf1{\fonttbl{\f0\fcharset0 Arial;}}\f0 \'c4\'e3})"_s << u"你"_s;
        QTest::newRow("code page: Big5 font in a GBK text")
            << uR"({\rtf1\ansicpg936{\fonttbl{\f0\fcharset136 Ming;}{\f1\fcharset134 Song;}}\f0 \'a7\'41\f1 \'c4\'e3})"_s
            << u"你你"_s;
        QTest::newRow("code page: character split by a group end")
            << uR"({\rtf1 {\'c4}\'e3x})"_s << u"\uFFFD\uFFFDx"_s;
        QTest::newRow("code page: bad hex digits are dropped")
            << uR"({\rtf1 a\'zzb})"_s << u"azzb"_s;
        QTest::newRow("code page: raw characters pass") << uR"({\rtf1 直接})"_s << u"直接"_s;
        // Unicode characters skip their fallback.
        QTest::newRow("unicode: uc1 default") << uR"({\rtf1 \u20320?\u22909?!})"_s << u"你好!"_s;
        QTest::newRow("unicode: uc2 with byte fallback")
            << uR"({\rtf1\uc2\u20320\'c4\'e3 x})"_s << u"你 x"_s;
        QTest::newRow("unicode: uc0") << uR"({\rtf1\uc0\u20320 a})"_s << u"你a"_s;
        QTest::newRow("unicode: negative value") << uR"({\rtf1 \u-255?})"_s << u"！"_s;
        QTest::newRow("unicode: surrogate pair") << uR"({\rtf1 \u-10179?\u-8704?})"_s << u"😀"_s;
        QTest::newRow("unicode: fallback ends at the group end")
            << uR"({\rtf1{\uc3\u20320 a}b})"_s << u"你b"_s;
        QTest::newRow("unicode: uc is scoped to its group")
            << uR"({\rtf1{\uc0 x}\u20320?})"_s << u"x你"_s;
        QTest::newRow("unicode: control word counts as one fallback")
            << uR"({\rtf1\uc1\u20320\par z})"_s << u"你z"_s;
        QTest::newRow("unicode: no parameter") << uR"({\rtf1 \u ab})"_s << u"b"_s;
        QTest::newRow("unicode: huge uc is capped")
            << uR"({\rtf1\uc99999999\u20320 0123456789abcdefXYZ})"_s << u"你XYZ"_s;
        // Destinations, pictures and unknown words are skipped.
        QTest::newRow("skipped: starred destination")
            << uR"({\rtf1 a{\*\generator Msftedit 5.41;}b})"_s << u"ab"_s;
        QTest::newRow("skipped: unknown starred destination")
            << uR"({\rtf1 a{\*\velmarext {x}y}b})"_s << u"ab"_s;
        QTest::newRow("skipped: picture")
            << uR"({\rtf1 a{\pict\wmetafile8\picw100\pich100 0102030405ffeedd}b})"_s << u"ab"_s;
        QTest::newRow("skipped: picture inside shppict")
            << uR"({\rtf1 a{\*\shppict{\pict\pngblip 89504e47}}{\nonshppict{\pict\wmetafile8 0102}}b})"_s
            << u"ab"_s;
        QTest::newRow("skipped: object")
            << uR"({\rtf1 a{\object\objemb{\*\objdata 0102}{\result c}}b})"_s << u"ab"_s;
        QTest::newRow("skipped: stylesheet and info")
            << uR"({\rtf1{\stylesheet{\s0 Normal;}}{\info{\author x}}a})"_s << u"a"_s;
        QTest::newRow("skipped: field shows its result")
            << uR"({\rtf1{\field{\*\fldinst HYPERLINK "http://x"}{\fldrslt link}}})"_s << u"link"_s;
        QTest::newRow("skipped: unknown words")
            << uR"({\rtf1\velmarword12 a\zz-3 b\% c})"_s << u"ab c"_s;
        QTest::newRow("skipped: star not at group start is ignored")
            << uR"({\rtf1 a\*b})"_s << u"ab"_s;
        // Binary data is skipped whatever its length; it may hold braces and backslashes.
        QTest::newRow("binary: braces in data") << uR"({\rtf1 a{\pict\bin5 }}\{}b}c})"_s << u"ac"_s;
        QTest::newRow("binary: in text") << uR"({\rtf1 a\bin3 xyzb})"_s << u"ab"_s;
        QTest::newRow("binary: past the end") << uR"({\rtf1 a\bin999999999999999 xyz})"_s << u"a"_s;
        QTest::newRow("binary: negative") << uR"({\rtf1 a\bin-5 xyz})"_s << u"axyz"_s;
        QTest::newRow("binary: no length") << uR"({\rtf1 a\bin xyz})"_s << u"axyz"_s;
        // Broken input shows as well as it can.
        QTest::newRow("broken: missing closing braces")
            << uR"({\rtf1 {\b bold {\i text)"_s << u"bold text"_s;
        QTest::newRow("broken: closing braces too many") << uR"({\rtf1 a}}}b})"_s << u"ab"_s;
        QTest::newRow("broken: cut in a control word") << uR"({\rtf1 abc\)"_s << u"abc"_s;
        QTest::newRow("broken: cut in a byte") << uR"({\rtf1 abc\'4)"_s << u"abc4"_s;
        QTest::newRow("broken: cut after a unicode word") << uR"({\rtf1 abc\u-)"_s << u"abc"_s;
        QTest::newRow("broken: cut in the font table")
            << uR"({\rtf1{\fonttbl{\f0 Sim)"_s << QString();
        QTest::newRow("broken: cut in the colour table")
            << uR"({\rtf1{\colortbl;\red3)"_s << QString();
        QTest::newRow("broken: NUL characters") << u"{\\rtf1 a\0b}"_s << u"ab"_s;
        QTest::newRow("broken: huge size and parameters")
            << uR"({\rtf1\fs99999999999999999999\f99999999999\cf99999999 x})"_s << u"x"_s;
        QTest::newRow("broken: lone byte of a double-byte character")
            << uR"({\rtf1 \'c4})"_s << u"\uFFFD"_s;
        QTest::newRow("symbols") << uR"({\rtf1 a\\b\{c\}d})"_s << u"a\\b{c}d"_s;
        QTest::newRow("special characters") << uR"({\rtf1 a\~b\-c\_d})"_s << u"a\u00A0bc\u2011d"_s;
        QTest::newRow("special words")
            << uR"({\rtf1 a\tab b\emdash c\endash d\bullet\lquote x\rquote})"_s
            << u"a\tb\u2014c\u2013d\u2022\u2018x\u2019"_s;
        // Line ends in the source only wrap it; "\" before one is a paragraph.
        QTest::newRow("line ends") << u"{\\rtf1 ab\r\ncd\\\r\nef}"_s << u"abcd\nef"_s;
    }

    void plainText()
    {
        QFETCH(QString, rtf);
        QFETCH(QString, expected);
        QCOMPARE(text(rtf), expected);
    }

    void groupsRestoreTheFormatting()
    {
        const RtfDocument document = read(
            uR"({\rtf1{\colortbl;\red0\green128\blue0;}\fs30 a{\b\cf1\fs40 b{\i c}}d\plain e})"_s);
        QCOMPARE(runs(document.paragraphs.at(0)),
            QStringList(
                { u"a|30"_s, u"b|b|40|#008000"_s, u"c|b|i|40|#008000"_s, u"d|30"_s, u"e"_s }));
    }

    void colourIndexesOutsideTheTableAreAutomatic()
    {
        const RtfDocument document = read(
            uR"({\rtf1{\colortbl\red1\green2\blue3;\red255\green255\blue255;}\cf0 a\cf1 b\cf7 c\cf-2 d\highlight1 e})"_s);
        // A first entry with components is a colour, not the automatic one.
        QCOMPARE(runs(document.paragraphs.at(0)),
            QStringList({ u"a|#010203"_s, u"b|#ffffff"_s, u"cd"_s, u"e|on #ffffff"_s }));
    }

    void paragraphs() { QCOMPARE(read(uR"({\rtf1 a\par\par b})"_s).paragraphs.size(), 3); }

    void nestingDeeperThanTheLimitKeepsItsText()
    {
        const int depth = 100000;
        const QString deep = uR"({\rtf1\b )"_s + QString(depth, u'{') + uR"(\b0 x)"_s
            + QString(depth, u'}') + u" y}"_s;
        const RtfDocument document = read(deep);
        QCOMPARE(document.plainText(), u"x y"_s);
        const QList<RtfRun> &runs = document.paragraphs.at(0).runs;
        QVERIFY(!runs.constFirst().format.bold);
        // Leaving the deep groups gives back the state from before them.
        QVERIFY(runs.constLast().format.bold);

        // Never closed: the text is still there.
        QCOMPARE(text(u"{\\rtf1 "_s + QString(depth, u'{') + u"deep"_s), u"deep"_s);
    }

    void htmlCarriesTheFormattingAndEscapesTheText()
    {
        const RtfReader reader(CodePage("GBK"));
        const QString html = reader.toHtml(
            uR"({\rtf1{\colortbl;\red255\green0\blue0;}\b\cf1\fs21 <b>&amp;\b0\i\ul\strike  x\line y\par\qr\plain\par})"_s);
        QVERIFY2(
            html.contains(
                u"<span style=\"font-weight:700;font-size:10.5pt;color:#ff0000\">&lt;b&gt;&amp;amp;</span>"_s),
            qPrintable(html));
        QVERIFY2(
            html.contains(
                u"<span style=\"font-style:italic;text-decoration:underline line-through;font-size:10.5pt;color:#ff0000\"> x<br/>y</span>"_s),
            qPrintable(html));
        // An empty paragraph keeps its line; the alignment goes with the paragraph.
        QVERIFY2(html.contains(
                     u"<p style=\"margin:0;white-space:pre-wrap\" align=\"right\"><br/></p>"_s),
            qPrintable(html));
    }

    void plainTextIsShownAsItIs()
    {
        const RtfReader reader(CodePage("GBK"));
        // The same text with a leading space is plain text: nothing is read into it.
        const QString html = reader.toHtml(u" {\\rtf1\\b <x>}\r\nnext"_s);
        QVERIFY2(html.contains(u" {\\rtf1\\b &lt;x&gt;}<br/>next"_s), qPrintable(html));
        QVERIFY(!html.contains(u"font-weight"_s));
    }

    void replaysTheFuzzCorpus()
    {
        const QDir corpus(qEnvironmentVariable("VELMAR_TEST_DATA") + u"/fuzz/rtf"_s);
        const QStringList names = corpus.entryList(QDir::Files);
        QVERIFY2(names.size() >= 5, qPrintable(corpus.path()));
        const RtfReader reader(CodePage("GBK"));
        for (const QString &name : names) {
            QFile file(corpus.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            // As the fuzzer feeds it: every byte one character.
            const QString input = QString::fromLatin1(file.readAll());
            const RtfDocument document = reader.read(input);
            const QString html = reader.toHtml(input);
            QVERIFY2(html.startsWith(u"<html><body>"_s), qPrintable(name));
            QVERIFY(document.plainText().size() <= input.size());
        }
    }
};

QTEST_GUILESS_MAIN(RtfReaderTest)
#include "tst_rtfreader.moc"
