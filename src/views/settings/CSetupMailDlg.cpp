#include "CSetupMailDlg.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CSetupMailDlg::CSetupMailDlg(const QString &profilePath, QWidget *parent)
    : QDialog(parent)
    , m_settings(profilePath)
    , m_defaultMode(new QRadioButton(u"默认 使用模式"_s, this))
    , m_otherUrl(new QRadioButton(u"使用其他URL"_s, this))
    , m_url(new QLineEdit(this))
    , m_forced(new QCheckBox(u"固定邮件地址"_s, this))
{
    setObjectName(u"setupMailDialog"_s);
    setWindowTitle(u"邮件服务设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_defaultMode->setObjectName(u"defaultModeRadio"_s);
    m_otherUrl->setObjectName(u"otherUrlRadio"_s);
    m_url->setObjectName(u"urlEdit"_s);
    m_url->setMaxLength(127);
    m_forced->setObjectName(u"forcedMailCheck"_s);
    auto *group = new QButtonGroup(this);
    group->addButton(m_defaultMode);
    group->addButton(m_otherUrl);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CSetupMailDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_defaultMode);
    layout->addWidget(m_otherUrl);
    layout->addWidget(m_url);
    layout->addWidget(m_forced);
    layout->addWidget(buttons);
    resize(360, sizeHint().height());

    const MailSettings::Values values = m_settings.load();
    (values.useSso ? m_otherUrl : m_defaultMode)->setChecked(true);
    m_url->setText(values.ssoUrl);
    m_forced->setChecked(values.forcedMailMode);
}

void CSetupMailDlg::accept()
{
    m_settings.save({ m_forced->isChecked(), m_otherUrl->isChecked(), m_url->text() });
    QDialog::accept();
}
