#include "ProfileFile.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <QFile>
#include <QList>
#include <QSaveFile>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Line
{
    QString text;
    QString end; // "\r\n", "\n", or empty for a last line without one
};

// The file as lines, each with its own line end, so that a write changes the
// one line it means and leaves every other byte as it was.
struct Document
{
    QList<Line> lines;
    CodePage::FileEncoding encoding = CodePage::FileEncoding::CodePage;
    QString newLine = u"\r\n"_s; // what new lines end with: the file's own style
};

enum class LoadResult { Loaded, Missing, Unreadable };

LoadResult load(const QString &path, const CodePage &codePage, Document &document)
{
    QFile file(path);
    if (!file.exists())
        return LoadResult::Missing;
    if (!file.open(QIODevice::ReadOnly))
        return LoadResult::Unreadable;
    const QString text = codePage.decodeServerFile(file.readAll(), &document.encoding);

    bool endSeen = false;
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype newLine = text.indexOf(u'\n', start);
        Line line;
        if (newLine < 0) {
            line.text = text.mid(start);
            start = text.size();
        } else {
            const bool crlf = newLine > start && text.at(newLine - 1) == u'\r';
            line.text = text.mid(start, newLine - start - (crlf ? 1 : 0));
            line.end = crlf ? u"\r\n"_s : u"\n"_s;
            start = newLine + 1;
            if (!endSeen) {
                document.newLine = line.end;
                endSeen = true;
            }
        }
        document.lines.append(line);
    }
    return LoadResult::Loaded;
}

// A line that no editor writes: a '[' line without ']' (a header cut short),
// or control characters and undecodable bytes (a file half overwritten, the
// zeros a crash leaves at the end of a file). It is neither a section header
// nor a key, so it cannot move the keys after it into a section or be read
// as a value.
bool isDamaged(const QString &line)
{
    if (line.trimmed().startsWith(u';'))
        return false; // a comment may hold anything
    for (const QChar c : line) {
        if ((c.unicode() < 0x20 && c != u'\t') || c == QChar::ReplacementCharacter)
            return true;
    }
    const QString trimmed = line.trimmed();
    return trimmed.startsWith(u'[') && !trimmed.contains(u']');
}

// "[name]" after leading blanks; the name runs to the last ']' on the line.
std::optional<QString> sectionName(const QString &line)
{
    if (isDamaged(line))
        return std::nullopt;
    const QString trimmed = line.trimmed();
    if (!trimmed.startsWith(u'['))
        return std::nullopt;
    const qsizetype close = trimmed.lastIndexOf(u']');
    if (close < 0)
        return std::nullopt;
    return trimmed.mid(1, close - 1).trimmed();
}

// Any other line is a key: up to the first '=', or the whole line when it has
// none (such a key reads as empty). Comment lines are keys nobody asks for.
struct KeyLine
{
    QString key;
    QString value;
};

KeyLine keyLine(const QString &line)
{
    const qsizetype equals = line.indexOf(u'=');
    if (equals < 0)
        return { line.trimmed(), QString() };
    return { line.left(equals).trimmed(), line.mid(equals + 1).trimmed() };
}

bool sameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The first section of that name, as [first, end) line indexes (first is the
// header); nullopt when there is none. Later sections of the same name are
// never looked at, for reading or writing.
std::optional<std::pair<qsizetype, qsizetype>> findSection(
    const Document &document, const QString &section)
{
    const QList<Line> &lines = document.lines;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const std::optional<QString> name = sectionName(lines.at(i).text);
        if (!name || !sameName(*name, section))
            continue;
        qsizetype end = i + 1;
        while (end < lines.size() && !sectionName(lines.at(end).text))
            ++end;
        return std::make_pair(i, end);
    }
    return std::nullopt;
}

qsizetype findKey(
    const Document &document, std::pair<qsizetype, qsizetype> range, const QString &key)
{
    for (qsizetype i = range.first + 1; i < range.second; ++i) {
        if (!isDamaged(document.lines.at(i).text)
            && sameName(keyLine(document.lines.at(i).text).key, key))
            return i;
    }
    return -1;
}

std::optional<QString> lookUp(
    const QString &path, const CodePage &codePage, const QString &section, const QString &key)
{
    Document document;
    if (load(path, codePage, document) != LoadResult::Loaded)
        return std::nullopt;
    const auto range = findSection(document, section.trimmed());
    if (!range)
        return std::nullopt;
    const qsizetype index = findKey(document, *range, key.trimmed());
    if (index < 0)
        return std::nullopt;
    QString value = keyLine(document.lines.at(index).text).value;
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'')
        && value.back() == value.front()) {
        value = value.mid(1, value.size() - 2);
    }
    return value;
}

bool hasLineBreak(const QString &text)
{
    return text.contains(u'\n') || text.contains(u'\r');
}

bool store(const QString &path, const CodePage &codePage, const Document &document)
{
    QString text;
    for (const Line &line : document.lines)
        text += line.text + line.end;
    const QByteArray bytes = codePage.encodeServerFile(text, document.encoding);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size())
        return false; // the temporary file is discarded; the old file stays
    return file.commit();
}

bool isBlankOrComment(const QString &line)
{
    const QString trimmed = line.trimmed();
    return trimmed.isEmpty() || trimmed.startsWith(u';') || trimmed.startsWith(u'#');
}

} // namespace

ProfileFile::ProfileFile(QString path, CodePage codePage)
    : m_path(std::move(path))
    , m_codePage(std::move(codePage))
{ }

QString ProfileFile::readString(
    const QString &section, const QString &key, const QString &defaultValue, int bufferSize) const
{
    if (bufferSize <= 0)
        return {};
    QString value;
    if (const std::optional<QString> stored = lookUp(m_path, m_codePage, section, key)) {
        value = *stored;
    } else {
        // The system's reader drops trailing blanks of the default, too.
        value = defaultValue;
        while (!value.isEmpty() && value.back().isSpace())
            value.chop(1);
    }
    return m_codePage.truncatedToBytes(value, bufferSize - 1);
}

int ProfileFile::readInt(const QString &section, const QString &key, int defaultValue) const
{
    // An empty value counts as absent, as with the system's integer reader.
    const std::optional<QString> stored = lookUp(m_path, m_codePage, section, key);
    if (!stored || stored->isEmpty())
        return defaultValue;
    return parseDecimal(*stored);
}

bool ProfileFile::writeString(const QString &section, const QString &key, const QString &value)
{
    // Whatever would break the line structure cannot be written without
    // changing the meaning of the file, so it is refused.
    const QString trimmedSection = section.trimmed();
    const QString trimmedKey = key.trimmed();
    if (trimmedSection.isEmpty() || trimmedSection.contains(u']') || hasLineBreak(section)
        || trimmedKey.isEmpty() || trimmedKey.contains(u'=') || trimmedKey.startsWith(u'[')
        || hasLineBreak(key) || hasLineBreak(value)) {
        return false;
    }

    Document document;
    const LoadResult loaded = load(m_path, m_codePage, document);
    if (loaded == LoadResult::Unreadable)
        return false;
    // A file this reader could not fully read is not rewritten until the
    // administrator agreed to keep its damaged lines as comments: they may be
    // what someone still needs.
    if (std::any_of(document.lines.cbegin(), document.lines.cend(),
            [](const Line &line) { return isDamaged(line.text); })) {
        return false;
    }
    if (loaded == LoadResult::Loaded) {
        // A read-only file stays as it is, as with the system's writer; the
        // rename below would otherwise replace it regardless.
        QFile probe(m_path);
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Append))
            return false;
    }

    QList<Line> &lines = document.lines;
    const auto range = findSection(document, trimmedSection);
    if (range) {
        const qsizetype index = findKey(document, *range, trimmedKey);
        if (index >= 0) {
            // The key keeps the spelling it has in the file.
            lines[index].text = keyLine(lines.at(index).text).key + u'=' + value;
        } else {
            // After the section's last entry, so blank lines and comments that
            // lead into the next section stay in front of it.
            qsizetype last = range->first;
            for (qsizetype i = range->first + 1; i < range->second; ++i) {
                if (!isBlankOrComment(lines.at(i).text))
                    last = i;
            }
            Line added { trimmedKey + u'=' + value, document.newLine };
            if (lines.at(last).end.isEmpty()) {
                lines[last].end = document.newLine;
                added.end.clear(); // the file still ends without a line end
            }
            lines.insert(last + 1, added);
        }
    } else {
        if (!lines.isEmpty()) {
            if (lines.last().end.isEmpty())
                lines.last().end = document.newLine;
            if (!lines.last().text.trimmed().isEmpty())
                lines.append({ QString(), document.newLine });
        }
        lines.append({ u'[' + trimmedSection + u']', document.newLine });
        lines.append({ trimmedKey + u'=' + value, document.newLine });
    }

    return store(m_path, m_codePage, document);
}

QList<ProfileFile::Damage> ProfileFile::damagedLines() const
{
    QList<Damage> damaged;
    Document document;
    if (load(m_path, m_codePage, document) != LoadResult::Loaded)
        return damaged;
    for (qsizetype i = 0; i < document.lines.size(); ++i) {
        if (isDamaged(document.lines.at(i).text))
            damaged.append({ int(i + 1), document.lines.at(i).text });
    }
    return damaged;
}

bool ProfileFile::commentOutDamagedLines()
{
    Document document;
    if (load(m_path, m_codePage, document) != LoadResult::Loaded)
        return false;
    bool changed = false;
    for (Line &line : document.lines) {
        if (!isDamaged(line.text))
            continue;
        // Kept as a comment, so that nothing of it is lost; control
        // characters become '?'.
        QString text = line.text;
        for (QChar &c : text) {
            if (c.unicode() < 0x20 && c != u'\t')
                c = u'?';
        }
        line.text = u";"_s + text;
        changed = true;
    }
    if (!changed)
        return true;
    return store(m_path, m_codePage, document);
}

int ProfileFile::parseDecimal(QStringView text)
{
    qsizetype pos = 0;
    while (pos < text.size() && text.at(pos).isSpace())
        ++pos;
    bool negative = false;
    if (pos < text.size() && (text.at(pos) == u'-' || text.at(pos) == u'+')) {
        negative = text.at(pos) == u'-';
        ++pos;
    }
    // Out-of-range numbers stop at the limits instead of wrapping around.
    constexpr qint64 limit = qint64(std::numeric_limits<int>::max()) + 1;
    qint64 result = 0;
    for (; pos < text.size(); ++pos) {
        const QChar c = text.at(pos);
        if (c < u'0' || c > u'9')
            break;
        result = std::min(result * 10 + (c.unicode() - '0'), limit);
    }
    if (negative)
        return int(std::max(-result, qint64(std::numeric_limits<int>::min())));
    return int(std::min(result, qint64(std::numeric_limits<int>::max())));
}
