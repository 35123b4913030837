// Member data dropped from another program: the block under the member drag
// format, read as a drop on the member list reads it.
#include "MemberDragFormat.h"

#include <cstddef>
#include <cstdint>
#include <QMimeData>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QMimeData mime;
    mime.setData(MemberDragFormat::mimeType(),
        QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!MemberDragFormat::canDecode(&mime))
        return 0;
    const auto members = MemberDragFormat::fromMimeData(&mime);
    if (members && MemberDragFormat::decode(MemberDragFormat::encode(*members)) != members)
        __builtin_trap();
    return 0;
}
