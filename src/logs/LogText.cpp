#include "LogText.h"

#include <cstring>

namespace {

constexpr QByteArrayView Utf8Bom("\xEF\xBB\xBF");
constexpr QByteArrayView Utf16LeBom("\xFF\xFE");
constexpr QByteArrayView Utf16BeBom("\xFE\xFF");

} // namespace

bool LogText::isValidUtf8(QByteArrayView bytes, bool complete)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto *const end = p + bytes.size();
    while (p < end) {
        // Logs are mostly ASCII: step over it eight bytes at a time.
        while (end - p >= 8) {
            quint64 word;
            std::memcpy(&word, p, 8);
            if (word & 0x8080808080808080ULL)
                break;
            p += 8;
        }
        if (p >= end)
            break;
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int length;
        unsigned char low = 0x80, high = 0xBF;
        if (c >= 0xC2 && c <= 0xDF) {
            length = 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            length = 3;
            if (c == 0xE0)
                low = 0xA0;
            else if (c == 0xED)
                high = 0x9F; // no surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            length = 4;
            if (c == 0xF0)
                low = 0x90;
            else if (c == 0xF4)
                high = 0x8F;
        } else {
            return false;
        }
        for (int k = 1; k < length; ++k) {
            if (p + k >= end)
                return !complete; // cut off by the end of what was read
            const unsigned char next = p[k];
            if (next < (k == 1 ? low : 0x80) || next > (k == 1 ? high : 0xBF))
                return false;
        }
        p += length;
    }
    return true;
}

LogTextEncoding LogText::prepare(QByteArray &bytes, bool complete)
{
    QByteArrayView view(bytes);
    std::optional<QByteArray> converted;
    const LogTextEncoding encoding = prepare(view, converted, complete);
    if (converted)
        bytes = std::move(*converted);
    else if (view.size() != bytes.size())
        bytes.remove(0, bytes.size() - view.size());
    return encoding;
}

LogTextEncoding LogText::prepare(
    QByteArrayView &bytes, std::optional<QByteArray> &converted, bool complete)
{
    if (bytes.startsWith(Utf8Bom)) {
        bytes = bytes.sliced(Utf8Bom.size());
        return LogTextEncoding::Utf8;
    }
    if (bytes.startsWith(Utf16LeBom) || bytes.startsWith(Utf16BeBom)) {
        QStringDecoder decoder(
            bytes.startsWith(Utf16LeBom) ? QStringConverter::Utf16LE : QStringConverter::Utf16BE,
            QStringConverter::Flag::Stateless);
        converted = QString(decoder.decode(bytes.sliced(2))).toUtf8();
        bytes = *converted;
        return LogTextEncoding::Utf8;
    }
    return isValidUtf8(bytes, complete) ? LogTextEncoding::Utf8 : LogTextEncoding::CodePage;
}

LogTextDecoder::LogTextDecoder(const CodePage &codePage)
    : m_codePage(codePage)
    , m_decoder(codePage.name().constData(), QStringConverter::Flag::Stateless)
{ }

QString LogTextDecoder::decode(QByteArrayView bytes, LogTextEncoding encoding) const
{
    if (encoding == LogTextEncoding::Utf8 || !m_decoder.isValid())
        return QString::fromUtf8(bytes);
    bool ascii = true;
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii)
        return QString::fromLatin1(bytes);
    m_decoder.resetState();
    return m_decoder.decode(bytes);
}
