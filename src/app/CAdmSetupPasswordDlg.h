#pragma once

#include "AdminPasswordStore.h"
#include "EnterLatchDialog.h"

class MessageService;
class QCheckBox;
class QLineEdit;
class QPushButton;

// Switches the administrator lock on or off and changes the password. The
// check box means "lock OFF" when checked, whatever its label suggests.
class CAdmSetupPasswordDlg : public EnterLatchDialog
{
    Q_OBJECT

public:
    static constexpr int MaxLength = 100;

    CAdmSetupPasswordDlg(RegistryHives &hives, MessageService &messages, QWidget *parent = nullptr);

    QLineEdit *existingField() const { return m_existing; }
    QLineEdit *newField() const { return m_new; }
    QLineEdit *confirmField() const { return m_confirmation; }
    QCheckBox *lockOffBox() const { return m_lockOff; }

public Q_SLOTS:
    void confirm() override;

private:
    void lockOffClicked(bool checked);
    void setFieldsEnabled(bool enabled);
    void warn(const QString &text, const QString &title = QString());

    AdminPasswordStore m_store;
    MessageService &m_messages;
    QLineEdit *m_existing;
    QLineEdit *m_new;
    QLineEdit *m_confirmation;
    QCheckBox *m_lockOff;
    QPushButton *m_changeButton;
    QPushButton *m_cancelButton;
};
