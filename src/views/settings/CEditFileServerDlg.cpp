#include "CEditFileServerDlg.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHostAddress>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

const QString CEditFileServerDlg::WarningText
    = u"警告: 如果文件服务器正在运行中，编辑或添加只能在停止服务的基础上执行."_s;

CEditFileServerDlg::CEditFileServerDlg(QWidget *parent)
    : QDialog(parent)
    , m_use(new QCheckBox(u"使用这台服务器(&U)"_s, this))
{
    setObjectName(u"editFileServerDialog"_s);
    setWindowTitle(u"文件服务器 追加/编辑"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    // The address control: four fields of 0..255.
    auto *addressRow = new QHBoxLayout;
    auto *label = new QLabel(u"IP 地址(&I) :"_s, this);
    addressRow->addWidget(label);
    for (int i = 0; i < 4; ++i) {
        m_fields[i] = new QLineEdit(this);
        m_fields[i]->setObjectName(u"addressField%1"_s.arg(i));
        m_fields[i]->setValidator(new QIntValidator(0, 255, m_fields[i]));
        m_fields[i]->setMaxLength(3);
        m_fields[i]->setFixedWidth(48);
        addressRow->addWidget(m_fields[i]);
        if (i < 3)
            addressRow->addWidget(new QLabel(u"."_s, this));
    }
    label->setBuddy(m_fields[0]);
    addressRow->addStretch();
    m_use->setObjectName(u"useCheck"_s);

    auto *warning = new QLabel(WarningText, this);
    warning->setObjectName(u"warningLabel"_s);
    warning->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CEditFileServerDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(addressRow);
    layout->addWidget(m_use);
    layout->addWidget(warning);
    layout->addWidget(buttons);
}

void CEditFileServerDlg::setEntry(const QString &address, bool enabled)
{
    m_address = address;
    m_enabled = enabled;
    if (!address.isEmpty()) {
        // What the address control takes from the dotted text: a text that
        // does not parse fills it with 255s.
        bool ok = false;
        quint32 value = QHostAddress(address.trimmed()).toIPv4Address(&ok);
        if (!ok)
            value = 0xFFFFFFFFu;
        for (int i = 0; i < 4; ++i)
            m_fields[i]->setText(QString::number((value >> (24 - 8 * i)) & 0xFF));
    }
    m_use->setChecked(enabled);
}

void CEditFileServerDlg::accept()
{
    QStringList parts;
    for (QLineEdit *field : m_fields)
        parts << QString::number(qBound(0, field->text().toInt(), 255));
    m_address = parts.join(u'.');
    m_enabled = m_use->isChecked();
    QDialog::accept();
}
