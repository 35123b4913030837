#include "COnlineSettingsDlg.h"

#include "MessageService.h"
#include "OnlineAddresses.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

COnlineSettingsDlg::COnlineSettingsDlg(
    RegistryHives &hives, MessageService &messages, QWidget *parent)
    : QDialog(parent)
    , m_hives(hives)
    , m_messages(messages)
    , m_homePage(new QLineEdit(this))
    , m_smsPortal(new QLineEdit(this))
    , m_updateFeed(new QLineEdit(this))
{
    setObjectName(u"onlineSettingsDialog"_s);
    setWindowTitle(u"在线服务设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    const OnlineAddresses addresses = OnlineAddresses::read(hives);
    const struct
    {
        QLineEdit *field;
        QString name;
        QString title;
        QUrl value;
    } fields[] = {
        { m_homePage, u"homePageEdit"_s, u"网站主页"_s, addresses.homePage },
        { m_smsPortal, u"smsPortalEdit"_s, u"短信平台"_s, addresses.smsPortal },
        { m_updateFeed, u"updateFeedEdit"_s, u"发布列表 (更新版本)"_s, addresses.updateFeed },
    };
    auto *form = new QFormLayout;
    for (const auto &field : fields) {
        field.field->setObjectName(field.name);
        field.field->setAccessibleName(field.title);
        field.field->setPlaceholderText(u"https://"_s);
        field.field->setText(field.value.toString());
        form->addRow(field.title + u':', field.field);
    }

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setAccessibleName(u"确定"_s);
    ok->setDefault(true);
    QPushButton *cancel = buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole);
    cancel->setObjectName(u"cancelButton"_s);
    cancel->setAccessibleName(u"取消"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &COnlineSettingsDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
    setLayout(form);
    resize(520, sizeHint().height());
}

void COnlineSettingsDlg::accept()
{
    for (QLineEdit *field : { m_homePage, m_smsPortal, m_updateFeed }) {
        const QString refusal = OnlineAddresses::refusal(field->text());
        if (!refusal.isEmpty()) {
            m_messages.showMessage({ refusal, u"VelmarManager"_s, MessageService::Buttons::Ok,
                MessageService::Icon::Exclamation, this });
            field->setFocus();
            field->selectAll();
            return;
        }
    }
    OnlineAddresses addresses;
    addresses.homePage = QUrl(m_homePage->text().trimmed());
    addresses.smsPortal = QUrl(m_smsPortal->text().trimmed());
    addresses.updateFeed = QUrl(m_updateFeed->text().trimmed());
    if (!addresses.write(m_hives)) {
        m_messages.showMessage({ u"无法写入注册表."_s, u"VelmarManager"_s,
            MessageService::Buttons::Ok, MessageService::Icon::Error, this });
        return;
    }
    QDialog::accept();
}
