// The registry files of a server folder are REGEDIT4 text that administrators
// edit by hand: whatever parses must write back and parse to the same tree.
#include "RegEditFormat.h"

#include <cstddef>
#include <cstdint>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString root = u"HKEY_LOCAL_MACHINE"_s;
    const RegEditFormat::ParseResult first = RegEditFormat::parse(bytes, root);
    if (!first.ok)
        return 0;
    const QByteArray written = RegEditFormat::serialize(first.root, root);
    const RegEditFormat::ParseResult again = RegEditFormat::parse(written, root);
    if (!again.ok || !again.skipped.isEmpty()
        || RegEditFormat::serialize(again.root, root) != written)
        __builtin_trap();
    return 0;
}
