#include "CodePage.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <utility>

namespace {

constexpr QByteArrayView Utf8Bom("\xEF\xBB\xBF");
constexpr QByteArrayView Utf16LeBom("\xFF\xFE");
constexpr QByteArrayView Utf16BeBom("\xFE\xFF");

bool isAscii(QByteArrayView bytes)
{
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

bool isValidUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString decoded = decoder.decode(bytes);
    return !decoder.hasError();
}

} // namespace

CodePage::CodePage(QByteArray name)
    : m_name(std::move(name))
{ }

CodePage CodePage::system()
{
    const QByteArray configured = qgetenv("VELMAR_CODEPAGE").trimmed();
    if (!configured.isEmpty()) {
        if (QStringEncoder(configured.constData()).isValid())
            return CodePage(configured);
        // A mistyped name must not turn every byte count into a guess: stay on
        // the code page the server itself uses.
        qWarning(
            "VELMAR_CODEPAGE names an unknown code page \"%s\"; using GBK", configured.constData());
    }
    return CodePage("GBK");
}

QByteArray CodePage::encode(QStringView text) const
{
    QStringEncoder encoder(m_name.constData(), QStringConverter::Flag::Stateless);
    if (!encoder.isValid())
        return text.toUtf8(); // never drop text because the converter is missing
    // Characters the code page lacks become '?', as the system's own conversion does.
    return encoder.encode(text);
}

QString CodePage::decode(QByteArrayView bytes) const
{
    QStringDecoder decoder(m_name.constData(), QStringConverter::Flag::Stateless);
    if (!decoder.isValid())
        return QString::fromUtf8(bytes);
    return decoder.decode(bytes);
}

qsizetype CodePage::byteLength(QStringView text) const
{
    return encode(text).size();
}

QString CodePage::truncatedToBytes(QStringView text, qsizetype maxBytes) const
{
    if (maxBytes <= 0)
        return {};
    if (byteLength(text) <= maxBytes)
        return text.toString();

    // Walk whole code points (a surrogate pair is one character) so that a
    // two-byte character that does not fit is left out entirely.
    QStringEncoder encoder(m_name.constData(), QStringConverter::Flag::Stateless);
    qsizetype used = 0;
    qsizetype pos = 0;
    while (pos < text.size()) {
        qsizetype next = pos + 1;
        if (text.at(pos).isHighSurrogate() && next < text.size() && text.at(next).isLowSurrogate())
            ++next;
        const QStringView character = text.mid(pos, next - pos);
        const qsizetype bytes = encoder.isValid() ? QByteArray(encoder.encode(character)).size()
                                                  : character.toUtf8().size();
        if (used + bytes > maxBytes)
            break;
        used += bytes;
        pos = next;
    }
    return text.left(pos).toString();
}

QString CodePage::decodeServerFile(QByteArrayView bytes, FileEncoding *detected) const
{
    FileEncoding encoding = FileEncoding::CodePage;
    QString text;
    if (bytes.startsWith(Utf8Bom)) {
        encoding = FileEncoding::Utf8Bom;
        text = QString::fromUtf8(bytes.sliced(Utf8Bom.size()));
    } else if (bytes.startsWith(Utf16LeBom)) {
        encoding = FileEncoding::Utf16LeBom;
        QStringDecoder decoder(QStringConverter::Utf16LE, QStringConverter::Flag::Stateless);
        text = decoder.decode(bytes.sliced(Utf16LeBom.size()));
    } else if (bytes.startsWith(Utf16BeBom)) {
        encoding = FileEncoding::Utf16BeBom;
        QStringDecoder decoder(QStringConverter::Utf16BE, QStringConverter::Flag::Stateless);
        text = decoder.decode(bytes.sliced(Utf16BeBom.size()));
    } else if (!isAscii(bytes) && isValidUtf8(bytes)) {
        encoding = FileEncoding::Utf8;
        text = QString::fromUtf8(bytes);
    } else {
        // Plain ASCII reads the same either way; calling it the code page means a
        // file the server wrote in ASCII gets its first Chinese text in the code
        // page the server reads it with.
        text = decode(bytes);
    }
    if (detected)
        *detected = encoding;
    return text;
}

QByteArray CodePage::encodeServerFile(QStringView text, FileEncoding encoding) const
{
    switch (encoding) {
    case FileEncoding::CodePage:
        return encode(text);
    case FileEncoding::Utf8:
        return text.toUtf8();
    case FileEncoding::Utf8Bom:
        return Utf8Bom.toByteArray() + text.toUtf8();
    case FileEncoding::Utf16LeBom: {
        QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::Stateless);
        return Utf16LeBom.toByteArray() + QByteArray(encoder.encode(text));
    }
    case FileEncoding::Utf16BeBom: {
        QStringEncoder encoder(QStringConverter::Utf16BE, QStringConverter::Flag::Stateless);
        return Utf16BeBom.toByteArray() + QByteArray(encoder.encode(text));
    }
    }
    return encode(text);
}
