#pragma once

#include <QStyledItemDelegate>

// Cells of the rights table: a right whose group or member the directory no
// longer holds is drawn in red, so that it is seen and removed, not missed.
class RightRowDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
