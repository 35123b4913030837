#include "BenchLogWriter.h"

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

QByteArray stamp(const QDateTime &t)
{
    return t.toString(u"yyyy-MM-dd hh:mm:ss"_s).toLatin1();
}

QByteArray number(qint64 n)
{
    return QByteArray::number(n);
}

} // namespace

BenchLogWriter::BenchLogWriter(
    QString root, const GeneratedData &data, QDate today, quint64 seed, Volume volume)
    : m_root(std::move(root))
    , m_today(today)
    , m_rng(seed ^ 0x62656e63686c6f67ULL)
    , m_volume(volume)
{
    for (const GenMember &m : data.members)
        m_people.push_back({ m.id, gbk().encode(m.name), m.login.toLatin1() });
    for (const char16_t *line : NameTables::chatLines()) {
        const QByteArray text = gbk().encode(QString::fromUtf16(line));
        m_lines.push_back(text);
        QByteArray rtf = "{\\rtf1\\ansi\\ansicpg936\\deff0{\\fonttbl{\\f0\\fnil\\fcharset134 "
                         "\\'cb\\'ce\\'cc\\'e5;}}\r\n\\viewkind4\\uc1\\pard\\lang2052\\f0\\fs20 ";
        for (char c : text) {
            const auto b = static_cast<unsigned char>(c);
            if (b >= 0x80)
                rtf += "\\'" + QByteArray::number(b, 16);
            else
                rtf += c;
        }
        rtf += "\\par\r\n}";
        m_rtfLines.push_back(rtf);
    }
    for (const char16_t *name : NameTables::fileNames())
        m_files.push_back(gbk().encode(QString::fromUtf16(name)));
    for (const char16_t *event : NameTables::systemEvents())
        m_events.push_back(gbk().encode(QString::fromUtf16(event)));
}

const BenchLogWriter::Person &BenchLogWriter::person()
{
    return m_people[size_t(m_rng.below(m_people.size()))];
}

const QByteArray &BenchLogWriter::pick(const std::vector<QByteArray> &items)
{
    return items[size_t(m_rng.below(items.size()))];
}

bool BenchLogWriter::write(QString *error)
{
    if (m_people.size() < 2) {
        *error = u"the log benchmark needs at least two members"_s;
        return false;
    }
    return writeUserLogs(error) && writeSystemLogs(error) && writeChatLogs(error);
}

bool BenchLogWriter::save(
    const QString &folder, const QString &name, const QByteArray &bytes, QString *error)
{
    const QDir dir(QDir(m_root).filePath(folder));
    if (!QDir().mkpath(dir.path())) {
        *error = u"cannot create %1"_s.arg(dir.path());
        return false;
    }
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        *error = u"cannot write %1"_s.arg(dir.filePath(name));
        return false;
    }
    return true;
}

bool BenchLogWriter::writeUserLogs(QString *error)
{
    const int hours = m_volume.days * 24;
    const qint64 perFile = m_volume.userBytes / hours;
    const QDateTime first(m_today.addDays(-(m_volume.days - 1)), QTime(0, 0));
    for (int h = 0; h < hours; ++h) {
        const QDateTime hour = first.addSecs(qint64(h) * 3600);
        QByteArray text;
        text.reserve(perFile + 4096);
        qint64 second = 0;
        while (text.size() < perFile) {
            second = std::min<qint64>(3599, second + qint64(m_rng.below(3)));
            const QDateTime t = hour.addSecs(second);
            const Person &sender = person();
            // Most messages go to one person; some to a few.
            QByteArray receivers;
            const int count = m_rng.percent(85) ? 1 : int(m_rng.range(2, 4));
            for (int i = 0; i < count; ++i) {
                const Person *receiver = &person();
                if (receiver->id == sender.id)
                    receiver = &m_people[(size_t(&sender - m_people.data()) + 1) % m_people.size()];
                if (i > 0)
                    receivers += ';';
                receivers += number(receiver->id);
            }
            const QByteArray senderIp = "192.168.1." + number(10 + sender.id % 200);
            QByteArray block;
            if (m_rng.percent(20)) {
                block += "SESSIONID: " + number(sender.id) + '_'
                    + t.toString(u"yyyyMMddhhmmss"_s).toLatin1() + '_'
                    + number(m_rng.range(1000, 9999)) + '@' + senderIp + "\r\n";
                const int files = int(m_rng.range(1, 2));
                QByteArray items;
                qint64 total = 0;
                for (int i = 0; i < files; ++i) {
                    const qint64 size = m_rng.range(2000, 3000000);
                    total += size;
                    items += number(i) + '|' + pick(m_files) + '|' + number(size) + '|';
                }
                block += "FILES: |" + number(files) + '|' + number(total) + '|' + items + "\r\n";
            }
            block += "MESSAGE: ";
            block += m_rng.percent(15) ? pick(m_rtfLines) : pick(m_lines);
            block += "\r\n.END_OF_DATA\r\n";
            const bool sent = m_rng.percent(60);
            text += stamp(t) + " VelmarD 192.168.1.2 5000 " + (sent ? "MSG_SENT" : "MSG_RECV")
                + " 1 " + number(sender.id) + ' ' + receivers + ' ' + senderIp + " 0 0 "
                + number(block.size()) + "\r\n";
            text += block;
        }
        if (!save(u"VelmarD"_s, u"u%1.txt"_s.arg(hour.toString(u"yyyyMMddhh"_s)), text, error))
            return false;
    }
    return true;
}

bool BenchLogWriter::writeSystemLogs(QString *error)
{
    static const char *const daemons[]
        = { "VelmarD", "GroupD", "RelayD", "FileDispatchD", "FileSessionD", "ChatD" };
    const int hours = m_volume.days * 24;
    const qint64 perFile = m_volume.systemBytes / (hours * 6);
    const QDateTime first(m_today.addDays(-(m_volume.days - 1)), QTime(0, 0));
    for (int h = 0; h < hours; ++h) {
        const QDateTime hour = first.addSecs(qint64(h) * 3600);
        for (const char *daemon : daemons) {
            QByteArray text = QByteArray("# ") + daemon + " system log\r\n";
            text.reserve(perFile + 1024);
            qint64 second = 0;
            while (text.size() < perFile) {
                second = std::min<qint64>(3599, second + qint64(m_rng.below(8)));
                QByteArray event = pick(m_events);
                if (event.contains("%1"))
                    event.replace("%1", number(m_rng.range(1, 60000)));
                text += stamp(hour.addSecs(second)) + ' ' + daemon + ' ' + event + "\r\n";
            }
            if (!save(QString::fromLatin1(daemon), u"s%1.txt"_s.arg(hour.toString(u"yyyyMMddhh"_s)),
                    text, error))
                return false;
        }
    }
    return true;
}

bool BenchLogWriter::writeChatLogs(QString *error)
{
    const qint64 span = qint64(m_volume.days) * 24 * 60; // minutes
    const QDateTime first(m_today.addDays(-(m_volume.days - 1)), QTime(0, 0));
    for (int n = 1; n <= m_volume.chatFiles; ++n) {
        QDateTime t
            = first.addSecs(qint64(m_rng.below(quint64(span))) * 60 + qint64(m_rng.below(60)));
        const int wanted = int(std::min<size_t>(m_rng.range(2, 4), m_people.size()));
        std::vector<const Person *> people;
        while (int(people.size()) < wanted) {
            const Person *p = &person();
            if (std::find(people.begin(), people.end(), p) == people.end())
                people.push_back(p);
        }
        QByteArray text = stamp(t) + " CR" + number(100000 + n) + ' ' + number(people.size());
        for (const Person *p : people)
            text += '|' + number(p->id) + '|' + p->login + "|192.168.1." + number(10 + p->id % 200)
                + '|' + number(5100 + m_rng.below(20));
        text += "\r\n";
        const QString name = u"c%1_%2.txt"_s.arg(t.toString(u"yyyyMMddhhmm"_s)).arg(n);
        const int messages = int(m_rng.range(3, 9));
        for (int i = 0; i < messages; ++i) {
            t = t.addSecs(m_rng.range(5, 240));
            const Person *speaker = people[size_t(m_rng.below(people.size()))];
            text += stamp(t) + ' ' + speaker->name + '(' + speaker->login + ")\r\n" + pick(m_lines)
                + "\r\n";
        }
        if (!save(u"ChatD"_s, name, text, error))
            return false;
    }
    return true;
}
