// A notice's stored texts: the file list the panel shows and the escape
// markers of every stored text. Escaping then unescaping gives back any text
// without "VELMAR-" in it; one with a marker, or with part of one that an
// escaped character completes ("###VELMAR-SEMICOLON##\\"), cannot be told
// apart from escaped characters: the stored form has no escape for a marker.
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
    if (!text.contains(u"VELMAR-") && EscapeMarkers::unescape(EscapeMarkers::escape(text)) != text)
        __builtin_trap();
    return total == -1 ? 1 : 0;
}
