#include "MemberGridProxy.h"

#include "MemberListModel.h"
#include "OrganizeIcons.h"

namespace {

// The two-entry columns sort by the text shown (set shows the first entry).
bool sortFlag(const UserInfo &member, int column)
{
    switch (column) {
    case MemberListModel::GenderColumn:
        return member.gender != 0;
    case MemberListModel::AdminColumn:
        return member.bAdmin != 0;
    case MemberListModel::SolarColumn:
        return member.bSolar != 0;
    default:
        return member.bPublic != 0;
    }
}

} // namespace

MemberGridProxy::MemberGridProxy(MemberListModel *members, QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_members(members)
{
    setSourceModel(members);
    // Unsorted until a header is clicked: the list order.
    sort(-1);
}

void MemberGridProxy::setFilterText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed == m_filter)
        return;
    m_filter = trimmed;
    // Laid out anew in one go: filtering row range by row range costs the
    // grid's header a pass over every row per range, which at 100,000 rows
    // takes seconds.
    invalidate();
}

int MemberGridProxy::memberRow(int row) const
{
    const QModelIndex source = mapToSource(index(row, 0));
    if (!source.isValid() || source.row() >= m_members->memberCount())
        return -1;
    return source.row();
}

QVariant MemberGridProxy::data(const QModelIndex &index, int role) const
{
    if (role == Qt::DecorationRole && index.column() == MemberListModel::LoginNameColumn) {
        const QVariant iconIndex
            = QSortFilterProxyModel::data(index, MemberListModel::IconIndexRole);
        return iconIndex.isValid() ? QVariant(OrganizeIcons::member(iconIndex.toInt()))
                                   : QVariant();
    }
    return QSortFilterProxyModel::data(index, role);
}

bool MemberGridProxy::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    if (m_filter.isEmpty() || sourceRow >= m_members->memberCount())
        return true;
    const UserInfo &member = m_members->member(sourceRow);
    return member.loginName.contains(m_filter, Qt::CaseInsensitive)
        || member.displayName.contains(m_filter, Qt::CaseInsensitive);
}

bool MemberGridProxy::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const int blank = m_members->memberCount();
    // The blank row sorts last whichever way the column is sorted: the
    // proxy swaps the operands for a descending sort.
    if (left.row() == blank || right.row() == blank) {
        const bool leftBlank = left.row() == blank;
        return sortOrder() == Qt::AscendingOrder ? !leftBlank : leftBlank;
    }
    const UserInfo &a = m_members->member(left.row());
    const UserInfo &b = m_members->member(right.row());
    const int column = left.column();
    int order = 0;
    // Read straight from the records: a sort of 100,000 rows compares
    // about two million pairs.
    if (const QString *text = MemberColumns::text(a, column)) {
        order = text->compare(*MemberColumns::text(b, column));
    } else {
        order = MemberListModel::choiceText(column, sortFlag(a, column))
                    .compare(MemberListModel::choiceText(column, sortFlag(b, column)));
    }
    // Equal cells keep the list order.
    return order != 0 ? order < 0 : left.row() < right.row();
}
