#pragma once

#include "LogTableModel.h"
#include "SystemLogRows.h"

class SystemLogModel final : public LogTableModel
{
    Q_OBJECT

public:
    explicit SystemLogModel(QObject *parent = nullptr);

protected:
    Reader reader(const LogSearchRequest &request) const override;
};
