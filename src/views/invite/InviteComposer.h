#pragma once

#include "InviteFields.h"
#include "InviteRecipientSink.h"
#include "SmtpPasswordStore.h"

#include <QPointer>
#include <QWidget>

class InviteRecipientModel;
class InviteSendRun;
class MessageService;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTableView;
class QTextBrowser;
class RegistryHives;

// The invitation mail composer "登记发送邮件": the members handed to it, a
// memo, the office and download address (remembered), a preview of
// Template.html filled for the selected member, the mail server settings,
// and the sending with each member's result in the list. A window of its
// own beside the main window; the organisation view feeds it.
class InviteComposer final : public QWidget, public InviteRecipientSink
{
    Q_OBJECT

public:
    struct Context
    {
        QString programDirectory; // where Template.html is
        QString profilePath; // Serverinfo.ini: the caption-bar name
        RegistryHives &hives; // the mail settings
        MessageService &messages;
        SmtpPasswordStore passwords; // where the SMTP password is kept
    };

    explicit InviteComposer(Context context, QWidget *parent = nullptr);
    ~InviteComposer() override;

    static QString caption(); // 登记发送邮件

    // InviteRecipientSink
    void clearRecipients() override;
    bool offerRecipient(const InviteRecipient &recipient) override;
    void showComposer() override;
    void hideComposer() override;

    InviteRecipientModel *recipients() const { return m_model; }
    QTableView *recipientView() const { return m_recipientView; }
    QTextBrowser *preview() const { return m_preview; }
    bool isSending() const;
    // The mails as the next send would build them (the preview's text for
    // the selected one).
    InviteFields fields() const;

Q_SIGNALS:
    void sendingFinished(int sent, int failed);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void loadSettings();
    void saveSettings();
    void loadTemplate();
    void updatePreview();
    void send();
    void sendFinished();
    void updateSecurityPort(int index);
    void readStoredPassword();
    QString passwordKey() const;

    Context m_context;
    InviteRecipientModel *m_model;
    QTableView *m_recipientView = nullptr;
    QPlainTextEdit *m_memo = nullptr;
    QLineEdit *m_office = nullptr;
    QLineEdit *m_downloadUrl = nullptr;
    QLineEdit *m_subject = nullptr;
    QTextBrowser *m_preview = nullptr;
    QLabel *m_templateLabel = nullptr;
    QLineEdit *m_host = nullptr;
    QSpinBox *m_port = nullptr;
    QComboBox *m_security = nullptr;
    QLineEdit *m_sender = nullptr;
    QLineEdit *m_user = nullptr;
    QLineEdit *m_password = nullptr;
    QCheckBox *m_rememberPassword = nullptr;
    QLineEdit *m_caFile = nullptr;
    QProgressBar *m_progress = nullptr;
    QLabel *m_status = nullptr;
    QPushButton *m_sendButton = nullptr;
    QPushButton *m_closeButton = nullptr;
    QString m_templateText;
    InviteFields m_serverFields; // read when the composer opens, not at every keystroke
    QString m_passwordReadFor; // the key the password field was last filled from
    QPointer<InviteSendRun> m_run;
    int m_sent = 0;
    int m_failed = 0;
};
