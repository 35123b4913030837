// A notice's stored texts: the file list the panel shows and the escape
// markers of every stored text. Escaping then unescaping gives back any text
// that does not already hold a marker (one that does cannot be told apart
// from an escaped character: the stored form has no escape for a marker).
#include "EscapeMarkers.h"
#include "NoticeText.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    qsizetype total = 0;
    for (const QString &name : NoticeText::shownFileNames(text))
        total += name.size();
    total += NoticeText::unescapeStored(text).size() + NoticeText::unescapeForPanel(text).size();
    total += NoticeText::writtenForm(text).size() + NoticeText::endDateForm(text).size();
    total += NoticeText::isRichText(text);
    total += EscapeMarkers::unescape(text).size();
    const bool holdsMarker = text.contains(EscapeMarkers::Semicolon)
        || text.contains(EscapeMarkers::Quotation) || text.contains(EscapeMarkers::Backslash);
    if (!holdsMarker && EscapeMarkers::unescape(EscapeMarkers::escape(text)) != text)
        __builtin_trap();
    return total == -1 ? 1 : 0;
}
