#pragma once

#include <QStyledItemDelegate>

// The in-place editors of a member grid, by column: a line edit for the text
// cells (the user ID only in the blank row), a masked line edit for the
// password, a fixed two-entry list for gender, authority, calendar and
// publicity, and a date editor for the birthday (1970-01-01 for none).
// The password is shown masked and the birthday as a date. What an editor
// hands back goes to the member list, whose editor applies the rules; a
// refused value is reported for the grid to show why.
class MemberCellDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit MemberCellDelegate(QObject *parent = nullptr);

    static bool isChoiceColumn(int column);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

Q_SIGNALS:
    // The member list turned the value down (its refusal says why).
    void editRefused(const QModelIndex &index) const;
    // A member was created from the blank row.
    void memberCreated(const QModelIndex &index) const;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
