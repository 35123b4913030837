#include "MemberDragFormat.h"

#include <QMimeData>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype FieldSize = 4;
constexpr qsizetype EntrySize = 2 * FieldSize;

void appendField(QByteArray &block, qint32 value)
{
    char bytes[FieldSize];
    qToLittleEndian(value, bytes);
    block.append(bytes, FieldSize);
}

qint32 fieldAt(QByteArrayView block, qsizetype offset)
{
    return qFromLittleEndian<qint32>(block.data() + offset);
}

} // namespace

QString MemberDragFormat::mimeType()
{
    return u"application/x-qt-windows-mime;value=\"VelmarManagerOrganizeUserDragDropFormat\""_s;
}

QByteArray MemberDragFormat::encode(const QList<DraggedMember> &members)
{
    QByteArray block;
    block.reserve(FieldSize + members.size() * EntrySize);
    appendField(block, qint32(members.size()));
    for (const DraggedMember &member : members) {
        appendField(block, member.id);
        appendField(block, member.male ? 1 : 0);
    }
    return block;
}

std::optional<QList<DraggedMember>> MemberDragFormat::decode(QByteArrayView block)
{
    if (block.size() < FieldSize)
        return std::nullopt;
    const qint32 count = fieldAt(block, 0);
    // Checked against what the block holds before anything is allocated, so a
    // lying count costs nothing.
    if (count < 0 || qint64(count) * EntrySize > qint64(block.size()) - FieldSize)
        return std::nullopt;
    QList<DraggedMember> members;
    members.reserve(count);
    for (qint32 i = 0; i < count; ++i) {
        const qsizetype offset = FieldSize + qsizetype(i) * EntrySize;
        members.append({ fieldAt(block, offset), fieldAt(block, offset + FieldSize) != 0 });
    }
    return members;
}

QMimeData *MemberDragFormat::toMimeData(const QList<DraggedMember> &members)
{
    auto *data = new QMimeData;
    data->setData(mimeType(), encode(members));
    return data;
}

bool MemberDragFormat::canDecode(const QMimeData *data)
{
    return data && data->hasFormat(mimeType());
}

std::optional<QList<DraggedMember>> MemberDragFormat::fromMimeData(const QMimeData *data)
{
    if (!canDecode(data))
        return std::nullopt;
    return decode(data->data(mimeType()));
}
