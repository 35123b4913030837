#pragma once

#include <QItemSelectionModel>

class MemberGridProxy;

// The selection of a member grid, holding the password rule: the caret may
// not leave a member row (the only row selected, not the blank row) whose
// password is empty. The move is turned down, the caret stays, and
// leaveRefused names the row's password cell; the grid then points there.
class MemberRowSelectionModel final : public QItemSelectionModel
{
    Q_OBJECT

public:
    explicit MemberRowSelectionModel(MemberGridProxy *grid, QObject *parent = nullptr);

    void setCurrentIndex(
        const QModelIndex &index, QItemSelectionModel::SelectionFlags command) override;
    void select(
        const QItemSelection &selection, QItemSelectionModel::SelectionFlags command) override;
    using QItemSelectionModel::select;

Q_SIGNALS:
    void leaveRefused(const QModelIndex &passwordCell);

private:
    // The row the caret is on when leaving it for row is refused, else -1.
    int guardedRow(int row) const;

    MemberGridProxy *m_grid;
    // A refused move is followed by the selection that went with it (a
    // click sets the caret, then selects): that selection is refused too.
    bool m_refusing = false;
};
