#pragma once

#include "ChatLogRows.h"
#include "LogTableModel.h"

class ChatLogModel final : public LogTableModel
{
    Q_OBJECT

public:
    explicit ChatLogModel(QObject *parent = nullptr);
    // The file of a row, for the detail pane (ChatLogReader::detailText).
    QString filePath(int row) const;

protected:
    Reader reader(const LogSearchRequest &request) const override;
};
