#pragma once

#include "MailSettings.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QRadioButton;

// "邮件服务设置": how the client opens web mail. Written at OK; the clients
// read it at their next login, so nothing is sent to the server.
class CSetupMailDlg final : public QDialog
{
    Q_OBJECT

public:
    explicit CSetupMailDlg(const QString &profilePath, QWidget *parent = nullptr);

public Q_SLOTS:
    void accept() override;

private:
    MailSettings m_settings;
    QRadioButton *m_defaultMode;
    QRadioButton *m_otherUrl;
    QLineEdit *m_url;
    QCheckBox *m_forced;
};
