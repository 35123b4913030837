#include "SaveJournal.h"

#include "LineEscape.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringEncoder>
#include <QStringTokenizer>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

const QByteArray magicLine = "VELMAR-SAVE-JOURNAL 1\n";
const QByteArray bodyLine = "body\n";
constexpr QByteArrayView endPrefix = "end ";

bool syncFolder(const QString &folder)
{
#ifdef Q_OS_UNIX
    // The rename is only durable once the folder entry itself is on disk.
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
#else
    Q_UNUSED(folder);
    return true;
#endif
}

// Splits a record line into its tab-separated fields, decoded.
QStringList fieldsOf(QStringView line)
{
    QStringList fields;
    for (const QStringView field : QStringTokenizer(line, u'\t'))
        fields.append(LineEscape::unescape(field));
    return fields;
}

} // namespace

SaveJournal::SaveJournal()
    : m_created(QDateTime::currentDateTime())
    , m_encoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless)
{ }

QString SaveJournal::fileName()
{
    return u"VelmarManager.savejournal"_s;
}

QString SaveJournal::pathFor(const QString &profilePath)
{
    return QFileInfo(profilePath).dir().filePath(fileName());
}

void SaveJournal::setConnectionString(const QString &connectionString)
{
    m_connectionString = connectionString;
}

void SaveJournal::appendField(QStringView text)
{
    // Statements rarely hold a character that needs escaping: those that do
    // not go into the body as UTF-8 directly, without a copy.
    const bool plain = !LineEscape::needsEscape(text);
    const QString escaped = plain ? QString() : LineEscape::escape(text);
    const QStringView field = plain ? text : QStringView(escaped);
    const qsizetype used = m_body.size();
    m_body.resize(used + m_encoder.requiredSpace(field.size()));
    char *end = m_encoder.appendToBuffer(m_body.data() + used, field);
    m_body.truncate(end - m_body.constData());
}

void SaveJournal::appendLine(
    char kind, std::initializer_list<QStringView> fields, char16_t separator)
{
    // The body grows in large steps: a save of a big organisation writes
    // tens of megabytes of statements.
    if (m_body.capacity() - m_body.size() < 4096)
        m_body.reserve(std::max<qsizetype>(m_body.capacity() * 2, 1 << 20));
    m_body += kind;
    bool first = true;
    for (const QStringView field : fields) {
        m_body += first ? ' ' : char(separator);
        first = false;
        appendField(field);
    }
    m_body += '\n';
    ++m_actionCount;
}

void SaveJournal::addStep(QStringView name)
{
    appendLine(char(Kind::Step), { name });
}

void SaveJournal::addStatement(QStringView sql)
{
    // Front coding: the statements of a partition share their long INSERT
    // prefix, so each line only says how much of the statement before it
    // is repeated. It keeps the journal a third of its plain size, and its
    // write and sync short.
    const QStringView previous = m_previous;
    qsizetype shared = 0;
    const qsizetype limit = std::min(previous.size(), sql.size());
    while (shared < limit && previous[shared] == sql[shared])
        ++shared;
    if (shared > 0 && previous[shared - 1].isHighSurrogate())
        --shared;
    const QString count = QString::number(shared);
    appendLine(char(Kind::Statement), { count, sql.sliced(shared) }, u' ');
    m_previous = sql.toString();
    ++m_statementCount;
}

void SaveJournal::addNoticeDelete(
    qint32 noticeId, QStringView sql, QStringView testPath, QStringView target)
{
    const QString id = QString::number(noticeId);
    appendLine(char(Kind::NoticeDelete), { sql, id, testPath, target });
    ++m_statementCount;
}

void SaveJournal::addProfileWrite(QStringView section, QStringView key, QStringView value)
{
    appendLine(char(Kind::ProfileWrite), { section, key, value });
}

bool SaveJournal::nextAction(Cursor &cursor, Action &action) const
{
    if (cursor.offset < 0 || cursor.offset >= m_body.size())
        return false;
    qsizetype end = m_body.indexOf('\n', cursor.offset);
    if (end < 0)
        end = m_body.size();
    const QByteArrayView raw(m_body.constData() + cursor.offset, end - cursor.offset);
    cursor.offset = end + 1;
    if (raw.size() < 2 || raw.at(1) != ' ')
        return false;
    QByteArrayView restBytes = raw.sliced(2);
    action = Action();
    action.kind = Kind(raw.at(0));
    if (action.kind == Kind::Statement) {
        // "<repeated count> <rest>"
        const qsizetype space = restBytes.indexOf(' ');
        bool ok = false;
        const qsizetype shared = space > 0 ? restBytes.first(space).toLongLong(&ok) : -1;
        if (!ok || shared < 0 || shared > cursor.previous.size())
            return false;
        restBytes = restBytes.sliced(space + 1);
        const QString rest = QString::fromUtf8(restBytes);
        action.text = cursor.previous.left(shared)
            + (restBytes.contains('\\') ? LineEscape::unescape(rest) : rest);
        cursor.previous = action.text;
        return true;
    }
    const QString rest = QString::fromUtf8(restBytes);
    switch (action.kind) {
    case Kind::Statement:
        return false; // read above
    case Kind::Step:
        action.text = LineEscape::unescape(rest);
        return true;
    case Kind::NoticeDelete:
    case Kind::ProfileWrite: {
        // NoticeDelete: statement, notice id, test path, target;
        // ProfileWrite: section, key, value.
        const QStringList fields = fieldsOf(rest);
        if (fields.size() != (action.kind == Kind::NoticeDelete ? 4 : 3))
            return false;
        action.text = fields[0];
        action.key = fields[1];
        action.value = fields[2];
        action.target = fields.value(3);
        return true;
    }
    }
    return false;
}

QByteArray SaveJournal::serialise() const
{
    QStringList ports;
    for (const quint16 port : m_notifyPorts)
        ports.append(QString::number(port));
    QByteArray head = magicLine;
    head += "connection " + LineEscape::escape(m_connectionString).toUtf8() + '\n';
    head += "created " + m_created.toString(Qt::ISODateWithMs).toUtf8() + '\n';
    head += "notify " + ports.join(u',').toUtf8() + '\n';
    head += "statements " + QByteArray::number(m_statementCount) + '\n';
    head += bodyLine;
    return head;
}

bool SaveJournal::write(const QString &path, QString *errorString) const
{
    const QByteArray head = serialise();
    QCryptographicHash hash(QCryptographicHash::Md5);
    hash.addData(head);
    hash.addData(m_body);
    const QByteArray end = QByteArray(endPrefix.data(), endPrefix.size())
        + QByteArray::number(head.size() + m_body.size()) + ' ' + hash.result().toHex() + '\n';

    QSaveFile file(path);
    // A journal must never be half there: a failure anywhere leaves the old
    // file (or none) in place.
    file.setDirectWriteFallback(false);
    auto fail = [&](const QString &why) {
        if (errorString)
            *errorString = why;
        file.cancelWriting();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    if (file.write(head) != head.size() || file.write(m_body) != m_body.size()
        || file.write(end) != end.size() || !file.flush())
        return fail(file.errorString());
#ifdef Q_OS_UNIX
    if (::fsync(file.handle()) != 0)
        return fail(QString::fromLocal8Bit(strerror(errno)));
#endif
    if (!file.commit()) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    if (!syncFolder(QFileInfo(path).absolutePath())) {
        if (errorString)
            *errorString = u"The folder of %1 could not be synced to disk."_s.arg(path);
        return false;
    }
    return true;
}

SaveJournal::ReadStatus SaveJournal::read(
    const QString &path, SaveJournal &journal, QString *errorString)
{
    auto fail = [&](ReadStatus status, const QString &why) {
        if (errorString)
            *errorString = why;
        return status;
    };
    QFile file(path);
    if (!file.exists())
        return fail(ReadStatus::Missing, u"No journal at %1."_s.arg(path));
    if (!file.open(QIODevice::ReadOnly))
        return fail(ReadStatus::Unreadable, file.errorString());
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(ReadStatus::Unreadable, file.errorString());

    if (!data.startsWith(magicLine))
        return fail(ReadStatus::Corrupt, u"The file is not a save journal."_s);
    // The end line: the last line, whose recorded length must be exactly
    // where it starts.
    if (!data.endsWith('\n'))
        return fail(ReadStatus::Corrupt, u"The journal is cut short."_s);
    const qsizetype endStart = data.lastIndexOf('\n', data.size() - 2) + 1;
    const QByteArrayView endLine(data.constData() + endStart, data.size() - endStart - 1);
    if (!endLine.startsWith(endPrefix))
        return fail(ReadStatus::Corrupt, u"The journal is cut short."_s);
    const QList<QByteArray> parts = endLine.sliced(endPrefix.size()).toByteArray().split(' ');
    bool lengthOk = false;
    if (parts.size() != 2 || parts[0].toLongLong(&lengthOk) != endStart || !lengthOk)
        return fail(ReadStatus::Corrupt, u"The journal's length does not match its end line."_s);
    const QByteArray expected = QCryptographicHash::hash(
        QByteArrayView(data.constData(), endStart), QCryptographicHash::Md5)
                                    .toHex();
    if (parts[1] != expected)
        return fail(ReadStatus::Corrupt, u"The journal's checksum does not match its content."_s);

    SaveJournal result;
    qsizetype cursor = magicLine.size();
    bool sawBody = false;
    qint64 declaredStatements = -1;
    while (cursor < endStart && !sawBody) {
        const qsizetype lineEnd = data.indexOf('\n', cursor);
        const QByteArrayView line(data.constData() + cursor, lineEnd - cursor);
        cursor = lineEnd + 1;
        const qsizetype space = line.indexOf(' ');
        const QByteArrayView name = space < 0 ? line : line.first(space);
        const QString value = space < 0 ? QString() : QString::fromUtf8(line.sliced(space + 1));
        if (name == "body") {
            sawBody = true;
        } else if (name == "connection") {
            result.m_connectionString = LineEscape::unescape(value);
        } else if (name == "created") {
            result.m_created = QDateTime::fromString(value, Qt::ISODateWithMs);
        } else if (name == "notify") {
            for (const QStringView port : QStringTokenizer(value, u',', Qt::SkipEmptyParts))
                result.m_notifyPorts.append(quint16(port.toUInt()));
        } else if (name == "statements") {
            declaredStatements = value.toLongLong();
        }
    }
    if (!sawBody)
        return fail(ReadStatus::Corrupt, u"The journal has no body."_s);
    result.m_body = data.mid(cursor, endStart - cursor);

    // Every action must read back; the counts must agree with the header.
    Cursor at;
    Action action;
    while (at.offset < result.m_body.size()) {
        if (!result.nextAction(at, action))
            return fail(ReadStatus::Corrupt, u"The journal holds a record it cannot read."_s);
        ++result.m_actionCount;
        if (action.kind == Kind::Statement || action.kind == Kind::NoticeDelete)
            ++result.m_statementCount;
    }
    if (result.m_statementCount != declaredStatements)
        return fail(ReadStatus::Corrupt, u"The journal's statement count does not match."_s);
    journal = std::move(result);
    return ReadStatus::Ok;
}

bool SaveJournal::remove(const QString &path, QString *errorString)
{
    QFile file(path);
    if (!file.exists())
        return true;
    if (!file.remove()) {
        if (errorString)
            *errorString = file.errorString();
        return false;
    }
    syncFolder(QFileInfo(path).absolutePath());
    return true;
}
