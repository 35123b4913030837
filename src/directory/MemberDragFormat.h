#pragma once

#include <optional>
#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

class QMimeData;

// A member dragged from a member grid: its id and whether the gender cell
// read "男生" (the membership icon follows it).
struct DraggedMember
{
    qint32 id = 0;
    bool male = true;

    friend bool operator==(const DraggedMember &, const DraggedMember &) = default;
};

// The block a member drag carries, under the clipboard format registered as
// "VelmarManagerOrganizeUserDragDropFormat": a 32-bit count, then per member
// its id and a male flag (1 or 0), each 32-bit little-endian, in grid row
// order. Windows applications see it under that name; Qt spells it as the
// MIME type below.
class MemberDragFormat final
{
public:
    static QString mimeType();

    static QByteArray encode(const QList<DraggedMember> &members);
    // The members of a block, or nothing when the block is refused whole:
    // shorter than its count field, a negative count, or fewer members than
    // the count announces. Bytes after the last announced member are
    // ignored: the block travels in shared memory, whose size the system may
    // round up, and the reader has always read just the count it was given.
    // A male flag other than 0 reads as male.
    static std::optional<QList<DraggedMember>> decode(QByteArrayView block);

    // New mime data carrying the block (the caller owns it).
    static QMimeData *toMimeData(const QList<DraggedMember> &members);
    static bool canDecode(const QMimeData *data);
    static std::optional<QList<DraggedMember>> fromMimeData(const QMimeData *data);
};
