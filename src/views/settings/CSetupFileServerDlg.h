#pragma once

#include "SessionServerList.h"

#include <functional>
#include <QDialog>

class CEditFileServerDlg;
class MessageService;
class QCheckBox;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

// "文件服务设置": the session servers, how long transferred files are kept and
// the largest file a member may send. Nothing but the default entry of a first
// opening is written before OK.
class CSetupFileServerDlg final : public QDialog
{
    Q_OBJECT

public:
    CSetupFileServerDlg(SessionServerList settings, MessageService &messages,
        std::function<QString()> localAddress = &SessionServerList::GetLocalServerAddress,
        QWidget *parent = nullptr);

    QTreeWidget *serverList() const { return m_list; }
    // The add and edit buttons show this dialog modally; tests answer it.
    void setEditDialogRunner(std::function<int(CEditFileServerDlg &)> runner)
    {
        m_runEdit = std::move(runner);
    }

public Q_SLOTS:
    void addServer();
    void editServer();
    void removeServers();
    void accept() override;

private:
    void appendRow(const SessionServerEntry &entry);
    static void fillRow(QTreeWidgetItem *item, const QString &address, bool enabled);

    SessionServerList m_settings;
    MessageService &m_messages;
    QTreeWidget *m_list;
    QLineEdit *m_keeping;
    QCheckBox *m_sizeCheck;
    QLineEdit *m_size;
    std::function<int(CEditFileServerDlg &)> m_runEdit;
};
