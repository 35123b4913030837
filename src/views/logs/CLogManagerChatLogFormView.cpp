#include "CLogManagerChatLogFormView.h"

#include "ChatLogModel.h"
#include "ChatLogReader.h"
#include "CLogManagerFilterDlg.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CLogManagerChatLogFormView::CLogManagerChatLogFormView(
    const LogViewContext &context, QWidget *parent)
    : LogFormView(new ChatLogModel, context, parent)
    , m_detail(new QPlainTextEdit(this))
{
    setObjectName(u"chatLogView"_s);
    m_detail->setObjectName(u"detailText"_s);
    m_detail->setReadOnly(true);

    // The list takes half of what is left below its caption, the detail box the rest.
    list()->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_detail->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(titleCaption());
    layout->addWidget(filterPanel());
    layout->addWidget(listHeader());
    layout->addWidget(list(), 1);
    layout->addWidget(m_detail, 1);
}

ChatLogModel *CLogManagerChatLogFormView::chatModel() const
{
    return static_cast<ChatLogModel *>(model());
}

void CLogManagerChatLogFormView::rowSelected(int row)
{
    // A file that cannot be read leaves the box as it was.
    const std::optional<QString> text
        = ChatLogReader::detailText(chatModel()->filePath(row), CodePage::system());
    if (!text)
        return;
    QString shown = *text;
    shown.replace(u"\r\n"_s, u"\n"_s);
    m_detail->setPlainText(shown);
}
