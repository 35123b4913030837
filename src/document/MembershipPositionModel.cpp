#include "MembershipPositionModel.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "PositionListModel.h"

using namespace Qt::StringLiterals;

MembershipPositionModel::MembershipPositionModel(CVelmarManagerDoc &document, QObject *parent)
    : QAbstractTableModel(parent)
    , m_document(document)
{
    // The grid is built anew once per step of the journal, as the view has
    // always refilled it after a change: a step that places a thousand
    // members rebuilds it once, not once per membership. Nodes a step took
    // out stay alive in the step until then. Loads reset the tree and the
    // list outside the journal.
    connect(document.undoStack(), &DocumentUndoStack::indexChanged, this,
        &MembershipPositionModel::rebuild);
    const GroupTreeModel *tree = document.directory()->regularTree();
    connect(tree, &QAbstractItemModel::modelReset, this, &MembershipPositionModel::rebuild);
    connect(document.positions(), &QAbstractItemModel::modelReset, this,
        &MembershipPositionModel::rebuild);
    // Member names and positions only repaint.
    connect(tree, &QAbstractItemModel::dataChanged, this, [this] {
        if (!m_rows.empty())
            Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
    });
    rebuild();
}

void MembershipPositionModel::rebuild()
{
    std::vector<const DirectoryNode *> rows;
    rows.reserve(m_rows.size());
    m_document.directory()->treeData(false).forEachMembership(
        [&rows](const DirectoryNode *membership) { rows.push_back(membership); });
    // Most steps change positions or names, not the memberships: the rows
    // are then only repainted, and the grid keeps its selection, its place
    // and an open drop-down.
    if (rows == m_rows) {
        if (!m_rows.empty())
            Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
        return;
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int MembershipPositionModel::shownIndex(qint32 rankId) const
{
    const PositionList &list = m_document.positions()->list();
    const int index = list.indexOfId(rankId);
    return index >= 0 ? index : list.count() - 1;
}

EditResult MembershipPositionModel::setPosition(const QList<int> &rows, int command)
{
    m_lastRefusal.reset();
    const PositionList &list = m_document.positions()->list();
    const int k = command - 201;
    if (command != 200 && (k < 0 || k >= list.count()))
        return EditResult::refusedSilently();
    QList<const DirectoryNode *> memberships;
    for (const int row : rows) {
        if (row >= 0 && row < rowCount())
            memberships.append(m_rows.at(size_t(row)));
    }
    const EditResult result = m_document.editor().setMembershipPositions(
        false, memberships, command == 200 ? -1 : list.idAt(k));
    m_lastRefusal = result.refusal;
    return result;
}

int MembershipPositionModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int MembershipPositionModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant MembershipPositionModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const DirectoryNode *membership = m_rows.at(size_t(index.row()));
    switch (role) {
    case RankIdRole:
        return membership->rankId();
    case PositionIndexRole:
        return shownIndex(membership->rankId());
    case Qt::DisplayRole:
    case Qt::EditRole:
        break;
    default:
        return {};
    }
    switch (index.column()) {
    case LoginNameColumn: {
        const UserInfo *member = m_document.directory()->findMember(membership->id());
        return member ? member->loginName : QString::number(membership->id());
    }
    case GroupColumn:
        return membership->parent()->isRoot() ? u"类别"_s : membership->parent()->name();
    default: {
        const PositionList &list = m_document.positions()->list();
        const int shown = shownIndex(membership->rankId());
        return shown >= 0 && shown < list.count() ? list.positions.at(shown).name : QString();
    }
    }
}

QVariant MembershipPositionModel::headerData(
    int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
        || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const char16_t *const titles[ColumnCount] = { u"用户ID", u"群组", u"等级" };
    return QString::fromUtf16(titles[section]);
}

Qt::ItemFlags MembershipPositionModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == PositionColumn)
        result |= Qt::ItemIsEditable;
    return result;
}

bool MembershipPositionModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    m_lastRefusal.reset();
    if (role != Qt::EditRole || index.column() != PositionColumn
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    const PositionList &list = m_document.positions()->list();
    qint32 rankId = -1;
    if (value.typeId() == QMetaType::QString) {
        const int found = list.indexOfName(value.toString());
        rankId = found >= 0 ? list.positions.at(found).id : -1;
    } else {
        rankId = list.idAt(value.toInt());
    }
    const EditResult result
        = m_document.editor().setMembershipPosition(false, m_rows.at(size_t(index.row())), rankId);
    m_lastRefusal = result.refusal;
    return result.ok();
}
