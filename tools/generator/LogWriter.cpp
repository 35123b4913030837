#include "LogWriter.h"

#include "CodePage.h"
#include "NameTables.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace {

const CodePage &gbk()
{
    static const CodePage codePage("GBK");
    return codePage;
}

QString stamp(const QDateTime &t)
{
    return t.toString(u"yyyy-MM-dd hh:mm:ss"_s);
}

QString line(const char16_t *s)
{
    return QString::fromUtf16(s);
}

// Where the daemons were running and when, relative to today: the last
// entry is outside a one-month period on purpose.
struct LogHour
{
    int daysAgo;
    int hour;
};
const LogHour kHours[] = { { 0, 9 }, { 0, 14 }, { 1, 10 }, { 3, 16 }, { 10, 11 }, { 45, 15 } };

} // namespace

LogWriter::LogWriter(QString root, const GeneratedData &data, QDate today, quint64 seed)
    : m_root(std::move(root))
    , m_data(data)
    , m_today(today)
    , m_rng(seed ^ 0x6c6f6773ULL)
{ }

const GenMember &LogWriter::randomMember()
{
    return m_data.members[size_t(m_rng.below(m_data.members.size()))];
}

bool LogWriter::write(QString *error)
{
    if (!writeSystemLogs(error))
        return false;
    if (m_data.members.size() < 2)
        return true; // conversations need two people
    return writeChatLogs(error) && writeUserLogs(error);
}

bool LogWriter::writeFile(const QString &folder, const QString &name, const QString &text,
    const QByteArray &encoding, QString *error)
{
    const QDir dir(QDir(m_root).filePath(folder));
    if (!QDir().mkpath(dir.path())) {
        *error = u"cannot create %1"_s.arg(dir.path());
        return false;
    }
    QByteArray bytes;
    if (encoding == "UTF-8")
        bytes = gbk().encodeServerFile(text, CodePage::FileEncoding::Utf8);
    else if (encoding == "UTF-8-BOM")
        bytes = gbk().encodeServerFile(text, CodePage::FileEncoding::Utf8Bom);
    else
        bytes = gbk().encodeServerFile(text, CodePage::FileEncoding::CodePage);
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        *error = u"cannot write %1"_s.arg(dir.filePath(name));
        return false;
    }
    return true;
}

bool LogWriter::writeChatLogs(QString *error)
{
    const auto lines = NameTables::chatLines();
    int number = 0;
    for (const LogHour &hour : kHours) {
        const int chats = int(m_rng.range(1, 2));
        for (int c = 0; c < chats; ++c) {
            QDateTime t(m_today.addDays(-hour.daysAgo),
                QTime(hour.hour, int(m_rng.range(0, 50)), int(m_rng.range(0, 59))));
            // Two to four different people.
            std::vector<const GenMember *> people;
            const int wanted = int(std::min<size_t>(m_rng.range(2, 4), m_data.members.size()));
            while (int(people.size()) < wanted) {
                const GenMember *m = &randomMember();
                if (std::find(people.begin(), people.end(), m) == people.end())
                    people.push_back(m);
            }
            QString participants = QString::number(people.size());
            for (const GenMember *m : people)
                participants += u"|%1|%2|192.168.1.%3|%4"_s.arg(m->id)
                                    .arg(m->login)
                                    .arg(10 + m->id % 200)
                                    .arg(5100 + int(m_rng.below(20)));
            ++number;
            const QDateTime started = t;
            QString text
                = u"%1 CR%2 %3\r\n"_s.arg(stamp(t)).arg(100000 + number * 37).arg(participants);
            const int messages = int(m_rng.range(3, 9));
            for (int i = 0; i < messages; ++i) {
                t = t.addSecs(m_rng.range(5, 240));
                const GenMember *speaker = people[size_t(m_rng.below(people.size()))];
                // A fixed-width time stamp, then who speaks; the words follow
                // on their own line.
                text += u"%1 %2(%3)\r\n%4\r\n"_s.arg(stamp(t), speaker->name, speaker->login,
                    line(lines[m_rng.below(lines.size())]));
            }
            const QString name
                = u"c%1_%2.txt"_s.arg(started.toString(u"yyyyMMddhhmm"_s)).arg(number);
            // The chat daemon writes the system code page; one file of a newer
            // daemon build is UTF-8.
            if (!writeFile(u"ChatD"_s, name, text, number == 2 ? "UTF-8" : "GBK", error))
                return false;
        }
    }
    return true;
}

bool LogWriter::writeSystemLogs(QString *error)
{
    const char16_t *const daemons[]
        = { u"VelmarD", u"GroupD", u"RelayD", u"FileDispatchD", u"FileSessionD", u"ChatD" };
    const auto events = NameTables::systemEvents();
    int fileIndex = 0;
    for (const LogHour &hour : kHours) {
        for (const char16_t *daemonText : daemons) {
            const QString daemon = line(daemonText);
            // Not every daemon writes every hour.
            if (daemon != u"VelmarD"_s && !m_rng.percent(60))
                continue;
            QDateTime t(
                m_today.addDays(-hour.daysAgo), QTime(hour.hour, 0, int(m_rng.range(0, 30))));
            const QString name = u"s%1.txt"_s.arg(t.toString(u"yyyyMMddhh"_s));
            QString text = u"# %1 system log\r\n"_s.arg(daemon);
            if (fileIndex == 0)
                text += u"%1 %2 service started\r\n"_s.arg(stamp(t), daemon);
            const int count = int(m_rng.range(4, 12));
            for (int i = 0; i < count; ++i) {
                t = t.addSecs(m_rng.range(10, 300));
                QString event = line(events[m_rng.below(events.size())]);
                if (event.contains(u"%1"_s))
                    event = event.arg(m_rng.range(1, 60000));
                text += u"%1 %2 %3\r\n"_s.arg(stamp(t), daemon, event);
            }
            ++fileIndex;
            const QByteArray encoding = daemon == u"RelayD"_s ? "UTF-8-BOM" : "GBK";
            if (!writeFile(daemon, name, text, encoding, error))
                return false;
        }
    }
    return true;
}

bool LogWriter::writeUserLogs(QString *error)
{
    const auto lines = NameTables::chatLines();
    const auto files = NameTables::fileNames();
    for (const LogHour &hour : kHours) {
        QDateTime t(m_today.addDays(-hour.daysAgo), QTime(hour.hour, 0, int(m_rng.range(0, 59))));
        const QString name = u"u%1.txt"_s.arg(t.toString(u"yyyyMMddhh"_s));
        QString text;
        const int records = int(m_rng.range(3, 8));
        for (int r = 0; r < records; ++r) {
            t = t.addSecs(m_rng.range(5, 400));
            const GenMember &sender = randomMember();
            QStringList receivers;
            const int receiverCount = int(m_rng.range(1, 3));
            for (int i = 0; i < receiverCount; ++i) {
                const GenMember &receiver = randomMember();
                if (receiver.id != sender.id && !receivers.contains(QString::number(receiver.id)))
                    receivers << QString::number(receiver.id);
            }
            if (receivers.isEmpty())
                receivers << QString::number(sender.id == m_data.members.front().id
                        ? m_data.members.back().id
                        : m_data.members.front().id);

            QString block;
            const QString senderIp = u"192.168.1.%1"_s.arg(10 + sender.id % 200);
            if (m_rng.percent(30)) {
                const QString session = u"%1_%2_%3"_s.arg(sender.id)
                                            .arg(t.toString(u"yyyyMMddhhmmss"_s))
                                            .arg(m_rng.range(1000, 9999));
                const int count = int(m_rng.range(1, 2));
                QString items;
                qint64 total = 0;
                for (int i = 0; i < count; ++i) {
                    const qint64 size = m_rng.range(2000, 3000000);
                    total += size;
                    items += u"%1|%2|%3|"_s.arg(i)
                                 .arg(line(files[m_rng.below(files.size())]))
                                 .arg(size);
                }
                block += u"SESSIONID: %1@%2\r\n"_s.arg(session, senderIp);
                block += u"FILES: |%1|%2|%3\r\n"_s.arg(count).arg(total).arg(items);
            }
            const QString message = line(lines[m_rng.below(lines.size())]);
            if (m_rng.percent(25)) {
                // As the clients write it: a font and a colour table, the
                // sender's colour and weight, GBK bytes as \'hh.
                const bool bold = m_rng.percent(50);
                block
                    += u"MESSAGE: "
                       u"{\\rtf1\\ansi\\ansicpg936\\deff0{\\fonttbl{\\f0\\fnil\\fcharset134 "
                       u"\\'cb\\'ce\\'cc\\'e5;}}\r\n{\\colortbl ;\\red0\\green0\\blue192;"
                       u"\\red192\\green0\\blue0;}\r\n\\viewkind4\\uc1\\pard\\lang2052\\f0\\fs20"_s;
                block += bold ? u"\\cf2\\b\\fs24 "_s : u"\\cf1 "_s;
                for (char c : gbk().encode(message)) {
                    const auto b = static_cast<unsigned char>(c);
                    block += b >= 0x80 ? u"\\'"_s + QString::number(b, 16)
                                       : QString(QChar::fromLatin1(c));
                }
                block += bold ? u"\\b0\\par\r\n}\r\n"_s : u"\\par\r\n}\r\n"_s;
            } else {
                block += u"MESSAGE: %1\r\n"_s.arg(message);
            }
            block += u".END_OF_DATA\r\n"_s;
            text += u"%1 VelmarD 192.168.1.2 5000 MSG_SENT 1 %2 %3 %4 0 0 %5\r\n"_s.arg(stamp(t))
                        .arg(sender.id)
                        .arg(receivers.join(u';'), senderIp)
                        .arg(gbk().byteLength(block));
            text += block;
        }
        if (!writeFile(u"VelmarD"_s, name, text, "GBK", error))
            return false;
    }
    return true;
}
