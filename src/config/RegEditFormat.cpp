#include "RegEditFormat.h"

#include "CodePage.h"

#include <QStringConverter>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QString Regedit4Header = u"REGEDIT4"_s;
const QString Regedit5Header = u"Windows Registry Editor Version 5.00"_s;

#ifdef Q_OS_WIN
constexpr char LineEnd[] = "\r\n";
#else
constexpr char LineEnd[] = "\n";
#endif

// Longest line regedit writes for hex data before continuing on the next line.
constexpr int HexLineWidth = 77;

bool hasLineBreakOrZero(QStringView text)
{
    for (QChar c : text) {
        if (c == u'\r' || c == u'\n' || c == u'\0')
            return true;
    }
    return false;
}

// A quoted name or string starting at text[pos] == '"'. REGEDIT4 knows two
// escapes, \\ and \"; any other backslash is kept as typed, which is what a
// hand-written "C:\Data" means.
bool parseQuoted(QStringView text, qsizetype &pos, QString &out)
{
    out.clear();
    ++pos; // opening quote
    while (pos < text.size()) {
        const QChar c = text.at(pos);
        if (c == u'"') {
            ++pos;
            return true;
        }
        if (c == u'\\' && pos + 1 < text.size()
            && (text.at(pos + 1) == u'\\' || text.at(pos + 1) == u'"')) {
            out += text.at(pos + 1);
            pos += 2;
            continue;
        }
        out += c;
        ++pos;
    }
    return false;
}

QString quoted(QStringView text)
{
    QString out;
    out.reserve(text.size() + 2);
    out += u'"';
    for (QChar c : text) {
        if (c == u'\\' || c == u'"')
            out += u'\\';
        out += c;
    }
    out += u'"';
    return out;
}

void skipSpaces(QStringView text, qsizetype &pos)
{
    while (pos < text.size() && (text.at(pos) == u' ' || text.at(pos) == u'\t'))
        ++pos;
}

int hexDigit(QChar c)
{
    if (c >= u'0' && c <= u'9')
        return c.unicode() - '0';
    if (c >= u'a' && c <= u'f')
        return c.unicode() - 'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c.unicode() - 'A' + 10;
    return -1;
}

bool parseHexNumber(QStringView text, int maxDigits, quint32 &number)
{
    if (text.isEmpty() || text.size() > maxDigits)
        return false;
    quint32 result = 0;
    for (QChar c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            return false;
        result = result * 16 + quint32(digit);
    }
    number = result;
    return true;
}

bool parseHexBytes(QStringView text, QByteArray &bytes)
{
    bytes.clear();
    const QString trimmed = text.trimmed().toString();
    if (trimmed.isEmpty())
        return true;
    const QStringList parts = trimmed.split(u',');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString part = parts.at(i).trimmed();
        if (part.isEmpty() && i == parts.size() - 1)
            break; // a trailing comma
        quint32 byte = 0;
        if (!parseHexNumber(part, 2, byte))
            return false;
        bytes.append(char(byte));
    }
    return true;
}

QString textFromBytes(const QByteArray &bytes, bool utf16)
{
    if (utf16) {
        QStringDecoder decoder(QStringConverter::Utf16LE, QStringConverter::Flag::Stateless);
        QString text = decoder.decode(bytes);
        while (text.endsWith(QChar(u'\0')))
            text.chop(1);
        return text;
    }
    QByteArray trimmed = bytes;
    while (trimmed.endsWith('\0'))
        trimmed.chop(1);
    // Ours are UTF-8; one that regedit exported on a Chinese system is in the code page.
    return CodePage::system().decodeServerFile(trimmed);
}

// Turns the bytes of hex(N) data into a value; fails only for a number of the wrong size.
bool valueFromHex(quint32 type, const QByteArray &bytes, bool utf16, RegistryHive::Value &value)
{
    value = {};
    value.type = type;
    switch (type) {
    case RegistryType::String:
    case RegistryType::ExpandString:
        value.text = textFromBytes(bytes, utf16);
        return true;
    case RegistryType::DWord:
        if (bytes.size() != 4)
            return false;
        value.number = quint32(quint8(bytes.at(0))) | quint32(quint8(bytes.at(1))) << 8
            | quint32(quint8(bytes.at(2))) << 16 | quint32(quint8(bytes.at(3))) << 24;
        return true;
    case RegistryType::MultiString:
        if (utf16) {
            // Kept as this store keeps every text: UTF-8.
            QStringDecoder decoder(QStringConverter::Utf16LE, QStringConverter::Flag::Stateless);
            value.raw = QString(decoder.decode(bytes)).toUtf8();
            return true;
        }
        value.raw = bytes;
        return true;
    default:
        value.raw = bytes;
        return true;
    }
}

void appendHexValue(QByteArray &out, const QByteArray &prefix, const QByteArray &bytes)
{
    QByteArray line = prefix;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        QByteArray piece = QByteArray(1, bytes.at(i)).toHex();
        if (i + 1 < bytes.size())
            piece += ',';
        if (i > 0 && line.size() + piece.size() > HexLineWidth - 1) {
            out += line + '\\' + LineEnd;
            line = "  ";
        }
        line += piece;
    }
    out += line + LineEnd;
}

void appendValue(QByteArray &out, const RegistryKey::NamedValue &entry)
{
    const QByteArray name = entry.name.isEmpty() ? QByteArray("@") : quoted(entry.name).toUtf8();
    const RegistryHive::Value &value = entry.value;
    switch (value.type) {
    case RegistryType::String:
        if (!hasLineBreakOrZero(value.text)) {
            out += name + '=' + quoted(value.text).toUtf8() + LineEnd;
            return;
        }
        // A line break cannot stand inside a quoted string of this format.
        appendHexValue(out, name + "=hex(1):", value.text.toUtf8() + '\0');
        return;
    case RegistryType::ExpandString:
        appendHexValue(out, name + "=hex(2):", value.text.toUtf8() + '\0');
        return;
    case RegistryType::DWord:
        out += name + "=dword:" + QByteArray::number(value.number, 16).rightJustified(8, '0')
            + LineEnd;
        return;
    case RegistryType::Binary:
        appendHexValue(out, name + "=hex:", value.raw);
        return;
    default:
        appendHexValue(out, name + "=hex(" + QByteArray::number(value.type, 16) + "):", value.raw);
        return;
    }
}

void appendKey(QByteArray &out, const RegistryKey &key, const QString &path, bool isRoot)
{
    if (!isRoot || !key.values().empty()) {
        out += '[' + path.toUtf8() + ']' + LineEnd;
        for (const RegistryKey::NamedValue &entry : key.values())
            appendValue(out, entry);
        out += LineEnd;
    }
    for (const RegistryKey &child : key.children())
        appendKey(out, child, path + u'\\' + child.name(), false);
}

class Parser
{
public:
    Parser(QStringList lines, QString rootName)
        : m_lines(std::move(lines))
        , m_rootName(std::move(rootName))
        , m_root(m_rootName)
    { }

    RegEditFormat::ParseResult run()
    {
        RegEditFormat::ParseResult result;
        if (parse()) {
            result.ok = true;
            result.root = std::move(m_root);
            result.skipped = std::move(m_skipped);
        } else {
            result.errorLine = m_errorLine;
            result.errorReason = m_errorReason;
        }
        return result;
    }

private:
    bool fail(qsizetype index, const QString &reason)
    {
        m_errorLine = int(index + 1);
        m_errorReason = reason;
        return false;
    }

    // A damaged line is left out and the rest of the file read; the hive
    // then refuses writes, so the file keeps the line for someone to mend.
    bool skip(qsizetype index, const QString &reason)
    {
        m_skipped.append({ int(index + 1), reason });
        return false;
    }

    // A damaged value line whose name could be read: an earlier line's value
    // of that name does not stand in for it, the value reads as missing.
    bool skipValue(qsizetype index, const QString &name, const QString &reason)
    {
        m_current->removeValue(name);
        return skip(index, reason);
    }

    bool parse()
    {
        qsizetype i = 0;
        while (i < m_lines.size() && m_lines.at(i).trimmed().isEmpty())
            ++i;
        if (i == m_lines.size())
            return true; // an empty file is an empty hive
        const QString header = m_lines.at(i).trimmed();
        if (header == Regedit5Header)
            m_utf16 = true;
        else if (header != Regedit4Header)
            return fail(i, u"the first line is not \"REGEDIT4\""_s);

        for (++i; i < m_lines.size(); ++i) {
            const QString line = m_lines.at(i).trimmed();
            if (line.isEmpty() || line.startsWith(u';'))
                continue;
            if (line.startsWith(u'[')) {
                if (!parseKeyLine(line, i)) {
                    // Its values cannot be told from another key's.
                    m_current = nullptr;
                    m_inDeletedKey = true;
                }
            } else {
                parseValueLine(line, i);
            }
        }
        return true;
    }

    bool parseKeyLine(const QString &line, qsizetype index)
    {
        if (!line.endsWith(u']'))
            return skip(index, u"a key line must end with ']'"_s);
        const QString inner = line.mid(1, line.size() - 2);
        if (inner.startsWith(u'-')) {
            // An import file's "delete this key": in a hive it simply is not there.
            m_current = nullptr;
            m_inDeletedKey = true;
            return true;
        }
        const QStringList parts = inner.split(u'\\');
        if (parts.first().compare(m_rootName, Qt::CaseInsensitive) != 0)
            return skip(index, u"the key is not below %1"_s.arg(m_rootName));
        // Checked whole first: a skipped line makes no key.
        for (qsizetype p = 1; p < parts.size(); ++p) {
            if (!RegEditFormat::isValidKeyName(parts.at(p))) {
                return skip(index,
                    parts.at(p).isEmpty() ? u"empty key name"_s
                                          : u"key name longer than 255 characters"_s);
            }
        }
        RegistryKey *key = &m_root;
        for (qsizetype p = 1; p < parts.size(); ++p)
            key = &key->ensureChild(parts.at(p));
        m_current = key;
        m_inDeletedKey = false;
        return true;
    }

    // index moves on over continuation lines of hex data.
    bool parseValueLine(const QString &line, qsizetype &index)
    {
        const qsizetype first = index;
        if (!m_current) {
            if (m_inDeletedKey)
                return true;
            return skip(first, u"a value before the first key"_s);
        }

        qsizetype pos = 0;
        QString name; // empty, from @ or "", is the default value
        if (line.startsWith(u'@')) {
            pos = 1;
        } else if (line.startsWith(u'"')) {
            if (!parseQuoted(line, pos, name))
                return skip(first, u"the value name has no closing quote"_s);
        } else {
            return skip(first, u"expected a key in [...] or a value \"Name\"=..."_s);
        }
        skipSpaces(line, pos);
        if (pos >= line.size() || line.at(pos) != u'=')
            return skipValue(first, name, u"expected '=' after the value name"_s);
        ++pos;
        skipSpaces(line, pos);
        const QString data = line.mid(pos);

        RegistryHive::Value value;
        if (data.startsWith(u'"')) {
            qsizetype end = 0;
            if (!parseQuoted(data, end, value.text))
                return skipValue(first, name, u"the string has no closing quote"_s);
            if (!QStringView(data).mid(end).trimmed().isEmpty())
                return skipValue(first, name, u"text after the closing quote"_s);
            // Trailing NULs are the string's terminator, as in hex(1) data:
            // kept, the value would read back shorter after a save.
            while (value.text.endsWith(QChar(u'\0')))
                value.text.chop(1);
            value.type = RegistryType::String;
        } else if (data == u"-") {
            m_current->removeValue(name); // "delete this value", as in an import file
            return true;
        } else if (data.startsWith(u"dword:", Qt::CaseInsensitive)) {
            value.type = RegistryType::DWord;
            if (!parseHexNumber(QStringView(data).mid(6).trimmed(), 8, value.number))
                return skipValue(first, name, u"a dword needs 1 to 8 hex digits"_s);
        } else if (data.startsWith(u"hex", Qt::CaseInsensitive)) {
            quint32 type = RegistryType::Binary;
            const qsizetype colon = data.indexOf(u':');
            if (colon < 0)
                return skipValue(first, name, u"hex data needs a ':'"_s);
            const QStringView kind = QStringView(data).mid(3, colon - 3);
            if (!kind.isEmpty()
                && (!kind.startsWith(u'(') || !kind.endsWith(u')')
                    || !parseHexNumber(kind.mid(1, kind.size() - 2), 8, type))) {
                return skipValue(first, name, u"expected hex: or hex(N):"_s);
            }
            QString bytesText = data.mid(colon + 1).trimmed();
            while (bytesText.endsWith(u'\\')) {
                bytesText.chop(1);
                if (++index >= m_lines.size())
                    return skipValue(
                        first, name, u"the hex data continues past the end of the file"_s);
                bytesText += m_lines.at(index).trimmed();
            }
            QByteArray bytes;
            if (!parseHexBytes(bytesText, bytes))
                return skipValue(first, name, u"hex data must be hex bytes separated by commas"_s);
            if (!valueFromHex(type, bytes, m_utf16, value))
                return skipValue(first, name, u"hex(4) data must be 4 bytes"_s);
        } else {
            return skipValue(
                first, name, u"unknown value data (expected \"text\", dword: or hex)"_s);
        }
        m_current->setValue(name, value);
        return true;
    }

    QStringList m_lines;
    QString m_rootName;
    RegistryKey m_root;
    RegistryKey *m_current = nullptr;
    bool m_inDeletedKey = false;
    bool m_utf16 = false;
    QList<RegEditFormat::Skipped> m_skipped;
    int m_errorLine = 0;
    QString m_errorReason;
};

} // namespace

RegEditFormat::ParseResult RegEditFormat::parse(QByteArrayView bytes, const QString &rootName)
{
    const QString text = CodePage::system().decodeServerFile(bytes);
    QStringList lines = text.split(u'\n');
    for (QString &line : lines) {
        if (line.endsWith(u'\r'))
            line.chop(1);
    }
    return Parser(std::move(lines), rootName).run();
}

QByteArray RegEditFormat::serialize(const RegistryKey &root, const QString &rootName)
{
    QByteArray out = Regedit4Header.toUtf8() + LineEnd + LineEnd;
    appendKey(out, root, rootName, true);
    return out;
}

bool RegEditFormat::isValidKeyName(QStringView name)
{
    return !name.isEmpty() && name.size() <= MaxKeyNameLength && !name.contains(u'\\')
        && !hasLineBreakOrZero(name);
}

bool RegEditFormat::isValidValueName(QStringView name)
{
    return name.size() <= MaxValueNameLength && !hasLineBreakOrZero(name);
}
