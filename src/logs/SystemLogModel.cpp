#include "SystemLogModel.h"

SystemLogModel::SystemLogModel(QObject *parent)
    : LogTableModel(SystemLogRows::captions(), SystemLogRows::widths(), parent)
{ }

LogTableModel::Reader SystemLogModel::reader(const LogSearchRequest &request) const
{
    return [request](const LogSearchControl &control) -> std::shared_ptr<LogRows> {
        return SystemLogRows::search(request, control);
    };
}
