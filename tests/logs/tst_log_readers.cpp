#include "ChatLogReader.h"
#include "ChatLogRows.h"
#include "FileBytes.h"
#include "LogHeaderExpression.h"
#include "LogLineReader.h"
#include "PrivilegeDrop.h"
#include "SystemLogReader.h"
#include "SystemLogRows.h"
#include "UserLogDetail.h"
#include "UserLogReader.h"
#include "UserLogRows.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const CodePage Gbk("GBK");

LogMemberNames names()
{
    return { { 101, u"张三"_s }, { 102, u"李四"_s }, { 103, u"Wang Wu"_s } };
}

QByteArray gbk(const QString &text)
{
    return Gbk.encode(text);
}

QStringList systemCells(const QByteArray &bytes)
{
    SystemLogRows rows(Gbk);
    rows.appendFile(bytes);
    QStringList out;
    for (int r = 0; r < rows.rowCount(); ++r)
        out << rows.cell(r, 0) + u'|' + rows.cell(r, 1) + u'|' + rows.cell(r, 2) + u'|'
                + rows.cell(r, 3);
    return out;
}

const QByteArray SentHeader
    = "2007-10-08 14:05:09 VelmarD 10.0.0.1 5000 MSG_SENT 1 101 102;103 10.0.0.9 0 0 64";

} // namespace

class tst_LogReaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headerSplitRule_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("fields");
        QTest::newRow("plain") << u"a b c"_s << QStringList { u"a"_s, u"b"_s, u"c"_s };
        QTest::newRow("no delimiter") << u"abc"_s << QStringList();
        // The search resumes one character after a delimiter: the second of two
        // spaces belongs to the next field.
        QTest::newRow("double space") << u"a  b"_s << QStringList { u"a"_s, u" b"_s };
        QTest::newRow("triple space") << u"a   b"_s << QStringList { u"a"_s, u" "_s, u"b"_s };
        QTest::newRow("leading") << u" a b"_s << QStringList { u"a"_s, u"b"_s };
        QTest::newRow("trailing") << u"a b "_s << QStringList { u"a"_s, u"b"_s };
        QTest::newRow("header") << u"2007-10-08 12:30:01 CR1 2|101|x|y|z|102|x|y|z extra"_s
                                << QStringList { u"2007-10-08"_s, u"12:30:01"_s, u"CR1"_s,
                                       u"2|101|x|y|z|102|x|y|z"_s, u"extra"_s };
    }

    void headerSplitRule()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, fields);
        QCOMPARE(ChatLogReader::splitHeader(line, u" "_s), fields);
    }

    void participantNames_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("names");
        QTest::newRow("two known") << u"2|101|a|b|c|102|a|b|c"_s << u"张三; 李四; "_s;
        QTest::newRow("one group short") << u"2|101|a|b|c"_s << QString();
        QTest::newRow("last item missing") << u"2|101|a|b|c|102|a|b"_s << QString();
        QTest::newRow("unknown skipped") << u"2|999|a|b|c|103|a|b|c"_s << u"Wang Wu; "_s;
        QTest::newRow("zero") << u"0|101|a|b|c"_s << QString();
        QTest::newRow("negative") << u"-3|101|a|b|c"_s << QString();
        QTest::newRow("count lies high") << u"2147483647|101|a|b|c"_s << QString();
        QTest::newRow("count not a number") << u"x|101|a|b|c"_s << QString();
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("count below groups") << u"1|101|a|b|c|102|a|b|c"_s << u"张三; "_s;
        QTest::newRow("empty items count") << u"1|101|||"_s << u"张三; "_s;
    }

    void participantNames()
    {
        QFETCH(QString, field);
        QFETCH(QString, names);
        QCOMPARE(ChatLogReader::participantNames(field, ::names()), names);
    }

    void summaryDropsTwentyBytes()
    {
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"2007-10-08 12:30:05 张三(zs)"_s, Gbk),
            u"张三(zs)"_s);
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"12345678901234567890"_s, Gbk), QString());
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"short"_s, Gbk), QString());
        // Bytes of the code page: nine two-byte characters and one more byte; the
        // next character straddles byte 20 and goes with the prefix.
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"一二三四五六七八九x十尾"_s, Gbk), u"尾"_s);
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"一二三四五六七八九xyz"_s, Gbk), u"z"_s);
        QCOMPARE(ChatLogReader::withoutStampPrefix(u"一二三四五六七八九十尾"_s, Gbk), u"尾"_s);
    }

    void chatRowFromFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"c200710081230_1.txt"_s);
        QVERIFY(writeBytes(path,
            gbk(u"  2007-10-08 12:30:01 CR7 2|101|a|b|c|102|a|b|c  \r\n"
                u"2007-10-08 12:30:05 张三(zs)\r\n你好\r\n2007-10-08 12:31:00 李四(ls)\r\n好\r\n"_s)));
        const auto cells = ChatLogReader::readRow(path, names(), Gbk);
        QVERIFY(cells);
        QCOMPARE(*cells,
            QStringList(
                { u"2007-10-08"_s, u"12:30:01"_s, u"张三; 李四; "_s, u"张三(zs) 你好"_s, path }));

        ChatLogRows rows;
        rows.append(*cells);
        QCOMPARE(rows.cell(0, ChatLogRows::NoneColumn), QString());
        QCOMPARE(ChatLogRows::captions(),
            QStringList({ u"Time"_s, u"none"_s, u"Users"_s, u"Message"_s, u"Filename"_s }));

        // A UTF-8 file reads the same.
        QVERIFY(writeBytes(path,
            u"2007-10-08 12:30:01 CR7 1|102|a|b|c\n2007-10-08 12:30:05 李四(ls)\n早\n"_s.toUtf8()));
        QCOMPARE(ChatLogReader::readRow(path, names(), Gbk)->mid(2, 2),
            QStringList({ u"李四; "_s, u"李四(ls) 早"_s }));
    }

    void chatRowOfShortFiles()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"c200710081230_1.txt"_s);
        // Only the header: no summary text, but its separating space is not added
        // either, as the second line was never read.
        QVERIFY(writeBytes(path, "2007-10-08 12:30:01 CR7\r\n"));
        QCOMPARE(*ChatLogReader::readRow(path, names(), Gbk),
            QStringList({ u"2007-10-08"_s, u"12:30:01"_s, QString(), QString(), path }));
        // A second line of 20 characters or fewer leaves only the space.
        QVERIFY(writeBytes(path, "2007-10-08 12:30:01 CR7\r\n2007-10-08 12:30:05\r\n"));
        QCOMPARE(ChatLogReader::readRow(path, names(), Gbk)->value(3), u" "_s);
        // A header without a single space yields no fields: every cell but the
        // summary and the path is empty.
        QVERIFY(writeBytes(path, "garbage\r\nxxxxxxxxxxxxxxxxxxxxhello\r\n"));
        QCOMPARE(*ChatLogReader::readRow(path, names(), Gbk),
            QStringList({ QString(), QString(), QString(), u"hello "_s, path }));
        // An empty file: the cells are only the summary and the path, so the
        // path lands in the label and the Filename cell stays empty.
        QVERIFY(writeBytes(path, QByteArray()));
        const QStringList cells = *ChatLogReader::readRow(path, names(), Gbk);
        QCOMPARE(cells, QStringList({ QString(), path }));
        ChatLogRows rows;
        rows.append(cells);
        QCOMPARE(rows.cell(0, ChatLogRows::TimeColumn), u" "_s + path);
        QCOMPARE(rows.filePath(0), QString());
        // A header line longer than the 4096-byte buffer spills into the next read.
        QVERIFY(writeBytes(
            path, "2007-10-08 12:30:01 CR7 0|" + QByteArray(5000, 'x') + "\r\nnext\r\n"));
        // 26 header characters and 5000 more: 4095 in the first read, the rest
        // (less its 20-byte prefix) starts the summary.
        QCOMPARE(ChatLogReader::readRow(path, names(), Gbk)->value(3).size(),
            26 + 5000 - 4095 - 20 + 1 + 4);
    }

    void chatRowSkipsFilesItCannotUpdate()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"c200710081230_1.txt"_s);
        QVERIFY(!ChatLogReader::readRow(path, names(), Gbk)); // missing
        QVERIFY(!ChatLogReader::readRow(QString(), names(), Gbk));
        QVERIFY(writeBytes(path, "2007-10-08 12:30:01 CR7\r\nline\r\n"));
        QVERIFY(PrivilegeDrop::openToOthers(dir.path()));
        QVERIFY(
            QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        PrivilegeDrop drop;
        QVERIFY(drop.ok());
        // Opened for reading and updating: a read-only file is left out ...
        QVERIFY(!ChatLogReader::readRow(path, names(), Gbk));
        // ... while the detail pane opens read-only and still shows it.
        QCOMPARE(*ChatLogReader::detailText(path, Gbk), u"line\r\n"_s);
    }

    void chatDetailPane()
    {
        QCOMPARE(ChatLogReader::detailFromBytes("header\r\nline one\r\nline two\r\n", Gbk),
            u"line one\r\nline two\r\n"_s);
        QCOMPARE(ChatLogReader::detailFromBytes("no line end at all\nonly LF\n", Gbk),
            u"no line end at all\nonly LF\n"_s);
        QCOMPARE(ChatLogReader::detailFromBytes(gbk(u"头\r\n中文\r\n"_s), Gbk), u"中文\r\n"_s);
        QVERIFY(!ChatLogReader::detailText(u"/nonexistent/c200710081230_1.txt"_s, Gbk));

        // Each 4096-byte chunk is text up to its first NUL.
        QTemporaryDir dir;
        const QString path = dir.filePath(u"c200710081230_1.txt"_s);
        QByteArray bytes = "h\r\nab";
        bytes += '\0';
        bytes += "cd";
        bytes += QByteArray(4096 - bytes.size(), 'x');
        bytes += "tail";
        QVERIFY(writeBytes(path, bytes));
        QCOMPARE(*ChatLogReader::detailText(path, Gbk), u"abtail"_s);
    }

    void lineReaderBuffers()
    {
        // Every piece the reader gives with a buffer of size bytes, until it stops.
        const auto pieces = [](QByteArrayView bytes, int size) {
            LogLineReader reader(bytes);
            QList<QByteArray> read;
            QByteArrayView piece;
            while (reader.readLine(size, piece) && read.size() < 10)
                read.append(piece.toByteArray());
            return read;
        };
        QCOMPARE(pieces(QByteArray(2000, 'a') + "\r\nb\r\n\r\nlast", 1024),
            QList<QByteArray>({ QByteArray(1023, 'a'), QByteArray(977, 'a'), "b", "", "last" }));
        // CR LF counts as one character: a CR taken as the last one still ends
        // the line with its LF.
        QCOMPARE(pieces("abc\r\nd", 5), QList<QByteArray>({ "abc", "d" }));
        // A NUL ends the piece as it ends a C string; the read still goes on to
        // the line end.
        QCOMPARE(pieces(QByteArrayView("ab\0cd\nef", 8), 1024), QList<QByteArray>({ "ab", "ef" }));
        // A buffer without room for one character reads nothing.
        QVERIFY(pieces("abc", 1).isEmpty());
        QVERIFY(pieces("abc", 0).isEmpty());
    }

    void headerExpression_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("header");
        QTest::newRow("header") << QByteArray("2007-10-08 14:05:09 RelayD started") << true;
        QTest::newRow("space only after") << QByteArray("2007-10-08 14:05:09 ") << true;
        QTest::newRow("nothing after seconds") << QByteArray("2007-10-08 14:05:09") << false;
        QTest::newRow("tab after seconds") << QByteArray("2007-10-08 14:05:09\tx") << false;
        QTest::newRow("slashes") << QByteArray("2007/10/08 14:05:09 x") << false;
        QTest::newRow("one digit hour") << QByteArray("2007-10-08 4:05:09 x") << false;
        QTest::newRow("fullwidth digits") << u"２００７-10-08 14:05:09 x"_s.toUtf8() << false;
        QTest::newRow("data line") << QByteArray("MESSAGE: hello") << false;
        QTest::newRow("leading space") << QByteArray(" 2007-10-08 14:05:09 x") << false;
    }

    void headerExpression()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, header);
        QCOMPARE(LogHeaderExpression::matches(line), header);
    }

    void headerCheckAgreesWithExpression()
    {
        // Every byte value in every place of a header's first 20 bytes, and the
        // lines cut short: the check gives the expression's own answer.
        const QByteArray header("2007-10-08 14:05:09 x");
        auto expressionSays = [](const QByteArray &line) {
            return LogHeaderExpression::expression().match(QString::fromLatin1(line)).hasMatch();
        };
        for (qsizetype place = 0; place < LogHeaderExpression::PrefixLength; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                if (byte == '\n' || byte == '\r')
                    continue; // never inside a line
                QByteArray line = header;
                line[place] = char(byte);
                QVERIFY2(LogHeaderExpression::matches(line) == expressionSays(line),
                    qPrintable(QString::number(place) + u' ' + QString::number(byte)));
            }
            QCOMPARE(LogHeaderExpression::matches(header.first(place)),
                expressionSays(header.first(place)));
        }
    }

    void systemLogLines()
    {
        const QByteArray file = "# RelayD system log\r\n"
                                "\r\n"
                                "   2007-10-08 14:05:09 RelayD started relay on port 5001  \r\n"
                                "2007-10-08 14:05:10\r\n"
                                "#2007-10-08 14:05:11 RelayD commented out\r\n"
                                "2007-10-08 14:05:12 RelayD\r\n"
                                "not a header\r\n"
                                "2007-10-08 14:05:13 GroupD  two  spaces\n";
        QCOMPARE(systemCells(file),
            QStringList({ u"2007-10-08 14:05:09||RelayD|started relay on port 5001"_s,
                u"2007-10-08 14:05:12||RelayD|"_s,
                u"2007-10-08 14:05:13||GroupD| two  spaces"_s }));
        QCOMPARE(SystemLogRows::captions(),
            QStringList({ u"Time"_s, u"none"_s, u"Service"_s, u"Message"_s }));
        QCOMPARE(SystemLogRows::widths(), QList<int>({ 125, 0, 100, 405 }));

        // A line longer than 1023 characters: its rest is a line of its own.
        const QByteArray longLine = "2007-10-08 14:05:09 RelayD " + QByteArray(1100, 'x') + "\n"
            + "2007-10-08 14:05:14 RelayD ok\n";
        const QStringList rows = systemCells(longLine);
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows.at(0).size(), 1023 + 1); // the space of the label became two bars
        QCOMPARE(rows.at(1), u"2007-10-08 14:05:14||RelayD|ok"_s);

        // Newest first: descending by label, equal labels in reading order.
        SystemLogRows sorted(Gbk);
        sorted.appendFile("2007-10-08 14:05:09 A one\n2007-10-09 00:00:00 B two\n"
                          "2007-10-08 14:05:09 C three\n");
        sorted.sortNewestFirst();
        QCOMPARE(sorted.cell(0, 2), u"B"_s);
        QCOMPARE(sorted.cell(1, 2), u"A"_s);
        QCOMPARE(sorted.cell(2, 2), u"C"_s);
    }

    void systemLogEncodings()
    {
        const QString line = u"2007-10-08 14:05:09 VelmarD 用户登录失败: 密码错误"_s;
        const QString expected = u"2007-10-08 14:05:09||VelmarD|用户登录失败: 密码错误"_s;
        QCOMPARE(systemCells(gbk(line)), QStringList { expected });
        QCOMPARE(systemCells(line.toUtf8()), QStringList { expected });
        QCOMPARE(systemCells("\xEF\xBB\xBF" + line.toUtf8()), QStringList { expected });
        QByteArray utf16("\xFF\xFE");
        utf16.append(reinterpret_cast<const char *>(line.utf16()), line.size() * 2);
        QCOMPARE(systemCells(utf16), QStringList { expected });
        // Bytes that are neither UTF-8 nor GBK still give the row.
        const QStringList odd = systemCells("2007-10-08 14:05:09 VelmarD \xFF\xFF\x80 end");
        QCOMPARE(odd.size(), 1);
        QVERIFY(odd.at(0).startsWith(u"2007-10-08 14:05:09||VelmarD|"_s));
        QVERIFY(odd.at(0).endsWith(u" end"_s));
    }

    void userLogSentMessageMultiplies()
    {
        UserLogRows rows(names(), Gbk);
        rows.appendFile(SentHeader + "\r\nMESSAGE: hi\r\n.END_OF_DATA\r\n");
        QCOMPARE(rows.rowCount(), 3);
        QCOMPARE(rows.storedRowCount(), 3);
        const QString block = u"MESSAGE: hi\r\n.END_OF_DATA\r\n"_s;
        QCOMPARE(rows.fields(0),
            QStringList({ u"2007-10-08"_s, u"14:05:09"_s, u"VelmarD"_s, u"10.0.0.1"_s, u"5000"_s,
                u"MSG_SENT"_s, u"1"_s, u"101"_s, u"102;103"_s, u"10.0.0.9"_s, u"0"_s, u"0"_s,
                u"64"_s, block }));
        QCOMPARE(rows.fields(1).value(5), u"MSG_RECV"_s);
        QCOMPARE(rows.fields(1).value(8), u"102"_s);
        QCOMPARE(rows.fields(2).value(5), u"MSG_RECV"_s);
        QCOMPARE(rows.fields(2).value(8), u"103"_s);
        QCOMPARE(rows.fields(2).value(13), block);

        // Only MSG_SENT multiplies.
        UserLogRows received(names(), Gbk);
        QByteArray recv = SentHeader;
        recv.replace("MSG_SENT", "MSG_RECV");
        received.appendFile(recv + "\r\n");
        QCOMPARE(received.rowCount(), 1);
    }

    void userLogDataBlock_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("blocks");
        const QByteArray head
            = "2007-10-08 14:05:09 VelmarD 10.0.0.1 5000 MSG_RECV 1 101 102 10.0.0.9 0 0 ";
        QTest::newRow("terminated") << head + "64\r\n  MESSAGE: hi  \r\n.END_OF_DATA\r\nafter\r\n"
                                    << QStringList { u"MESSAGE: hi\r\n.END_OF_DATA\r\n"_s };
        QTest::newRow("never ends")
            << head + "64\r\nMESSAGE: hi\r\nmore" << QStringList { u"MESSAGE: hi\r\nmore\r\n"_s };
        // No room to read: the block is empty and its lines pass the main loop,
        // which finds the next header among them.
        for (const char *len : { "0", "-", "-5", "1", "x" }) {
            QTest::newRow(len) << head + len + "\r\nMESSAGE: hi\r\n" + head
                    + "64\r\n.END_OF_DATA\r\n"
                               << QStringList { QString(), u".END_OF_DATA\r\n"_s };
        }
        QTest::newRow("larger than file") << head + "99999999999\r\nMESSAGE: hi\r\n.END_OF_DATA\r\n"
                                          << QStringList { u"MESSAGE: hi\r\n.END_OF_DATA\r\n"_s };
        // A small buffer cuts block lines into pieces, each trimmed and ended.
        QTest::newRow("small buffer")
            << head + "5\r\nabcdefghij\r\n.END_OF_DATA\r\n"
            << QStringList { u"abcd\r\nefgh\r\nij\r\n.END\r\n_OF_\r\nDATA\r\n\r\n"_s };
        QTest::newRow("header inside block")
            << head + "200\r\n" + head + "64\r\n.END_OF_DATA\r\n"
            << QStringList { QString::fromLatin1(head) + u"64\r\n.END_OF_DATA\r\n"_s };
    }

    void userLogDataBlock()
    {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, blocks);
        UserLogRows rows(names(), Gbk);
        rows.appendFile(file);
        QStringList read;
        for (int r = 0; r < rows.rowCount(); ++r)
            read << rows.fields(r).last();
        QCOMPARE(read, blocks);
    }

    void userLogShortAndLongHeaders()
    {
        UserLogRows rows(names(), Gbk);
        rows.appendFile(
            "2007-10-08 14:05:09 VelmarD 10.0.0.1\r\n"
            "2007-10-08 14:05:10 VelmarD\t 10.0.0.1 5000 MSG_RECV 1 101 102 ip 0 0 64 extra\r\n"
            "data line\r\n.END_OF_DATA\r\n");
        QCOMPARE(rows.rowCount(), 2);
        // Fewer fields: later columns empty; the block sits right after them.
        QCOMPARE(rows.cell(0, UserLogRows::ServerIpColumn), u"10.0.0.1"_s);
        QCOMPARE(rows.cell(0, UserLogRows::ServerPortColumn), QString());
        QCOMPARE(rows.cell(0, UserLogRows::EventColumn), QString());
        QCOMPARE(rows.fields(0).size(), 5);
        // More fields: the extra one takes the Data column; the block is beyond it.
        QCOMPARE(rows.cell(1, UserLogRows::DateColumn), u"2007-10-08 14:05:10"_s);
        QCOMPARE(rows.cell(1, UserLogRows::DataColumn), u"extra"_s);
        QCOMPARE(rows.fields(1).last(), u"data line\r\n.END_OF_DATA\r\n"_s);
        QCOMPARE(UserLogRows::captions(),
            QStringList({ u"Date"_s, u"Time"_s, u"Service"_s, u"Service"_s, u"Server Port"_s,
                u"Event"_s, u"Type"_s, u"Sender"_s, u"Receiver"_s, u"Sender IP"_s, u"Status"_s,
                u"SubStatus"_s, u"DataLen"_s, u"Data"_s }));
        QCOMPARE(UserLogRows::widths(),
            QList<int>({ 125, 0, 0, 0, 0, 135, 50, 55, 65, 100, 0, 0, 0, 0 }));
    }

    void userLogNames()
    {
        UserLogRows rows(names(), Gbk);
        rows.appendFile(
            "2007-10-08 14:05:09 VelmarD ip 5000 MSG_SENT 1 101 999;102;;103 ip 0 0 0\r\n"
            "2007-10-08 14:05:10 VelmarD ip 5000 MSG_RECV 1 999 999 ip 0 0 0\r\n");
        // Unknown receivers are left out; an unknown sender keeps its id.
        QCOMPARE(rows.cell(0, UserLogRows::SenderColumn), u"张三"_s);
        QCOMPARE(rows.cell(0, UserLogRows::ReceiverColumn), u"李四;Wang Wu"_s);
        QCOMPARE(rows.rowCount(), 5); // the sent row and three receivers
        QCOMPARE(rows.cell(1, UserLogRows::ReceiverColumn), QString()); // 999
        QCOMPARE(rows.cell(2, UserLogRows::ReceiverColumn), u"李四"_s);
        QCOMPARE(rows.cell(4, UserLogRows::SenderColumn), u"999"_s);
        QCOMPARE(rows.cell(4, UserLogRows::ReceiverColumn), QString());
        QCOMPARE(rows.cell(0, UserLogRows::TimeColumn), QString());
    }

    void userLogDetail()
    {
        UserLogRows rows(names(), Gbk);
        rows.appendFile(SentHeader + "\r\nMESSAGE: hi\r\n.END_OF_DATA\r\n");
        const UserLogDetail sent = UserLogDetail::fromFields(rows.fields(0));
        QCOMPARE(sent.header,
            u"Date\t: 2007-10-08\r\nTime\t: 14:05:09\r\nEvent\t: MSG_SENT\r\nType\t: 1\r\n"
            u"Sender\t: 101\r\nSender IP\t: 10.0.0.9\r\nReceiver\t: 102;103\r\n\r\n"
            u"Data\t:\r\nMESSAGE: hi\r\n.END_OF_DATA\r\n\r\n"_s);
        // The line end before the terminator belongs to the text.
        QCOMPARE(sent.message, u"hi\r\n"_s);
        QVERIFY(!sent.richText);
        QVERIFY(!sent.canOpenUploadFolder());
        QCOMPARE(UserLogDetail::fromFields(rows.fields(2)).header.section(u"\r\n"_s, 6, 6),
            u"Receiver\t: 103"_s);

        const UserLogDetail empty
            = UserLogDetail::fromFields({ u"2007-10-08"_s, u"14:05:09"_s, QString() });
        QVERIFY(empty.message.isEmpty());
        QVERIFY(empty.header.endsWith(u"Data\t:\r\n\r\n"_s));
        QVERIFY(UserLogDetail::fromFields({}).header.startsWith(u"Date\t: \r\n"_s));
    }

    void userLogDetailFilesAndRichText()
    {
        const QString block = u"SESSIONID:  46_20071008_8875@192.168.1.56 \r\n"
                              u"FILES: |2|1865243|0|季度报告.ppt|531872|1|docs\\plan|1333371|\r\n"
                              u"MESSAGE: {\\rtf1\\ansi hello\\par\r\n}\r\n.END_OF_DATA\r\n"_s;
        const UserLogDetail d = UserLogDetail::fromFields({ u"2007-10-08"_s, block });
        QCOMPARE(d.files.size(), 2);
        QCOMPARE(d.files.at(0).name, u"季度报告.ppt"_s);
        QVERIFY(!d.files.at(0).isFolder);
        QCOMPARE(d.files.at(1).name, u"docs\\plan"_s);
        QVERIFY(d.files.at(1).isFolder);
        QCOMPARE(d.sessionId, u"46_20071008_8875"_s);
        QVERIFY(d.canOpenUploadFolder());
        QCOMPARE(d.message, u"{\\rtf1\\ansi hello\\par\r\n}\r\n"_s);
        QVERIFY(d.richText);

        // A leading space makes it plain text.
        const UserLogDetail plain
            = UserLogDetail::fromFields({ u"x"_s, u"MESSAGE:  {\\rtf1 x}\r\n.END_OF_DATA\r\n"_s });
        QCOMPARE(plain.message, u" {\\rtf1 x}\r\n"_s);
        QVERIFY(!plain.richText);
        // No files: the session id is not kept.
        QVERIFY(UserLogDetail::fromFields({ u"x"_s, u"SESSIONID: abc\r\nFILES:   \r\n"_s })
                    .sessionId.isEmpty());
        // Files parsing: leading bar, two skipped items, empty items skipped,
        // an incomplete group shows its name when it has one.
        QCOMPARE(UserLogDetail::parseFiles(u"|2|9|0|a.txt|1||1|b.txt"_s).size(), 2);
        QVERIFY(UserLogDetail::parseFiles(u"|2|9|0"_s).isEmpty());
        QVERIFY(UserLogDetail::parseFiles(u"|||"_s).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_LogReaders)
#include "tst_log_readers.moc"
