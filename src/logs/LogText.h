#pragma once

#include "CodePage.h"

#include <optional>
#include <QByteArray>
#include <QString>
#include <QStringDecoder>

// How a log file's bytes are text: by byte-order mark, else UTF-8 when the
// bytes are valid UTF-8, else the system code page. Readers keep lines as the
// file's own bytes and decode a cell only when it is shown.
enum class LogTextEncoding : quint8 { Utf8, CodePage };

class LogText
{
public:
    // Detects the encoding of bytes and rewrites them so that the line
    // readers can work on them: a UTF-8 mark is removed, UTF-16 (marked) is
    // converted to UTF-8. complete = false when bytes are only the beginning
    // of the file, so a character cut at the end does not count as invalid.
    static LogTextEncoding prepare(QByteArray &bytes, bool complete = true);
    // The same without a copy: bytes is narrowed past a UTF-8 mark, or set to
    // converted when UTF-16 had to be converted.
    static LogTextEncoding prepare(
        QByteArrayView &bytes, std::optional<QByteArray> &converted, bool complete = true);
    static bool isValidUtf8(QByteArrayView bytes, bool complete = true);
};

// Decodes pieces of log text; keeps one converter for the code page so that
// showing many cells does not build a converter per cell. Not thread-safe.
class LogTextDecoder final
{
public:
    explicit LogTextDecoder(const CodePage &codePage = CodePage::system());
    QString decode(QByteArrayView bytes, LogTextEncoding encoding) const;
    const CodePage &codePage() const { return m_codePage; }

private:
    CodePage m_codePage;
    mutable QStringDecoder m_decoder;
};
