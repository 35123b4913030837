#pragma once

#include "LogTableModel.h"
#include "UserLogDetail.h"
#include "UserLogRows.h"

#include <optional>

class UserLogModel final : public LogTableModel
{
    Q_OBJECT

public:
    explicit UserLogModel(QObject *parent = nullptr);

    // The member tree narrows the list: a member's rows, or (the tree's root)
    // every stored row. Loading is on while the list is refilled. Ignored
    // while a search runs.
    void showMember(qint32 memberId);
    void showAll();
    std::optional<qint32> shownMember() const;

    // The stored row of a listed row, and what the detail pane shows for it.
    QStringList fields(int row) const;
    UserLogDetail detail(int row) const;

protected:
    Reader reader(const LogSearchRequest &request) const override;

private:
    UserLogRows *userRows() const;
};
