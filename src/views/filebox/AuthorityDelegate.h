#pragma once

#include <QStyledItemDelegate>

// The drop-down of a right's authority: "只读" or "读/写". A choice is
// written to the model as soon as it is made, so that each choice is one
// edit of the document.
class AuthorityDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

protected:
    // The drop-downs stay open in their rows: leaving one commits and closes
    // nothing (a choice is written when it is made).
    bool eventFilter(QObject *object, QEvent *event) override;
};
