#include "ProductVersion.h"

#include <cstring>
#include <optional>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QPair>

using namespace Qt::StringLiterals;

namespace {

// Every read is bounds-checked: the images come from the server folder and a
// truncated or hand-edited file must give "no version", never a crash.
class ByteReader
{
public:
    ByteReader(const QByteArray &data, bool bigEndian)
        : m_data(data)
        , m_bigEndian(bigEndian)
    { }

    bool has(quint64 offset, quint64 size) const
    {
        return offset <= quint64(m_data.size()) && size <= quint64(m_data.size()) - offset;
    }
    std::optional<quint64> read(quint64 offset, int size) const
    {
        if (!has(offset, quint64(size)))
            return std::nullopt;
        quint64 value = 0;
        for (int i = 0; i < size; ++i) {
            const quint64 byte = quint8(m_data.at(qsizetype(offset) + i));
            if (m_bigEndian)
                value = (value << 8) | byte;
            else
                value |= byte << (8 * i);
        }
        return value;
    }
    QByteArray bytes(quint64 offset, quint64 size) const
    {
        return has(offset, size) ? m_data.mid(qsizetype(offset), qsizetype(size)) : QByteArray();
    }

private:
    const QByteArray &m_data;
    bool m_bigEndian;
};

constexpr quint32 PackageMetadataNote = 0xcafe1a7e;

quint64 align4(quint64 value)
{
    return (value + 3) & ~quint64(3);
}

// The JSON of an "FDO" package-metadata note in a note section's bytes.
QString versionFromNotes(const QByteArray &notes, bool bigEndian)
{
    const ByteReader reader(notes, bigEndian);
    quint64 offset = 0;
    while (reader.has(offset, 12)) {
        const quint64 nameSize = *reader.read(offset, 4);
        const quint64 descSize = *reader.read(offset + 4, 4);
        const quint64 type = *reader.read(offset + 8, 4);
        const quint64 nameAt = offset + 12;
        const quint64 descAt = nameAt + align4(nameSize);
        if (!reader.has(nameAt, align4(nameSize)) || !reader.has(descAt, descSize))
            return {};
        if (type == PackageMetadataNote && reader.bytes(nameAt, nameSize) == QByteArray("FDO", 4)) {
            QByteArray json = reader.bytes(descAt, descSize);
            const qsizetype end = json.indexOf('\0');
            if (end >= 0)
                json.truncate(end);
            const QJsonDocument document = QJsonDocument::fromJson(json);
            if (!document.isObject())
                return {};
            return document.object().value(u"version"_s).toString();
        }
        offset = descAt + align4(descSize);
    }
    return {};
}

QString elfVersion(const QByteArray &image)
{
    const bool is64 = image.at(4) == 2;
    if (!is64 && image.at(4) != 1)
        return {};
    const bool bigEndian = image.at(5) == 2;
    if (!bigEndian && image.at(5) != 1)
        return {};
    const ByteReader r(image, bigEndian);
    const int word = is64 ? 8 : 4;
    const auto sectionTable = r.read(is64 ? 0x28 : 0x20, word);
    const auto entrySize = r.read(is64 ? 0x3A : 0x2E, 2);
    const auto count = r.read(is64 ? 0x3C : 0x30, 2);
    const auto namesIndex = r.read(is64 ? 0x3E : 0x32, 2);
    if (!sectionTable || !entrySize || !count || !namesIndex || *namesIndex >= *count
        || *entrySize < quint64(is64 ? 64 : 40))
        return {};

    struct Section
    {
        quint64 name = 0;
        quint64 type = 0;
        quint64 offset = 0;
        quint64 size = 0;
    };
    auto section = [&](quint64 index) -> std::optional<Section> {
        const quint64 at = *sectionTable + index * *entrySize;
        const auto name = r.read(at, 4);
        const auto type = r.read(at + 4, 4);
        const auto offset = r.read(at + (is64 ? 0x18 : 0x10), word);
        const auto size = r.read(at + (is64 ? 0x20 : 0x14), word);
        if (!name || !type || !offset || !size)
            return std::nullopt;
        return Section { *name, *type, *offset, *size };
    };
    const auto names = section(*namesIndex);
    if (!names || !r.has(names->offset, names->size))
        return {};
    const QByteArray nameTable = r.bytes(names->offset, names->size);
    constexpr quint64 NoteType = 7;
    for (quint64 i = 0; i < *count; ++i) {
        const auto s = section(i);
        if (!s)
            return {};
        if (s->type != NoteType || s->name >= quint64(nameTable.size()))
            continue;
        const char *name = nameTable.constData() + s->name;
        const qsizetype length = qstrnlen(name, size_t(nameTable.size() - qsizetype(s->name)));
        if (QByteArrayView(name, length) != QByteArrayView(".note.package"))
            continue;
        if (!r.has(s->offset, s->size))
            return {};
        return versionFromNotes(r.bytes(s->offset, s->size), bigEndian);
    }
    return {};
}

// The data of the first version resource (type 16) of a PE image.
QByteArray peVersionResource(const QByteArray &image)
{
    const ByteReader r(image, false);
    const auto peAt = r.read(0x3C, 4);
    if (!peAt || r.bytes(*peAt, 4) != QByteArray("PE\0\0", 4))
        return {};
    const quint64 coff = *peAt + 4;
    const auto sectionCount = r.read(coff + 2, 2);
    const auto optionalSize = r.read(coff + 16, 2);
    const quint64 optional = coff + 20;
    const auto magic = r.read(optional, 2);
    if (!sectionCount || !optionalSize || !magic)
        return {};
    const quint64 directories = optional + (*magic == 0x20B ? 112 : 96);
    const auto directoryCount = r.read(directories - 4, 4);
    if (!directoryCount || *directoryCount < 3)
        return {};
    const auto resourceRva = r.read(directories + 2 * 8, 4);
    if (!resourceRva || *resourceRva == 0)
        return {};

    const quint64 sections = optional + *optionalSize;
    auto fileOffset = [&](quint64 rva) -> std::optional<quint64> {
        for (quint64 i = 0; i < *sectionCount; ++i) {
            const quint64 at = sections + i * 40;
            const auto virtualSize = r.read(at + 8, 4);
            const auto virtualAddress = r.read(at + 12, 4);
            const auto rawSize = r.read(at + 16, 4);
            const auto rawOffset = r.read(at + 20, 4);
            if (!virtualSize || !virtualAddress || !rawSize || !rawOffset)
                return std::nullopt;
            const quint64 extent = qMax(*virtualSize, *rawSize);
            if (rva >= *virtualAddress && rva < *virtualAddress + extent)
                return *rawOffset + (rva - *virtualAddress);
        }
        return std::nullopt;
    };
    const auto root = fileOffset(*resourceRva);
    if (!root)
        return {};

    // Type, name, language: the first entry of each level below type 16.
    auto entryOf = [&](quint64 directory, std::optional<quint32> id) -> std::optional<quint64> {
        const auto named = r.read(directory + 12, 2);
        const auto ids = r.read(directory + 14, 2);
        if (!named || !ids)
            return std::nullopt;
        for (quint64 i = 0; i < *named + *ids; ++i) {
            const auto entryId = r.read(directory + 16 + i * 8, 4);
            const auto target = r.read(directory + 20 + i * 8, 4);
            if (!entryId || !target)
                return std::nullopt;
            if (!id || (!(*entryId & 0x80000000u) && *entryId == *id))
                return *target;
        }
        return std::nullopt;
    };
    quint64 directory = *root;
    std::optional<quint32> wanted = 16;
    for (int level = 0; level < 3; ++level) {
        const auto target = entryOf(directory, wanted);
        if (!target)
            return {};
        const bool isDirectory = *target & 0x80000000u;
        if (level < 2 && !isDirectory)
            return {};
        if (level == 2) {
            if (isDirectory)
                return {};
            const auto dataRva = r.read(*root + *target, 4);
            const auto dataSize = r.read(*root + *target + 4, 4);
            if (!dataRva || !dataSize)
                return {};
            const auto dataAt = fileOffset(*dataRva);
            return dataAt ? r.bytes(*dataAt, *dataSize) : QByteArray();
        }
        directory = *root + (*target & 0x7FFFFFFFu);
        wanted = std::nullopt;
    }
    return {};
}

// One block of a VS_VERSION_INFO tree: length, value length, type, key, value, children.
struct Block
{
    QString key;
    quint64 valueAt = 0;
    quint64 valueLength = 0; // words for text values, bytes otherwise
    bool text = false;
    quint64 childrenAt = 0;
    quint64 end = 0;
};

std::optional<Block> readBlock(const ByteReader &r, quint64 at, quint64 limit)
{
    const auto length = r.read(at, 2);
    const auto valueLength = r.read(at + 2, 2);
    const auto type = r.read(at + 4, 2);
    if (!length || !valueLength || !type || *length < 6 || at + *length > limit)
        return std::nullopt;
    Block block;
    block.end = at + *length;
    block.text = *type == 1;
    block.valueLength = *valueLength;
    quint64 p = at + 6;
    while (true) {
        const auto unit = r.read(p, 2);
        if (!unit || p + 2 > block.end)
            return std::nullopt;
        p += 2;
        if (*unit == 0)
            break;
        block.key.append(QChar(char16_t(*unit)));
    }
    block.valueAt = align4(p);
    const quint64 valueBytes = block.text ? block.valueLength * 2 : block.valueLength;
    block.childrenAt = align4(block.valueAt + valueBytes);
    if (block.valueAt + valueBytes > block.end)
        return std::nullopt;
    return block;
}

QList<Block> children(const ByteReader &r, const Block &parent)
{
    QList<Block> list;
    quint64 at = parent.childrenAt;
    while (at + 6 <= parent.end) {
        const auto child = readBlock(r, at, parent.end);
        if (!child)
            break;
        list.append(*child);
        at = align4(child->end);
    }
    return list;
}

QString textValue(const ByteReader &r, const Block &block)
{
    QString text;
    for (quint64 i = 0; i < block.valueLength; ++i) {
        const auto unit = r.read(block.valueAt + 2 * i, 2);
        if (!unit || *unit == 0)
            break;
        text.append(QChar(char16_t(*unit)));
    }
    return text;
}

} // namespace

namespace ProductVersion {

QString fromVersionResource(const QByteArray &versionInfo)
{
    const ByteReader r(versionInfo, false);
    const auto root = readBlock(r, 0, quint64(versionInfo.size()));
    if (!root)
        return {};
    const QList<Block> top = children(r, *root);

    QList<QPair<quint32, quint32>> translations;
    bool haveTranslation = false;
    for (const Block &block : top) {
        if (block.key != u"VarFileInfo"_s)
            continue;
        for (const Block &var : children(r, block)) {
            if (var.key != u"Translation"_s)
                continue;
            haveTranslation = true;
            for (quint64 i = 0; i + 4 <= var.valueLength; i += 4)
                translations.append({ quint32(*r.read(var.valueAt + i, 2)),
                    quint32(*r.read(var.valueAt + i + 2, 2)) });
        }
    }
    if (!haveTranslation)
        return {};

    for (const auto &[language, codePage] : std::as_const(translations)) {
        const QString tableName
            = u"%1%2"_s.arg(language, 4, 16, QChar(u'0')).arg(codePage, 4, 16, QChar(u'0'));
        for (const Block &block : top) {
            if (block.key != u"StringFileInfo"_s)
                continue;
            for (const Block &table : children(r, block)) {
                if (table.key.compare(tableName, Qt::CaseInsensitive) != 0)
                    continue;
                for (const Block &string : children(r, table)) {
                    if (string.key != u"ProductVersion"_s)
                        continue;
                    const QString value = textValue(r, string);
                    if (!value.isEmpty())
                        return value;
                }
            }
        }
    }
    return {};
}

QString fromImage(const QByteArray &image)
{
    if (image.size() >= 16
        && image.startsWith("\x7F"
                            "ELF"))
        return elfVersion(image);
    if (image.size() >= 64 && image.startsWith("MZ"))
        return fromVersionResource(peVersionResource(image));
    return {};
}

QString daemonVersionList(const QString &programDirectory)
{
    QString folder = programDirectory;
    while (folder.size() > 1 && (folder.endsWith(u'/') || folder.endsWith(u'\\')))
        folder.chop(1);
#ifdef Q_OS_WIN
    const QString suffix = u".exe"_s;
#else
    const QString suffix;
#endif
    struct Line
    {
        QString name;
        QString pattern;
    };
    const QString twoTabs = u"%1\t\t: %2\r\n"_s;
    const QString oneTab = u"%1\t: %2\r\n"_s;
    const QList<Line> lines = {
        { u"VelmarD"_s, twoTabs },
        { u"GroupD"_s, twoTabs },
        { u"RelayD"_s, twoTabs },
        { u"ChatD"_s, twoTabs },
        { u"FileDispatchD"_s, oneTab },
        { u"FileSessionD"_s, oneTab },
        { u"CheckD"_s, twoTabs },
        { u"VelmarboxServerManager"_s, u"VelmarBoxServer\t\t: %2\r\n"_s },
    };
    QString list = u"Service VerList\r\n"_s;
    for (const Line &line : lines) {
        const QString version = GetProductVersion(folder + u'/' + line.name + suffix);
        QString text = line.pattern;
        if (text.contains(u"%1"_s))
            text = text.arg(line.name, version);
        else
            text = text.arg(version);
        list += text;
    }
    return list;
}

} // namespace ProductVersion

QString GetProductVersion(const QString &path)
{
    const QString file = path.isEmpty() ? QCoreApplication::applicationFilePath() : path;
    QFile image(file);
    if (file.isEmpty() || !image.open(QIODevice::ReadOnly))
        return {};
    // Executables are read through a mapping; the parser checks every offset.
    const qint64 size = image.size();
    if (size <= 0)
        return {};
    uchar *mapped = image.map(0, size);
    if (mapped) {
        const QByteArray view
            = QByteArray::fromRawData(reinterpret_cast<const char *>(mapped), size);
        const QString version = ProductVersion::fromImage(view);
        image.unmap(mapped);
        return version;
    }
    return ProductVersion::fromImage(image.readAll());
}
