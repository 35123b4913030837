#include "RtfReader.h"

#include <algorithm>
#include <QHash>
#include <QStringDecoder>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Sizes beyond this are typing slips or hostile input; 200 pt still shows.
constexpr int MaxHalfPoints = 400;
// "\ucN" larger than this would swallow whole messages after every "\u".
constexpr int MaxFallbackCharacters = 16;

enum class Destination { Text, Skip, FontTable, ColorTable };

struct GroupState
{
    Destination destination = Destination::Text;
    RtfCharFormat format;
    int font = -1;
    int fallbackCharacters = 1; // \ucN
    RtfParagraph::Alignment alignment = RtfParagraph::Alignment::Left;
};

struct Font
{
    QString name;
    QByteArray codePage; // empty: the document's
};

bool isLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

int hexValue(QChar c)
{
    if (isDigit(c))
        return c.unicode() - u'0';
    if (c >= u'a' && c <= u'f')
        return c.unicode() - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c.unicode() - u'A' + 10;
    return -1;
}

bool knownCodePage(const QByteArray &name)
{
    return QStringDecoder(name.constData()).isValid();
}

QByteArray codePageOfAnsiCodePage(qint64 number)
{
    QByteArray name;
    switch (number) {
    case 936:
        name = "GBK";
        break;
    case 54936:
        name = "GB18030";
        break;
    case 950:
        name = "Big5";
        break;
    case 932:
        name = "Shift_JIS";
        break;
    case 949:
        name = "windows-949";
        break;
    case 874:
        name = "windows-874";
        break;
    case 65001:
        name = "UTF-8";
        break;
    default:
        if (number >= 1250 && number <= 1258)
            name = "windows-" + QByteArray::number(number);
        break;
    }
    return !name.isEmpty() && knownCodePage(name) ? name : QByteArray();
}

// Only the East Asian character sets name a code page that differs from the
// text's own in practice; clients write "\fcharset0" over GBK bytes as well.
QByteArray codePageOfCharset(qint64 charset)
{
    switch (charset) {
    case 128:
        return codePageOfAnsiCodePage(932);
    case 129:
        return codePageOfAnsiCodePage(949);
    case 134:
        return codePageOfAnsiCodePage(936);
    case 136:
        return codePageOfAnsiCodePage(950);
    default:
        return {};
    }
}

const QHash<QString, Destination> &destinations()
{
    static const QHash<QString, Destination> words = [] {
        QHash<QString, Destination> map {
            { u"fonttbl"_s, Destination::FontTable },
            { u"colortbl"_s, Destination::ColorTable },
        };
        for (const QString &word : { u"stylesheet"_s, u"info"_s, u"pict"_s, u"object"_s,
                 u"header"_s, u"headerl"_s, u"headerr"_s, u"headerf"_s, u"footer"_s, u"footerl"_s,
                 u"footerr"_s, u"footerf"_s, u"footnote"_s, u"fldinst"_s, u"themedata"_s,
                 u"colorschememapping"_s, u"latentstyles"_s, u"datastore"_s, u"xmlnstbl"_s,
                 u"listtable"_s, u"listoverridetable"_s, u"rsidtbl"_s, u"generator"_s,
                 u"nonshppict"_s, u"filetbl"_s, u"revtbl"_s, u"pgdsctbl"_s, u"bkmkstart"_s,
                 u"bkmkend"_s, u"xe"_s, u"tc"_s, u"txe"_s, u"objdata"_s, u"result"_s })
            map.insert(word, Destination::Skip);
        return map;
    }();
    return words;
}

const QHash<QString, QChar> &specialCharacters()
{
    static const QHash<QString, QChar> words {
        { u"line"_s, u'\n' },
        { u"tab"_s, u'\t' },
        { u"cell"_s, u'\t' },
        { u"emdash"_s, QChar(0x2014) },
        { u"endash"_s, QChar(0x2013) },
        { u"emspace"_s, QChar(0x2003) },
        { u"enspace"_s, QChar(0x2002) },
        { u"qmspace"_s, QChar(0x2005) },
        { u"bullet"_s, QChar(0x2022) },
        { u"lquote"_s, QChar(0x2018) },
        { u"rquote"_s, QChar(0x2019) },
        { u"ldblquote"_s, QChar(0x201C) },
        { u"rdblquote"_s, QChar(0x201D) },
    };
    return words;
}

class Parser
{
public:
    Parser(QStringView input, const CodePage &codePage)
        : m_input(input)
        , m_documentCodePage(codePage.name())
    { }

    RtfDocument run()
    {
        while (m_pos < m_input.size()) {
            const QChar c = m_input[m_pos];
            if (c == u'{') {
                ++m_pos;
                openGroup();
            } else if (c == u'}') {
                ++m_pos;
                closeGroup();
            } else if (c == u'\\') {
                ++m_pos;
                readControl();
            } else {
                ++m_pos;
                // Line ends in rich text only wrap the source; NUL is never text.
                if (c == u'\r' || c == u'\n' || c.isNull())
                    continue;
                m_atGroupStart = false;
                if (m_fallbackToSkip > 0) {
                    --m_fallbackToSkip;
                    continue;
                }
                flushBytes();
                appendText(c);
            }
        }
        flushBytes();
        if (!m_paragraph.runs.isEmpty())
            endParagraph();
        return std::move(m_document);
    }

private:
    void openGroup()
    {
        flushBytes();
        m_fallbackToSkip = 0;
        m_atGroupStart = true;
        if (m_stack.size() >= RtfReader::MaxDepth) {
            ++m_overflow;
            return;
        }
        m_stack.append(m_state);
    }

    void closeGroup()
    {
        flushBytes();
        m_fallbackToSkip = 0;
        m_atGroupStart = false;
        if (m_overflow > 0) {
            --m_overflow;
            return;
        }
        // A closing brace too many is dropped; the text after it still shows.
        if (m_stack.isEmpty())
            return;
        if (m_state.destination == Destination::FontTable)
            commitFont();
        m_state = m_stack.takeLast();
    }

    void readControl()
    {
        const bool groupStart = std::exchange(m_atGroupStart, false);
        if (m_pos >= m_input.size())
            return;
        const QChar first = m_input[m_pos];
        if (!isLetter(first)) {
            ++m_pos;
            controlSymbol(first, groupStart);
            return;
        }
        const qsizetype start = m_pos;
        while (m_pos < m_input.size() && isLetter(m_input[m_pos]))
            ++m_pos;
        const QStringView word = m_input.sliced(start, m_pos - start);
        bool negative = false;
        if (m_pos + 1 < m_input.size() && m_input[m_pos] == u'-' && isDigit(m_input[m_pos + 1])) {
            negative = true;
            ++m_pos;
        }
        bool hasParameter = false;
        qint64 parameter = 0;
        int digits = 0;
        while (m_pos < m_input.size() && isDigit(m_input[m_pos])) {
            // Digits past the tenth are read and dropped: no overflow.
            if (digits++ < 10)
                parameter = parameter * 10 + (m_input[m_pos].unicode() - u'0');
            hasParameter = true;
            ++m_pos;
        }
        if (negative)
            parameter = -parameter;
        if (m_pos < m_input.size() && m_input[m_pos] == u' ')
            ++m_pos;
        controlWord(word, hasParameter, parameter);
    }

    void controlSymbol(QChar symbol, bool groupStart)
    {
        if (symbol == u'\'') {
            int byte = -1;
            if (m_pos + 1 < m_input.size()) {
                const int high = hexValue(m_input[m_pos]);
                const int low = hexValue(m_input[m_pos + 1]);
                if (high >= 0 && low >= 0) {
                    byte = high * 16 + low;
                    m_pos += 2;
                }
            }
            if (byte < 0)
                return;
            if (m_fallbackToSkip > 0) {
                --m_fallbackToSkip;
                return;
            }
            // Bytes gather until something else comes: a GBK character is two of them.
            m_bytes.append(char(byte));
            return;
        }
        if (symbol == u'*' && groupStart) {
            flushBytes();
            m_state.destination = Destination::Skip;
            return;
        }
        if (m_fallbackToSkip > 0) {
            --m_fallbackToSkip;
            return;
        }
        flushBytes();
        switch (symbol.unicode()) {
        case u'\\':
        case u'{':
        case u'}':
            appendText(symbol);
            break;
        case u'~':
            appendText(QChar(0x00A0));
            break;
        case u'_':
            appendText(QChar(0x2011));
            break;
        case u'\r':
        case u'\n':
            paragraphBreak();
            break;
        default:
            // "\-" (optional hyphen), "\:" and "\|" show nothing.
            break;
        }
    }

    void controlWord(QStringView word, bool hasParameter, qint64 parameter)
    {
        flushBytes();
        if (word == u"bin") {
            // Binary data follows; it is skipped whatever it holds, and a
            // length past the end simply ends the text.
            const qint64 length = hasParameter ? std::max<qint64>(parameter, 0) : 0;
            m_pos += std::min<qint64>(length, m_input.size() - m_pos);
            return;
        }
        if (m_fallbackToSkip > 0) {
            --m_fallbackToSkip;
            return;
        }
        if (word == u"u") {
            if (hasParameter) {
                // Values above 32767 are written negative.
                const qint64 code = parameter < 0 ? parameter + 65536 : parameter;
                if (code > 0 && code < 65536 && destinationShowsText())
                    appendText(QChar(char16_t(code)));
            }
            m_fallbackToSkip = m_state.fallbackCharacters;
            return;
        }
        if (const auto destination = destinations().constFind(word.toString());
            destination != destinations().cend()) {
            if (m_state.destination != Destination::Skip)
                m_state.destination = *destination;
            if (*destination == Destination::ColorTable)
                m_colorComponents.reset();
            return;
        }
        switch (m_state.destination) {
        case Destination::Skip:
            return;
        case Destination::FontTable:
            fontTableWord(word, hasParameter, parameter);
            return;
        case Destination::ColorTable:
            colorTableWord(word, parameter);
            return;
        case Destination::Text:
            textWord(word, hasParameter, parameter);
            return;
        }
    }

    void fontTableWord(QStringView word, bool hasParameter, qint64 parameter)
    {
        if (word == u"f" && hasParameter) {
            commitFont();
            m_fontNumber = int(std::clamp<qint64>(parameter, 0, 0xFFFF));
        } else if (word == u"fcharset") {
            m_fontCodePage = codePageOfCharset(parameter);
        }
    }

    void colorTableWord(QStringView word, qint64 parameter)
    {
        const quint32 value = quint32(std::clamp<qint64>(parameter, 0, 255));
        const int shift = word == u"red" ? 16 : word == u"green" ? 8 : word == u"blue" ? 0 : -1;
        if (shift < 0)
            return;
        quint32 rgb = m_colorComponents.value_or(0);
        rgb = (rgb & ~(0xFFu << shift)) | (value << shift);
        m_colorComponents = rgb;
    }

    void textWord(QStringView word, bool hasParameter, qint64 parameter)
    {
        const bool on = !hasParameter || parameter != 0;
        RtfCharFormat &format = m_state.format;
        if (word == u"b") {
            format.bold = on;
        } else if (word == u"i") {
            format.italic = on;
        } else if (word == u"strike" || word == u"striked") {
            format.strikeOut = on;
        } else if (word == u"ulnone") {
            format.underline = false;
        } else if (word.startsWith(u"ul") && word != u"ulc") {
            format.underline = on;
        } else if (word == u"fs") {
            format.halfPoints = int(std::clamp<qint64>(parameter, 0, MaxHalfPoints));
        } else if (word == u"cf") {
            format.color = colorAt(parameter);
        } else if (word == u"cb" || word == u"highlight") {
            format.background = colorAt(parameter);
        } else if (word == u"f") {
            setFont(parameter);
        } else if (word == u"plain") {
            format = RtfCharFormat();
            setFont(m_defaultFont);
        } else if (word == u"pard") {
            m_state.alignment = RtfParagraph::Alignment::Left;
        } else if (word == u"ql") {
            m_state.alignment = RtfParagraph::Alignment::Left;
        } else if (word == u"qc") {
            m_state.alignment = RtfParagraph::Alignment::Center;
        } else if (word == u"qr") {
            m_state.alignment = RtfParagraph::Alignment::Right;
        } else if (word == u"qj") {
            m_state.alignment = RtfParagraph::Alignment::Justify;
        } else if (word == u"uc") {
            m_state.fallbackCharacters
                = int(std::clamp<qint64>(parameter, 0, MaxFallbackCharacters));
        } else if (word == u"par" || word == u"sect" || word == u"page" || word == u"row") {
            paragraphBreak();
        } else if (word == u"ansicpg") {
            if (const QByteArray name = codePageOfAnsiCodePage(parameter); !name.isEmpty())
                m_documentCodePage = name;
        } else if (word == u"deff") {
            m_defaultFont = int(std::clamp<qint64>(parameter, -1, 0xFFFF));
        } else if (const auto special = specialCharacters().constFind(word.toString());
                   special != specialCharacters().cend()) {
            appendText(*special);
        }
        // Every other word (page layout, styles, revision marks ...) changes nothing shown.
    }

    void setFont(qint64 number)
    {
        const auto font = m_fonts.constFind(int(std::clamp<qint64>(number, -1, 0xFFFF)));
        m_state.font = font == m_fonts.cend() ? -1 : font.key();
        m_state.format.fontFamily = font == m_fonts.cend() ? QString() : font->name;
    }

    std::optional<quint32> colorAt(qint64 index) const
    {
        if (index < 0 || index >= m_colors.size())
            return std::nullopt;
        return m_colors.at(index);
    }

    bool destinationShowsText() const { return m_state.destination != Destination::Skip; }

    QByteArray bytesCodePage() const
    {
        if (m_state.destination == Destination::FontTable && !m_fontCodePage.isEmpty())
            return m_fontCodePage;
        if (m_state.destination == Destination::Text && m_state.font >= 0) {
            const QByteArray own = m_fonts.value(m_state.font).codePage;
            if (!own.isEmpty())
                return own;
        }
        return m_documentCodePage;
    }

    void flushBytes()
    {
        if (m_bytes.isEmpty())
            return;
        // A space after the bytes makes a cut-off double-byte character show
        // as a replacement character instead of vanishing.
        m_bytes.append(' ');
        QString text = CodePage(bytesCodePage()).decode(m_bytes);
        m_bytes.clear();
        if (text.endsWith(u' '))
            text.chop(1);
        for (QChar c : text)
            appendText(c);
    }

    void appendText(QChar c)
    {
        switch (m_state.destination) {
        case Destination::Skip:
            return;
        case Destination::FontTable:
            if (c == u';')
                commitFont();
            else if (m_fontNumber >= 0)
                m_fontName += c;
            return;
        case Destination::ColorTable:
            if (c == u';') {
                m_colors.append(m_colorComponents);
                m_colorComponents.reset();
            }
            return;
        case Destination::Text:
            break;
        }
        if (m_paragraph.runs.isEmpty() || m_paragraph.runs.constLast().format != m_state.format)
            m_paragraph.runs.append(RtfRun { QString(), m_state.format });
        m_paragraph.runs.last().text += c;
    }

    void commitFont()
    {
        if (m_fontNumber >= 0)
            m_fonts.insert(m_fontNumber, Font { m_fontName.trimmed(), m_fontCodePage });
        m_fontNumber = -1;
        m_fontName.clear();
        m_fontCodePage.clear();
    }

    void paragraphBreak()
    {
        if (m_state.destination == Destination::Text)
            endParagraph();
    }

    void endParagraph()
    {
        m_paragraph.alignment = m_state.alignment;
        m_document.paragraphs.append(std::exchange(m_paragraph, RtfParagraph()));
    }

    QStringView m_input;
    qsizetype m_pos = 0;
    QByteArray m_documentCodePage;

    GroupState m_state;
    QList<GroupState> m_stack;
    int m_overflow = 0; // groups opened past MaxDepth, not yet closed
    bool m_atGroupStart = false;
    int m_fallbackToSkip = 0;
    QByteArray m_bytes;

    QHash<int, Font> m_fonts;
    int m_defaultFont = -1;
    int m_fontNumber = -1;
    QString m_fontName;
    QByteArray m_fontCodePage;
    QList<std::optional<quint32>> m_colors;
    std::optional<quint32> m_colorComponents;

    RtfDocument m_document;
    RtfParagraph m_paragraph;
};

} // namespace

RtfReader::RtfReader(CodePage codePage)
    : m_codePage(std::move(codePage))
{ }

bool RtfReader::isRichText(QStringView text)
{
    return text.startsWith(u"{\\rtf1");
}

RtfDocument RtfReader::read(QStringView rtf) const
{
    return Parser(rtf, m_codePage).run();
}

QString RtfReader::toHtml(QStringView text) const
{
    if (isRichText(text))
        return read(text).toHtml();
    return RtfDocument::plainTextToHtml(text.toString());
}
