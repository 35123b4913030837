#pragma once

#include <QDialog>

class MessageService;
class QLineEdit;
class RegistryHives;

// "在线服务设置": the addresses of the organisation's web site, its SMS portal
// and the release feed, for the 帮助 menu's online entries.
class COnlineSettingsDlg final : public QDialog
{
    Q_OBJECT

public:
    COnlineSettingsDlg(RegistryHives &hives, MessageService &messages, QWidget *parent = nullptr);

    void accept() override;

private:
    RegistryHives &m_hives;
    MessageService &m_messages;
    QLineEdit *m_homePage;
    QLineEdit *m_smsPortal;
    QLineEdit *m_updateFeed;
};
