#pragma once

#include <QByteArray>
#include <QString>

// The system code page: GBK unless VELMAR_CODEPAGE names another. Every length
// the console counts in bytes (buffers, grid limits) is counted in it.
class CodePage
{
public:
    enum class FileEncoding { CodePage, Utf8, Utf8Bom, Utf16LeBom, Utf16BeBom };

    explicit CodePage(QByteArray name);
    // GBK, or the code page named by VELMAR_CODEPAGE.
    static CodePage system();

    QByteArray name() const { return m_name; }
    QByteArray encode(QStringView text) const;
    QString decode(QByteArrayView bytes) const;
    qsizetype byteLength(QStringView text) const;
    // The longest prefix of text whose encoding has at most maxBytes bytes;
    // a character is never split.
    QString truncatedToBytes(QStringView text, qsizetype maxBytes) const;

    // Files the server writes: by byte-order mark, else UTF-8 when valid, else this code page.
    QString decodeServerFile(QByteArrayView bytes, FileEncoding *detected = nullptr) const;
    QByteArray encodeServerFile(QStringView text, FileEncoding encoding) const;

private:
    QByteArray m_name;
};
