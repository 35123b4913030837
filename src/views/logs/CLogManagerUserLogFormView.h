#pragma once

#include "LogFormView.h"

class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QTextBrowser;
class QTreeView;
class UserLogModel;

// The user log view: the message records of the main daemon's user logs, one
// row per record and one more per receiver of a sent message. The
// organisation tree on the left narrows the list to one member; the detail
// pane shows the selected record's header, its message (rich text formatted)
// and the files sent with it, whose upload folder "打开..." opens.
class CLogManagerUserLogFormView final : public LogFormView
{
    Q_OBJECT

public:
    explicit CLogManagerUserLogFormView(const LogViewContext &context, QWidget *parent = nullptr);

    QTreeView *memberTree() const { return m_tree; }
    QPlainTextEdit *headerText() const { return m_header; }
    QTextBrowser *messageText() const { return m_message; }
    QListWidget *filesList() const { return m_files; }
    QPushButton *openButton() const { return m_open; }
    QString sessionId() const { return m_sessionId; }

    // The "打开..." button: the session's upload folder, when it exists.
    void openUploadFolder();
    // The first listed row whose message is rich text (and, with withFiles,
    // that has files); -1 when there is none.
    int firstRichTextRow(bool withFiles) const;

protected:
    void rowSelected(int row) override;

private:
    UserLogModel *userModel() const;
    void treeItemSelected(const QModelIndex &index);

    QTreeView *m_tree;
    QPlainTextEdit *m_header;
    QTextBrowser *m_message;
    QListWidget *m_files;
    QPushButton *m_open;
    QString m_sessionId;
};
