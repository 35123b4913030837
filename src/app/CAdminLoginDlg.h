#pragma once

#include "EnterLatchDialog.h"

class MessageService;
class QLineEdit;
class QPushButton;

// The administrator login at start: three wrong passwords end the program.
class CAdminLoginDlg : public EnterLatchDialog
{
    Q_OBJECT

public:
    static constexpr int MaxAttempts = 3;
    static constexpr int MaxLength = 100;

    CAdminLoginDlg(MessageService &messages, QWidget *parent = nullptr);

    // The stored digest the typed password must match (any letter case).
    void setExpectedDigest(const QString &digest) { m_expectedDigest = digest; }
    QString expectedDigest() const { return m_expectedDigest; }
    int failedAttempts() const { return m_failedAttempts; }

    QLineEdit *passwordField() const { return m_password; }

public Q_SLOTS:
    void confirm() override;

private:
    MessageService &m_messages;
    QString m_expectedDigest;
    int m_failedAttempts = 0;
    QLineEdit *m_password;
    QPushButton *m_loginButton;
    QPushButton *m_cancelButton;
};
