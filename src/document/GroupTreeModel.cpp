#include "GroupTreeModel.h"

#include "Directory.h"
#include "DirectoryEditor.h"
#include "MemberDragFormat.h"
#include "PositionListModel.h"

#include <QIODevice>
#include <QMimeData>
#include <QtEndian>

using namespace Qt::StringLiterals;

QString GroupTreeModel::nodeMimeType()
{
    return u"application/x-velmar-directory-node"_s;
}

GroupTreeModel::GroupTreeModel(const Directory &directory, bool guest, QObject *parent)
    : QAbstractItemModel(parent)
    , m_directory(directory)
    , m_guest(guest)
{ }

const DirectoryTree &GroupTreeModel::tree() const
{
    return m_directory.treeData(m_guest);
}

QString GroupTreeModel::rootLabel() const
{
    return m_guest ? u"论坛结构"_s : u"类别"_s;
}

const DirectoryNode *GroupTreeModel::nodeForIndex(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<const DirectoryNode *>(index.internalPointer());
}

QModelIndex GroupTreeModel::indexForNode(const DirectoryNode *node) const
{
    if (!node)
        return {};
    return createIndex(node->parent() ? node->row() : 0, 0, const_cast<DirectoryNode *>(node));
}

QModelIndex GroupTreeModel::rootIndex() const
{
    return indexForNode(tree().root());
}

QModelIndex GroupTreeModel::findGroup(qint32 groupId) const
{
    return indexForNode(tree().findGroup(groupId));
}

QModelIndex GroupTreeModel::findMembership(
    qint32 memberId, const QModelIndex &start, bool recursive) const
{
    return indexForNode(tree().findMembership(memberId, nodeForIndex(start), recursive));
}

QModelIndex GroupTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 ? rootIndex() : QModelIndex();
    const DirectoryNode *container = nodeForIndex(parent);
    if (!container || row >= container->childCount())
        return {};
    return createIndex(row, 0, container->child(row));
}

QModelIndex GroupTreeModel::parent(const QModelIndex &child) const
{
    const DirectoryNode *node = nodeForIndex(child);
    if (!node || !node->parent())
        return {};
    return indexForNode(node->parent());
}

int GroupTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return 1;
    if (parent.column() != 0)
        return 0;
    const DirectoryNode *node = nodeForIndex(parent);
    return node ? node->childCount() : 0;
}

int GroupTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant GroupTreeModel::data(const QModelIndex &index, int role) const
{
    const DirectoryNode *node = nodeForIndex(index);
    if (!node)
        return {};
    const UserInfo *member = node->isMembership() ? m_directory.findMember(node->id()) : nullptr;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (node->isRoot())
            return rootLabel();
        if (node->isGroup())
            return node->name();
        if (member)
            return member->displayName.isEmpty() ? member->loginName : member->displayName;
        // A membership of a member the directory does not know still shows up.
        return QString::number(node->id());
    case NodeKindRole:
        return int(node->kind());
    case GroupIdRole:
        return node->isContainer() ? QVariant(node->id()) : QVariant();
    case MemberIdRole:
        return node->isMembership() ? QVariant(node->id()) : QVariant();
    case LoginNameRole:
        return member ? QVariant(member->loginName) : QVariant();
    case RankIdRole:
        return node->isMembership() ? QVariant(node->rankId()) : QVariant();
    case RankNameRole:
        if (!node->isMembership() || !m_directory.positions())
            return {};
        return m_directory.positions()->list().nameForId(node->rankId());
    case PositionRole:
        return node->position();
    case MaleRole:
        if (!node->isMembership())
            return {};
        return member ? member->isMale() : true;
    default:
        return {};
    }
}

Qt::ItemFlags GroupTreeModel::flags(const QModelIndex &index) const
{
    const DirectoryNode *node = nodeForIndex(index);
    if (!node)
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (node->isGroup())
        result |= Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
    if (node->isContainer())
        result |= Qt::ItemIsDropEnabled;
    if (node->isMembership())
        result |= Qt::ItemNeverHasChildren | Qt::ItemIsDragEnabled;
    return result;
}

bool GroupTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    m_lastRefusal.reset();
    const DirectoryNode *node = nodeForIndex(index);
    if (role != Qt::EditRole || !node || !m_editor)
        return false;
    const EditResult result = m_editor->renameGroup(m_guest, node, value.toString());
    m_lastRefusal = result.refusal;
    return result.ok();
}

bool GroupTreeModel::removeRows(int row, int count, const QModelIndex &parent)
{
    m_lastRefusal.reset();
    const DirectoryNode *container = nodeForIndex(parent);
    if (!m_editor || !container || row < 0 || count <= 0 || row + count > container->childCount())
        return false;
    const EditResult result = m_editor->deleteChildren(m_guest, container, row, count);
    m_lastRefusal = result.refusal;
    return result.ok();
}

bool GroupTreeModel::moveRows(const QModelIndex &sourceParent, int sourceRow, int count,
    const QModelIndex &destinationParent, int destinationChild)
{
    m_lastRefusal.reset();
    const DirectoryNode *source = nodeForIndex(sourceParent);
    const DirectoryNode *target = nodeForIndex(destinationParent);
    if (!m_editor || !source || !target || count != 1 || sourceRow < 0
        || sourceRow >= source->childCount())
        return false;
    const DirectoryNode *node = source->child(sourceRow);
    using Step = DirectoryEditor::MoveStep;
    EditResult result;
    if (source != target) {
        if (destinationChild != target->childCount())
            return false;
        result = m_editor->moveNodeInto(m_guest, node, target);
    } else if (destinationChild == sourceRow - 1) {
        result = m_editor->moveNode(m_guest, node, Step::Up);
    } else if (destinationChild == sourceRow + 2) {
        result = m_editor->moveNode(m_guest, node, Step::Down);
    } else if (destinationChild == 0) {
        result = m_editor->moveNode(m_guest, node, Step::First);
    } else if (destinationChild == source->childCount()) {
        result = m_editor->moveNode(m_guest, node, Step::Last);
    } else {
        return false;
    }
    m_lastRefusal = result.refusal;
    return result.ok();
}

Qt::DropActions GroupTreeModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions GroupTreeModel::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}

QStringList GroupTreeModel::mimeTypes() const
{
    return { MemberDragFormat::mimeType(), nodeMimeType() };
}

QMimeData *GroupTreeModel::mimeData(const QModelIndexList &indexes) const
{
    // One node is dragged at a time, as the tree control moves one.
    const DirectoryNode *node = indexes.isEmpty() ? nullptr : nodeForIndex(indexes.first());
    if (!node || node->isRoot())
        return nullptr;
    // The root id first: the regular and the guest tree take the same drops,
    // and a path read in the other tree would name an unrelated node.
    QList<qint32> path;
    for (const DirectoryNode *up = node; up->parent(); up = up->parent())
        path.prepend(up->row());
    path.prepend(tree().rootId());
    QByteArray block(path.size() * 4, Qt::Uninitialized);
    for (qsizetype i = 0; i < path.size(); ++i)
        qToLittleEndian<qint32>(path.at(i), block.data() + 4 * i);
    auto *data = new QMimeData;
    data->setData(nodeMimeType(), block);
    return data;
}

const DirectoryNode *GroupTreeModel::draggedNode(const QMimeData *data) const
{
    const QByteArray block = data->data(nodeMimeType());
    if (block.size() < 8 || block.size() % 4 != 0
        || qFromLittleEndian<qint32>(block.constData()) != tree().rootId())
        return nullptr;
    const DirectoryNode *node = tree().root();
    for (qsizetype i = 4; i < block.size(); i += 4) {
        const qint32 row = qFromLittleEndian<qint32>(block.constData() + i);
        if (row < 0 || row >= node->childCount())
            return nullptr;
        node = node->child(row);
    }
    return node == tree().root() ? nullptr : node;
}

bool GroupTreeModel::canDropMimeData(
    const QMimeData *data, Qt::DropAction action, int, int, const QModelIndex &parent) const
{
    const DirectoryNode *target = nodeForIndex(parent);
    if (!data || !target || !target->isContainer()
        || (action != Qt::MoveAction && action != Qt::CopyAction))
        return false;
    if (data->hasFormat(nodeMimeType())) {
        const DirectoryNode *node = draggedNode(data);
        if (!node)
            return false;
        for (const DirectoryNode *up = target; up; up = up->parent()) {
            if (up == node)
                return false;
        }
        return !node->isMembership() || node->parent() == target
            || !tree().findMembership(node->id(), target, false);
    }
    return MemberDragFormat::canDecode(data);
}

bool GroupTreeModel::dropMimeData(
    const QMimeData *data, Qt::DropAction action, int row, int column, const QModelIndex &parent)
{
    m_lastRefusal.reset();
    if (!m_editor || !canDropMimeData(data, action, row, column, parent))
        return false;
    const DirectoryNode *target = nodeForIndex(parent);
    EditResult result;
    if (data->hasFormat(nodeMimeType()))
        result = m_editor->moveNodeInto(m_guest, draggedNode(data), target);
    else
        result = m_editor->dropMembers(m_guest, target, data->data(MemberDragFormat::mimeType()));
    m_lastRefusal = result.refusal;
    // The node has moved and the grid rows stay: a view showing this model
    // must not remove the drag's source rows after a move drop.
    return result.ok();
}
