#include "OrganizeTreeDelegate.h"

#include "DirectoryNode.h"
#include "GroupTreeModel.h"
#include "OrganizeIcons.h"
#include "PositionList.h"

using namespace Qt::StringLiterals;

QString OrganizeTreeDelegate::membershipLabel(const QModelIndex &index)
{
    const QString name = index.data(Qt::DisplayRole).toString();
    if (index.data(GroupTreeModel::RankIdRole).toInt() == PositionList::NoPosition)
        return name;
    const QString position = index.data(GroupTreeModel::RankNameRole).toString();
    return position.isEmpty() ? name : u"%1 (%2)"_s.arg(name, position);
}

void OrganizeTreeDelegate::initStyleOption(
    QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->decorationSize = QSize(16, 16);
    switch (DirectoryNode::Kind(index.data(GroupTreeModel::NodeKindRole).toInt())) {
    case DirectoryNode::Kind::Root:
        option->icon = OrganizeIcons::root();
        break;
    case DirectoryNode::Kind::Group:
        option->icon = OrganizeIcons::group();
        break;
    case DirectoryNode::Kind::Membership:
        option->icon = OrganizeIcons::membership(index.data(GroupTreeModel::MaleRole).toBool());
        option->text = membershipLabel(index);
        break;
    }
}
