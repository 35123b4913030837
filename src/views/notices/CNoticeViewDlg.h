#pragma once

#include "NoticeRecord.h"

#include <functional>
#include <QWidget>

class QListWidget;
class QPushButton;
class QTextBrowser;

// The notice panel below the notice list: the notice's text (rich text
// formatted, plain text as it is) and its files, folders and files each with
// their icon. "打开..." opens the notice's upload folder when it exists and
// is greyed otherwise.
class CNoticeViewDlg final : public QWidget
{
    Q_OBJECT

public:
    // uploadFolder: the folder a notice's files were uploaded to, from its
    // file session id. openFolder: how a folder is opened (the shell).
    CNoticeViewDlg(std::function<QString(const QString &sessionId)> uploadFolder,
        std::function<void(const QString &folder)> openFolder, QWidget *parent = nullptr);

    void showNotice(const NoticeRecord &record);
    void clear();

    QTextBrowser *textBox() const { return m_text; }
    QListWidget *filesList() const { return m_files; }
    QPushButton *openButton() const { return m_open; }
    // The folder "打开..." opens; empty when there is none.
    QString folderToOpen() const { return m_folder; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void openFolder();

    std::function<QString(const QString &)> m_uploadFolder;
    std::function<void(const QString &)> m_openFolder;
    QTextBrowser *m_text;
    QListWidget *m_files;
    QPushButton *m_open;
    QString m_folder;
};
