#include "CEditHomepageDlg.h"

#include "MessageService.h"
#include "SiteListSettings.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CEditHomepageDlg::CEditHomepageDlg(MessageService &messages, QWidget *parent)
    : QDialog(parent)
    , m_messages(messages)
    , m_name(new QLineEdit(this))
    , m_address(new QLineEdit(this))
{
    setObjectName(u"editHomepageDialog"_s);
    setWindowTitle(u"站点 追加/编辑"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_name->setObjectName(u"nameEdit"_s);
    m_address->setObjectName(u"addressEdit"_s);

    auto *form = new QFormLayout;
    form->addRow(u"显示站点名称:"_s, m_name);
    form->addRow(u"站点地址(必须):"_s, m_address);
    auto *note = new QLabel(u"* 当站点名称缺少时，将显示站点地址."_s, this);
    note->setObjectName(u"noteLabel"_s);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CEditHomepageDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(note);
    layout->addWidget(buttons);
    resize(380, sizeHint().height());
}

QString CEditHomepageDlg::name() const
{
    return m_name->text();
}

QString CEditHomepageDlg::address() const
{
    return m_address->text();
}

void CEditHomepageDlg::accept()
{
    const QString refusal = SiteListSettings::refusal(name(), address());
    if (!refusal.isEmpty()) {
        m_messages.showMessage({ refusal, QString(), MessageService::Buttons::Ok,
            MessageService::Icon::Exclamation, this });
        return;
    }
    QDialog::accept();
}
