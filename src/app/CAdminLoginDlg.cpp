#include "CAdminLoginDlg.h"

#include "AdminPasswordStore.h"
#include "MessageService.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

CAdminLoginDlg::CAdminLoginDlg(MessageService &messages, QWidget *parent)
    : EnterLatchDialog(parent)
    , m_messages(messages)
    , m_password(new QLineEdit(this))
    , m_loginButton(new QPushButton(u"登记(&L)"_s, this))
    , m_cancelButton(new QPushButton(u"取消(&C)"_s, this))
{
    setObjectName(u"dialog211"_s);
    setWindowTitle(u"VelmarManager 管理员登陆"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *label = new QLabel(u" 管理员密码"_s, this);
    label->setObjectName(u"passwordLabel"_s);
    label->setBuddy(m_password);
    m_password->setObjectName(u"control1101"_s);
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setMaxLength(MaxLength);
    m_password->setMinimumWidth(200);
    auto *note = new QLabel(u"※ 输入和修改管理员验证密码"_s, this);
    note->setObjectName(u"noteLabel"_s);

    m_loginButton->setObjectName(u"control1103"_s);
    m_loginButton->setDefault(true);
    m_cancelButton->setObjectName(u"control1104"_s);
    m_cancelButton->setAutoDefault(false);
    connect(m_loginButton, &QPushButton::clicked, this, &CAdminLoginDlg::confirm);
    connect(m_cancelButton, &QPushButton::clicked, this, &CAdminLoginDlg::cancelDialog);

    auto *fields = new QGridLayout;
    fields->addWidget(label, 0, 0);
    fields->addWidget(m_password, 0, 1);
    fields->addWidget(note, 1, 0, 1, 2);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_loginButton);
    buttons->addWidget(m_cancelButton);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);
    setFixedSize(sizeHint());

    setTabOrder(m_password, m_loginButton);
    setTabOrder(m_loginButton, m_cancelButton);
    m_password->setFocus();
}

void CAdminLoginDlg::confirm()
{
    const QString text = m_password->text();
    if (text.isEmpty()) {
        m_messages.showMessage({ u"请输入验证密码."_s, u"VelmarManager"_s,
            MessageService::Buttons::Ok, MessageService::Icon::None, this });
        m_password->setFocus();
        return;
    }
    if (AdminPasswordStore::digestsMatch(AdminPasswordStore::digest(text), m_expectedDigest)) {
        accept();
        return;
    }
    ++m_failedAttempts;
    if (m_failedAttempts < MaxAttempts) {
        m_messages.showMessage(
            { u"密码没有通过验证. 只能尝试 %1/3 的输入机会"_s.arg(m_failedAttempts), u"验证检查"_s,
                MessageService::Buttons::Ok, MessageService::Icon::Exclamation, this });
        m_password->selectAll();
        m_password->setFocus();
        return;
    }
    m_messages.showMessage({ u"密码验证没有通过程序将退出"_s, u"验证检查"_s,
        MessageService::Buttons::Ok, MessageService::Icon::Exclamation, this });
    cancelDialog();
}
