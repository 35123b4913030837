#include "CSetupCaptionBarDlg.h"

#include "MessageService.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
QRadioButton *radio(const QString &text, const QString &name, QWidget *parent)
{
    auto *button = new QRadioButton(text, parent);
    button->setObjectName(name);
    return button;
}
QLineEdit *edit(const QString &name, QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(name);
    return field;
}
QPushButton *button(const QString &text, const QString &name, QWidget *parent)
{
    auto *push = new QPushButton(text, parent);
    push->setObjectName(name);
    return push;
}
} // namespace

CSetupCaptionBarDlg::CSetupCaptionBarDlg(const QString &programDirectory,
    const CaptionBarSettings::Values &values, MessageService &messages, QWidget *parent)
    : QDialog(parent)
    , m_programDirectory(programDirectory)
    , m_messages(messages)
    , m_defaultIcon(radio(u"默认图标"_s, u"defaultIconRadio"_s, this))
    , m_customIcon(radio(u"个性图标"_s, u"customIconRadio"_s, this))
    , m_iconPath(edit(u"iconPathEdit"_s, this))
    , m_iconBrowse(button(u"查找"_s, u"iconBrowseButton"_s, this))
    , m_captionName(edit(u"captionNameEdit"_s, this))
    , m_defaultLogo(radio(u"默认图标"_s, u"defaultLogoRadio"_s, this))
    , m_customLogo(radio(u"个性图片"_s, u"customLogoRadio"_s, this))
    , m_logoPath(edit(u"logoPathEdit"_s, this))
    , m_logoBrowse(button(u"查找"_s, u"logoBrowseButton"_s, this))
    , m_chooseFile(DialogHelpers::systemFileChooser())
{
    setObjectName(u"setupCaptionBarDialog"_s);
    setWindowTitle(u"版本设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_captionName->setMaxLength(CaptionBarSettings::MaxCaptionLength);

    auto *iconGroup = new QButtonGroup(this);
    iconGroup->addButton(m_defaultIcon);
    iconGroup->addButton(m_customIcon);
    auto *logoGroup = new QButtonGroup(this);
    logoGroup->addButton(m_defaultLogo);
    logoGroup->addButton(m_customLogo);

    auto *nameBox = new QGroupBox(u"☆ LOGO名称 设置"_s, this);
    auto *nameGrid = new QGridLayout(nameBox);
    nameGrid->addWidget(m_defaultIcon, 0, 0);
    nameGrid->addWidget(m_customIcon, 0, 1);
    nameGrid->addWidget(m_iconPath, 1, 0, 1, 2);
    nameGrid->addWidget(m_iconBrowse, 1, 2);
    nameGrid->addWidget(new QLabel(u"☆ 图标大小不能超过 16X16 pixel."_s, nameBox), 2, 0, 1, 3);
    nameGrid->addWidget(m_captionName, 3, 0, 1, 2);
    nameGrid->addWidget(new QLabel(u"☆ 最多不能超过50个字母"_s, nameBox), 4, 0, 1, 3);

    auto *logoBox = new QGroupBox(u"☆ LOGO图片 设置"_s, this);
    auto *logoGrid = new QGridLayout(logoBox);
    logoGrid->addWidget(m_defaultLogo, 0, 0);
    logoGrid->addWidget(m_customLogo, 0, 1);
    logoGrid->addWidget(m_logoPath, 1, 0, 1, 2);
    logoGrid->addWidget(m_logoBrowse, 1, 2);
    logoGrid->addWidget(new QLabel(u"☆ 图片大小不能超过30X211 pixel."_s, logoBox), 2, 0, 1, 3);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(nameBox);
    layout->addWidget(logoBox);
    layout->addWidget(buttons);

    m_iconPath->setText(values.iconPath);
    m_captionName->setText(values.captionName);
    m_logoPath->setText(values.logoPath);
    (values.defaultIcon ? m_defaultIcon : m_customIcon)->setChecked(true);
    (values.defaultLogo ? m_defaultLogo : m_customLogo)->setChecked(true);
    connect(m_customIcon, &QRadioButton::toggled, this, &CSetupCaptionBarDlg::updateEnabled);
    connect(m_customLogo, &QRadioButton::toggled, this, &CSetupCaptionBarDlg::updateEnabled);
    connect(m_iconBrowse, &QPushButton::clicked, this, &CSetupCaptionBarDlg::browseIcon);
    connect(m_logoBrowse, &QPushButton::clicked, this, &CSetupCaptionBarDlg::browseLogo);
    updateEnabled();
}

void CSetupCaptionBarDlg::updateEnabled()
{
    const bool icon = m_customIcon->isChecked();
    m_iconPath->setEnabled(icon);
    m_iconBrowse->setEnabled(icon);
    m_captionName->setEnabled(icon);
    const bool logo = m_customLogo->isChecked();
    m_logoPath->setEnabled(logo);
    m_logoBrowse->setEnabled(logo);
}

CaptionBarSettings::Values CSetupCaptionBarDlg::values() const
{
    return { m_iconPath->text(), m_captionName->text(), m_logoPath->text(),
        m_defaultIcon->isChecked(), m_defaultLogo->isChecked() };
}

void CSetupCaptionBarDlg::browseIcon()
{
    const QString folder = m_programDirectory + u"/ico"_s;
    QDir().mkpath(folder);
    const QString path = m_chooseFile(this, u"标题文件查寻"_s, folder, u"ico Files (*.ico)"_s);
    if (path.isEmpty())
        return;
    QString refusal;
    switch (CaptionBarSettings::checkIcon(path)) {
    case CaptionBarSettings::IconCheck::CannotOpen:
        refusal = CaptionBarSettings::CannotOpenText;
        break;
    case CaptionBarSettings::IconCheck::TooLarge:
        refusal = CaptionBarSettings::TooLargeText;
        break;
    case CaptionBarSettings::IconCheck::Accepted:
        m_iconPath->setText(QDir::toNativeSeparators(path));
        return;
    }
    m_messages.showMessage({ refusal, QString(), MessageService::Buttons::Ok,
        MessageService::Icon::Exclamation, this });
}

void CSetupCaptionBarDlg::browseLogo()
{
    const QString folder = m_programDirectory + u"/LeftImages"_s;
    QDir().mkpath(folder);
    const QString path = m_chooseFile(this, u"LOGO图片查寻"_s, folder, u"BMP Files (*.BMP)"_s);
    if (path.isEmpty())
        return;
    m_logoPath->setText(QDir::toNativeSeparators(CaptionBarSettings::checkLogo(path)));
}
