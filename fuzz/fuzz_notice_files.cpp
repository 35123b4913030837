// A notice's stored texts: the file list the panel shows and the escape
// markers of every stored text. Escaping then unescaping gives the text back.
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
    if (EscapeMarkers::unescape(EscapeMarkers::escape(text)) != text)
        __builtin_trap();
    return total == -1 ? 1 : 0;
}
