// libFuzzer entry for the rich-text reader: every input byte is one character,
// as a message decoded from a log file can hold any character.
#include "CodePage.h"
#include "RtfReader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString input
        = QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(size));
    static const RtfReader reader(CodePage("GBK"));
    const RtfDocument document = reader.read(input);
    const QString html = document.toHtml();
    if (document.plainText().size() > input.size() || html.isEmpty())
        __builtin_trap();
    return 0;
}
