#pragma once

#include <QSortFilterProxyModel>

class MemberListModel;

// What a member grid shows of its member list: the rows narrowed by the
// filter box (user ID or name containing the typed text) and sorted by the
// chosen column, the blank new-member row always shown and always last, the
// row icon in the first cell. The list's own order, which the save writes,
// is never touched: with no sort column the rows stand in list order.
class MemberGridProxy final : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit MemberGridProxy(MemberListModel *members, QObject *parent = nullptr);

    MemberListModel *members() const { return m_members; }
    void setFilterText(const QString &text);
    QString filterText() const { return m_filter; }
    // The proxy row of the blank new-member row.
    int blankRow() const { return rowCount() - 1; }
    bool isBlankRow(int row) const { return row == blankRow(); }
    // The list row behind a grid row (-1 for none).
    int memberRow(int row) const;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    MemberListModel *m_members;
    QString m_filter;
};
