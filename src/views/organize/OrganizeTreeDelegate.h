#pragma once

#include <QStyledItemDelegate>

// How a group tree draws its nodes: the folder images for the root and the
// groups, the member image by gender for a membership, and a membership's
// position after the member's name.
class OrganizeTreeDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // The label of a membership: "name (position)", the name alone without one.
    static QString membershipLabel(const QModelIndex &index);

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
