#include "ChatLogModel.h"

ChatLogModel::ChatLogModel(QObject *parent)
    : LogTableModel(ChatLogRows::captions(), ChatLogRows::widths(), parent)
{ }

QString ChatLogModel::filePath(int row) const
{
    const auto *rows = static_cast<const ChatLogRows *>(m_rows.get());
    return rows ? rows->filePath(row) : QString();
}

LogTableModel::Reader ChatLogModel::reader(const LogSearchRequest &request) const
{
    return [request](const LogSearchControl &control) -> std::shared_ptr<LogRows> {
        return ChatLogRows::search(request, control);
    };
}
