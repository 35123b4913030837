#include "InviteComposer.h"

#include "InviteMailSettings.h"
#include "InviteMessage.h"
#include "InviteRecipientModel.h"
#include "InviteSendRun.h"
#include "InviteTemplate.h"
#include "MessageService.h"
#include "SmtpPasswordStore.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

template<typename W> W *named(W *widget, const QString &objectName, const QString &title)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(title);
    return widget;
}

QLabel *boldLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

InviteComposer::InviteComposer(Context context, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_context(std::move(context))
    , m_model(new InviteRecipientModel(this))
{
    setObjectName(u"inviteComposer"_s);
    setWindowTitle(caption());
    setAccessibleName(caption());
    resize(1100, 700);

    auto *layout = new QVBoxLayout(this);
    auto *splitter = named(new QSplitter(Qt::Horizontal, this), u"inviteSplitter"_s, caption());
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);

    // Left: who gets a mail, and what it says besides the template.
    auto *left = new QWidget(splitter);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addWidget(boldLabel(u"收件人"_s, left));
    m_recipientView = named(new QTableView(left), u"inviteRecipients"_s, u"收件人"_s);
    m_recipientView->setModel(m_model);
    m_recipientView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_recipientView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_recipientView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_recipientView->verticalHeader()->hide();
    m_recipientView->horizontalHeader()->setStretchLastSection(true);
    m_recipientView->setColumnWidth(InviteRecipientModel::UserIdColumn, 90);
    m_recipientView->setColumnWidth(InviteRecipientModel::NameColumn, 80);
    m_recipientView->setColumnWidth(InviteRecipientModel::EmailColumn, 190);
    leftLayout->addWidget(m_recipientView, 1);

    auto *content = named(new QGroupBox(u"邮件内容"_s, left), u"inviteContent"_s, u"邮件内容"_s);
    auto *contentForm = new QFormLayout(content);
    m_subject = named(new QLineEdit(content), u"inviteSubject"_s, u"标题"_s);
    m_office = named(new QLineEdit(content), u"inviteOffice"_s, u"联系办公室"_s);
    m_downloadUrl = named(new QLineEdit(content), u"inviteDownloadUrl"_s, u"下载地址"_s);
    m_memo = named(new QPlainTextEdit(content), u"inviteMemo"_s, u"备注"_s);
    m_memo->setTabChangesFocus(true);
    m_memo->setFixedHeight(80);
    contentForm->addRow(u"标题:"_s, m_subject);
    contentForm->addRow(u"联系办公室:"_s, m_office);
    contentForm->addRow(u"下载地址:"_s, m_downloadUrl);
    contentForm->addRow(u"备注:"_s, m_memo);
    leftLayout->addWidget(content);

    auto *server = named(new QGroupBox(u"邮件服务器"_s, left), u"inviteServer"_s, u"邮件服务器"_s);
    auto *serverForm = new QFormLayout(server);
    auto *hostRow = new QHBoxLayout;
    m_host = named(new QLineEdit(server), u"inviteSmtpHost"_s, u"SMTP服务器"_s);
    m_port = named(new QSpinBox(server), u"inviteSmtpPort"_s, u"端口"_s);
    m_port->setRange(0, 65535);
    m_port->setSpecialValueText(u"默认"_s);
    // Room for the special text with the usual port in it.
    m_port->setMinimumWidth(m_port->fontMetrics().horizontalAdvance(u"默认 (65535)"_s) + 36);
    hostRow->addWidget(m_host, 1);
    hostRow->addWidget(new QLabel(u"端口:"_s, server));
    hostRow->addWidget(m_port);
    m_security = named(new QComboBox(server), u"inviteSmtpSecurity"_s, u"安全连接"_s);
    m_security->addItem(u"无 (不加密)"_s, int(SmtpSecurity::None));
    m_security->addItem(u"STARTTLS"_s, int(SmtpSecurity::StartTls));
    m_security->addItem(u"TLS (SMTPS)"_s, int(SmtpSecurity::Tls));
    m_sender = named(new QLineEdit(server), u"inviteSender"_s, u"发件人"_s);
    m_sender->setPlaceholderText(u"名称 <address@example.com>"_s);
    m_user = named(new QLineEdit(server), u"inviteSmtpUser"_s, u"用户名"_s);
    m_user->setPlaceholderText(u"空: 不登录"_s);
    auto *passwordRow = new QHBoxLayout;
    m_password = named(new QLineEdit(server), u"inviteSmtpPassword"_s, u"密码"_s);
    m_password->setEchoMode(QLineEdit::Password);
    m_rememberPassword = named(
        new QCheckBox(u"保存到密钥环"_s, server), u"inviteRememberPassword"_s, u"保存到密钥环"_s);
    m_rememberPassword->setChecked(true);
    passwordRow->addWidget(m_password, 1);
    passwordRow->addWidget(m_rememberPassword);
    m_caFile = named(new QLineEdit(server), u"inviteCaFile"_s, u"CA证书"_s);
    m_caFile->setPlaceholderText(u"空: 系统的证书"_s);
    serverForm->addRow(u"SMTP服务器:"_s, hostRow);
    serverForm->addRow(u"安全连接:"_s, m_security);
    serverForm->addRow(u"发件人:"_s, m_sender);
    serverForm->addRow(u"用户名:"_s, m_user);
    serverForm->addRow(u"密码:"_s, passwordRow);
    serverForm->addRow(u"CA证书:"_s, m_caFile);
    leftLayout->addWidget(server);

    // Right: the mail as the selected member will read it.
    auto *right = new QWidget(splitter);
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->addWidget(boldLabel(u"预览"_s, right));
    m_templateLabel = named(new QLabel(right), u"inviteTemplatePath"_s, u"模板"_s);
    m_templateLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_templateLabel->setWordWrap(true);
    rightLayout->addWidget(m_templateLabel);
    m_preview = named(new QTextBrowser(right), u"invitePreview"_s, u"预览"_s);
    m_preview->setOpenLinks(false);
    rightLayout->addWidget(m_preview, 1);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ 540, 540 });

    auto *bottom = new QHBoxLayout;
    m_progress = named(new QProgressBar(this), u"inviteProgress"_s, u"发送进度"_s);
    m_progress->setRange(0, 1);
    m_progress->setValue(0);
    m_progress->setFormat(u"%v / %m"_s);
    m_status = named(new QLabel(this), u"inviteStatus"_s, u"状态"_s);
    m_sendButton = named(new QPushButton(u"发送(&S)"_s, this), u"inviteSend"_s, u"发送"_s);
    m_closeButton = named(new QPushButton(u"关闭"_s, this), u"inviteClose"_s, u"关闭"_s);
    bottom->addWidget(m_progress, 1);
    bottom->addWidget(m_status, 2);
    bottom->addWidget(m_sendButton);
    bottom->addWidget(m_closeButton);
    layout->addLayout(bottom);

    loadSettings();

    connect(m_sendButton, &QPushButton::clicked, this, &InviteComposer::send);
    connect(m_closeButton, &QPushButton::clicked, this, &QWidget::close);
    connect(m_recipientView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &InviteComposer::updatePreview);
    for (QLineEdit *edit : { m_subject, m_office, m_downloadUrl })
        connect(edit, &QLineEdit::textChanged, this, &InviteComposer::updatePreview);
    connect(m_memo, &QPlainTextEdit::textChanged, this, &InviteComposer::updatePreview);
    connect(m_security, &QComboBox::currentIndexChanged, this, &InviteComposer::updateSecurityPort);
    connect(m_user, &QLineEdit::editingFinished, this, &InviteComposer::readStoredPassword);
    connect(m_host, &QLineEdit::editingFinished, this, &InviteComposer::readStoredPassword);
    updateSecurityPort(m_security->currentIndex());
}

InviteComposer::~InviteComposer() = default;

QString InviteComposer::caption()
{
    return u"登记发送邮件"_s;
}

void InviteComposer::clearRecipients()
{
    if (isSending())
        return;
    m_model->clear();
    m_progress->setValue(0);
    m_status->clear();
}

bool InviteComposer::offerRecipient(const InviteRecipient &recipient)
{
    return !isSending() && m_model->add(recipient);
}

void InviteComposer::showComposer()
{
    m_serverFields = InviteTemplate::serverFields(m_context.profilePath);
    loadTemplate();
    if (m_model->rowCount() > 0 && !m_recipientView->currentIndex().isValid())
        m_recipientView->selectRow(0);
    updatePreview();
    m_progress->setRange(0, std::max(1, m_model->rowCount()));
    m_progress->setValue(0);
    show();
    raise();
    activateWindow();
    readStoredPassword();
}

void InviteComposer::hideComposer()
{
    // A sending under way keeps its window: it takes nobody new meanwhile,
    // which the organisation view reports, but its results stay in sight.
    if (!isSending())
        hide();
}

bool InviteComposer::isSending() const
{
    return m_run && m_run->isRunning();
}

InviteFields InviteComposer::fields() const
{
    InviteFields fields = m_serverFields;
    fields.office = m_office->text().trimmed();
    fields.downloadUrl = m_downloadUrl->text().trimmed();
    fields.memo = m_memo->toPlainText();
    return fields;
}

void InviteComposer::closeEvent(QCloseEvent *event)
{
    // A sending in progress finishes the mail it is at, then stops.
    if (m_run)
        m_run->cancel();
    saveSettings();
    event->accept();
}

void InviteComposer::loadSettings()
{
    const InviteMailSettings settings = InviteMailSettings::read(m_context.hives);
    m_host->setText(settings.host);
    m_port->setValue(settings.port);
    m_security->setCurrentIndex(m_security->findData(int(settings.security)));
    m_sender->setText(settings.sender);
    m_user->setText(settings.user);
    m_subject->setText(
        settings.subject.isEmpty() ? InviteTemplate::DefaultSubject : settings.subject);
    m_office->setText(settings.office);
    m_downloadUrl->setText(settings.downloadUrl);
    m_caFile->setText(settings.caFile);
}

void InviteComposer::saveSettings()
{
    InviteMailSettings settings;
    settings.host = m_host->text().trimmed();
    settings.port = quint16(m_port->value());
    settings.security = SmtpSecurity(m_security->currentData().toInt());
    settings.sender = m_sender->text().trimmed();
    settings.user = m_user->text().trimmed();
    settings.subject
        = m_subject->text() == InviteTemplate::DefaultSubject ? QString() : m_subject->text();
    settings.office = m_office->text().trimmed();
    settings.downloadUrl = m_downloadUrl->text().trimmed();
    settings.caFile = m_caFile->text().trimmed();
    settings.write(m_context.hives);
}

void InviteComposer::loadTemplate()
{
    QString error;
    const QString path = InviteTemplate::path(m_context.programDirectory);
    if (InviteTemplate::load(m_context.programDirectory, &m_templateText, &error)) {
        m_templateLabel->setText(u"模板: %1"_s.arg(QDir::toNativeSeparators(path)));
    } else {
        m_templateText = InviteTemplate::DefaultText;
        m_templateLabel->setText(u"模板无法读取, 使用默认模板: %1"_s.arg(error));
    }
}

void InviteComposer::updatePreview()
{
    const int row = m_recipientView->currentIndex().row();
    if (row < 0 || row >= m_model->rowCount()) {
        m_preview->setHtml(QString());
        return;
    }
    const InviteRecipient &recipient = m_model->list().at(row);
    const InviteFields values = fields();
    const QString subject = InviteTemplate::fillPlain(m_subject->text(), values, recipient);
    m_preview->setHtml(
        u"<p><b>%1</b> %2<br><b>%3</b> %4</p><hr>"_s.arg(u"收件人:"_s,
            MailAddress { recipient.name, recipient.email }.toString().toHtmlEscaped(), u"标题:"_s,
            subject.toHtmlEscaped())
        + InviteTemplate::fill(m_templateText, values, recipient));
}

void InviteComposer::updateSecurityPort(int)
{
    const auto security = SmtpSecurity(m_security->currentData().toInt());
    m_port->setSpecialValueText(u"默认 (%1)"_s.arg(InviteMailSettings::defaultPort(security)));
}

QString InviteComposer::passwordKey() const
{
    const auto security = SmtpSecurity(m_security->currentData().toInt());
    const quint16 port = m_port->value() != 0 ? quint16(m_port->value())
                                              : InviteMailSettings::defaultPort(security);
    return SmtpPasswordStore::accountKey(m_user->text().trimmed(), m_host->text().trimmed(), port);
}

void InviteComposer::readStoredPassword()
{
    // Asked once per login: the keyring may have to ask the desktop to unlock.
    if (m_user->text().trimmed().isEmpty() || m_host->text().trimmed().isEmpty())
        return;
    const QString key = passwordKey();
    if (key == m_passwordReadFor)
        return;
    m_passwordReadFor = key;
    const SmtpPasswordStore::Result stored = m_context.passwords.read(key);
    if (stored.ok)
        m_password->setText(stored.password);
}

void InviteComposer::send()
{
    if (isSending() || m_model->rowCount() == 0)
        return;
    const MailAddress sender = MailAddress::parse(m_sender->text());
    if (sender.address.isEmpty()) {
        m_context.messages.showBalloon({ {}, u"请输入发件人的邮件地址."_s,
            MessageService::Icon::Error, 3000, m_sender, {}, false });
        m_sender->setFocus();
        return;
    }
    if (m_host->text().trimmed().isEmpty()) {
        m_context.messages.showBalloon({ {}, u"请输入SMTP服务器的地址."_s,
            MessageService::Icon::Error, 3000, m_host, {}, false });
        m_host->setFocus();
        return;
    }
    saveSettings();

    SmtpAccount account;
    account.host = m_host->text().trimmed();
    account.security = SmtpSecurity(m_security->currentData().toInt());
    account.port = m_port->value() != 0 ? quint16(m_port->value())
                                        : InviteMailSettings::defaultPort(account.security);
    account.user = m_user->text().trimmed();
    account.password = m_password->text();
    account.caFile = m_caFile->text().trimmed();
    if (!account.user.isEmpty() && m_rememberPassword->isChecked()) {
        QString error;
        m_passwordReadFor = passwordKey();
        if (!m_context.passwords.write(m_passwordReadFor, account.password, &error))
            m_status->setText(u"密码未能保存到密钥环: %1"_s.arg(error));
    }

    const InviteFields values = fields();
    QList<InviteSendRun::Mail> mails;
    for (const InviteRecipient &recipient : m_model->list().recipients()) {
        const QByteArray message
            = InviteMessage::build({ sender, MailAddress { recipient.name, recipient.email },
                InviteTemplate::fillPlain(m_subject->text(), values, recipient),
                InviteTemplate::fill(m_templateText, values, recipient),
                QDateTime::currentDateTime() });
        mails.append({ sender.address, recipient.email, message });
    }
    m_model->markPending();
    m_sent = 0;
    m_failed = 0;
    m_progress->setRange(0, int(mails.size()));
    m_progress->setValue(0);
    m_sendButton->setEnabled(false);

    m_run = new InviteSendRun(account, mails, this);
    connect(m_run, &InviteSendRun::mailSent, this, [this](int index, const SmtpResult &result) {
        m_model->setResult(index, result);
        (result.ok ? m_sent : m_failed)++;
        m_progress->setValue(m_sent + m_failed);
        m_status->setText(u"已发送 %1 封, 失败 %2 封"_s.arg(m_sent).arg(m_failed));
    });
    connect(m_run, &InviteSendRun::finished, this, &InviteComposer::sendFinished);
    m_status->setText(u"正在发送..."_s);
    m_run->start();
}

void InviteComposer::sendFinished()
{
    m_run->deleteLater();
    m_run = nullptr;
    m_sendButton->setEnabled(true);
    m_status->setText(u"已发送 %1 封, 失败 %2 封"_s.arg(m_sent).arg(m_failed));
    Q_EMIT sendingFinished(m_sent, m_failed);
}
