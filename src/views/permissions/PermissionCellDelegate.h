#pragma once

#include <QStyledItemDelegate>

// The cells of the permission grid: a check box turns over on a click
// anywhere in its cell (or on the space bar), the account cells edit in a
// line editor. Every edit handed to the model is reported, so that the view
// can show a refusal.
class PermissionCellDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

Q_SIGNALS:
    void edited(const QModelIndex &index) const;

protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
        const QModelIndex &index) override;
};
