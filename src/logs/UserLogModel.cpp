#include "UserLogModel.h"

UserLogModel::UserLogModel(QObject *parent)
    : LogTableModel(UserLogRows::captions(), UserLogRows::widths(), parent)
{ }

UserLogRows *UserLogModel::userRows() const
{
    return static_cast<UserLogRows *>(m_rows.get());
}

void UserLogModel::showMember(qint32 memberId)
{
    if (isSearching() || !userRows())
        return;
    setLoading(true);
    beginResetModel();
    userRows()->showMember(memberId);
    endResetModel();
    setLoading(false);
}

void UserLogModel::showAll()
{
    if (isSearching() || !userRows())
        return;
    setLoading(true);
    beginResetModel();
    userRows()->showAll();
    endResetModel();
    setLoading(false);
}

std::optional<qint32> UserLogModel::shownMember() const
{
    return userRows() ? userRows()->shownMember() : std::nullopt;
}

QStringList UserLogModel::fields(int row) const
{
    return userRows() ? userRows()->fields(row) : QStringList();
}

UserLogDetail UserLogModel::detail(int row) const
{
    return UserLogDetail::fromFields(fields(row));
}

LogTableModel::Reader UserLogModel::reader(const LogSearchRequest &request) const
{
    return [request](const LogSearchControl &control) -> std::shared_ptr<LogRows> {
        return UserLogRows::search(request, control);
    };
}
