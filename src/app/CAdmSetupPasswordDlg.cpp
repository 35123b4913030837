#include "CAdmSetupPasswordDlg.h"

#include "MessageService.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {
QLineEdit *passwordField(const QString &objectName, QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(objectName);
    field->setEchoMode(QLineEdit::Password);
    field->setMaxLength(CAdmSetupPasswordDlg::MaxLength);
    field->setMinimumWidth(200);
    return field;
}
} // namespace

CAdmSetupPasswordDlg::CAdmSetupPasswordDlg(
    RegistryHives &hives, MessageService &messages, QWidget *parent)
    : EnterLatchDialog(parent)
    , m_store(hives)
    , m_messages(messages)
    , m_existing(passwordField(u"control1110"_s, this))
    , m_new(passwordField(u"control1107"_s, this))
    , m_confirmation(passwordField(u"control1105"_s, this))
    , m_lockOff(new QCheckBox(u"登记输入管理员验证密码"_s, this))
    , m_changeButton(new QPushButton(u"修改(&M)"_s, this))
    , m_cancelButton(new QPushButton(u"取消&C)"_s, this))
{
    setObjectName(u"dialog221"_s);
    setWindowTitle(u"管理员验证设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    m_lockOff->setObjectName(u"control1106"_s);
    m_changeButton->setObjectName(u"control1104"_s);
    m_changeButton->setDefault(true);
    m_cancelButton->setObjectName(u"control1108"_s);
    m_cancelButton->setAutoDefault(false);

    auto *fields = new QGridLayout;
    const QList<QPair<QString, QLineEdit *>> rows = { { u"输入原有密码 :"_s, m_existing },
        { u"输入新的密码 :"_s, m_new }, { u"再次输入新的确认密码 :"_s, m_confirmation } };
    for (int row = 0; row < rows.size(); ++row) {
        auto *label = new QLabel(rows.at(row).first, this);
        label->setObjectName(u"label_%1"_s.arg(rows.at(row).second->objectName()));
        label->setBuddy(rows.at(row).second);
        fields->addWidget(label, row, 0);
        fields->addWidget(rows.at(row).second, row, 1);
    }
    fields->addWidget(m_lockOff, int(rows.size()), 0, 1, 2);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_changeButton);
    buttons->addWidget(m_cancelButton);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);
    setFixedSize(sizeHint());

    setTabOrder(m_existing, m_new);
    setTabOrder(m_new, m_confirmation);
    setTabOrder(m_confirmation, m_lockOff);
    setTabOrder(m_lockOff, m_changeButton);
    setTabOrder(m_changeButton, m_cancelButton);

    connect(m_lockOff, &QCheckBox::clicked, this, &CAdmSetupPasswordDlg::lockOffClicked);
    connect(m_changeButton, &QPushButton::clicked, this, &CAdmSetupPasswordDlg::confirm);
    connect(m_cancelButton, &QPushButton::clicked, this, &CAdmSetupPasswordDlg::cancelDialog);

    // Opening: with no password stored there is nothing to confirm; with the
    // lock off the fields wait until the box is unchecked.
    setFieldsEnabled(true);
    if (m_store.keyOpens()) {
        if (m_store.storedDigest().isEmpty())
            m_existing->setEnabled(false);
        if (m_store.state() == 0) {
            m_lockOff->setChecked(true);
            setFieldsEnabled(false);
        }
    }
}

void CAdmSetupPasswordDlg::setFieldsEnabled(bool enabled)
{
    m_existing->setEnabled(enabled);
    m_new->setEnabled(enabled);
    m_confirmation->setEnabled(enabled);
}

void CAdmSetupPasswordDlg::lockOffClicked(bool checked)
{
    if (checked) {
        setFieldsEnabled(false);
        return;
    }
    setFieldsEnabled(true);
    if (m_store.storedDigest().isEmpty()) {
        m_existing->setEnabled(false);
        m_new->setFocus();
    } else {
        m_existing->setFocus();
    }
}

void CAdmSetupPasswordDlg::warn(const QString &text, const QString &title)
{
    m_messages.showMessage({ text, title.isEmpty() ? u"检查验证密码"_s : title,
        MessageService::Buttons::Ok, MessageService::Icon::Exclamation, this });
}

void CAdmSetupPasswordDlg::confirm()
{
    const bool lockOff = m_lockOff->isChecked();
    // The state is stored before anything is checked, so it is kept even when
    // the password part is refused below.
    m_store.writeState(lockOff ? 0 : 1);
    if (lockOff) {
        accept();
        return;
    }

    const QString stored = m_store.storedDigest();
    const QString existing = m_existing->text();
    const QString newText = m_new->text();
    const QString confirmation = m_confirmation->text();

    if (!stored.isEmpty()) {
        if (existing.isEmpty()) {
            if (newText.isEmpty() && confirmation.isEmpty()) {
                accept();
                return;
            }
            warn(u"没有输入现有的密码"_s, u"检查现有的验证密码"_s);
            m_existing->setFocus();
            return;
        }
        if (!AdminPasswordStore::digestsMatch(AdminPasswordStore::digest(existing), stored)) {
            warn(u"现有的密码和输入的密码不同"_s);
            m_existing->selectAll();
            m_existing->setFocus();
            return;
        }
        if (newText.isEmpty()) {
            warn(u"输入的新的密码不存在"_s);
            m_new->setFocus();
            return;
        }
        if (confirmation.isEmpty()) {
            warn(u"输入的新的确认密码不存在"_s);
            m_confirmation->setFocus();
            return;
        }
        if (newText != confirmation) {
            warn(u"输入的新的密码和确认密码不同"_s);
            m_new->selectAll();
            m_new->setFocus();
            return;
        }
        m_store.writeDigest(AdminPasswordStore::digest(newText));
        accept();
        return;
    }

    if (newText.isEmpty()) {
        warn(u"输入的新的密码不存在"_s);
        m_new->setFocus();
        return;
    }
    if (confirmation.isEmpty()) {
        warn(u"输入的新的确认密码不存在"_s);
        m_confirmation->setFocus();
        return;
    }
    if (newText != confirmation) {
        warn(u"输入的新的密码和确认密码不同"_s);
        // The new text is selected while the focus goes to the confirmation:
        // focus first, since a field that loses the focus drops its selection.
        m_confirmation->setFocus();
        m_new->selectAll();
        return;
    }
    m_store.writeDigest(AdminPasswordStore::digest(newText));
    accept();
}
