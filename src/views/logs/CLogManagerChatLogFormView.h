#pragma once

#include "LogFormView.h"

class ChatLogModel;
class QPlainTextEdit;

// The chat log view: one row per conversation file of the chat daemon, and
// the selected conversation in the detail box below the list.
class CLogManagerChatLogFormView final : public LogFormView
{
    Q_OBJECT

public:
    explicit CLogManagerChatLogFormView(const LogViewContext &context, QWidget *parent = nullptr);

    QPlainTextEdit *detailText() const { return m_detail; }

protected:
    void rowSelected(int row) override;

private:
    ChatLogModel *chatModel() const;

    QPlainTextEdit *m_detail;
};
