#include "CLogManagerSettingDlg.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CLogManagerSettingDlg::CLogManagerSettingDlg(
    RegistryHives &hives, const QString &programDirectory, QWidget *parent)
    : QDialog(parent)
    , m_settings(hives, programDirectory)
    , m_path(new QLineEdit(this))
    , m_delete(new QCheckBox(u"设置保存服务器日志的天数，超过将删除日志。"_s, this))
    , m_days(new QLineEdit(this))
    , m_logEnable(new QCheckBox(u"关闭服务器日志(申请服务后，将重新启动.)"_s, this))
    , m_chooseFolder(DialogHelpers::systemFolderChooser())
{
    setObjectName(u"logManagerSettingDialog"_s);
    setWindowTitle(u"日志 设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_path->setObjectName(u"logPathEdit"_s);
    m_delete->setObjectName(u"deleteLogCheck"_s);
    m_days->setObjectName(u"keepingDaysEdit"_s);
    m_logEnable->setObjectName(u"logEnableCheck"_s);

    auto *caption = new QLabel(u"设置或更改日志存放位置和时间."_s, this);
    caption->setObjectName(u"captionLabel"_s);
    auto *location = new QGroupBox(u"设置存放日志地址"_s, this);
    auto *choose = new QPushButton(u"选择地址(&R)"_s, location);
    choose->setObjectName(u"chooseFolderButton"_s);
    connect(choose, &QPushButton::clicked, this, &CLogManagerSettingDlg::browseFolder);
    auto *grid = new QGridLayout(location);
    grid->addWidget(m_path, 0, 0, 1, 2);
    grid->addWidget(choose, 0, 2);
    grid->addWidget(m_delete, 1, 0, 1, 3);
    grid->addWidget(m_days, 2, 0);
    grid->addWidget(new QLabel(u"日"_s, location), 2, 1);
    grid->addWidget(m_logEnable, 3, 0, 1, 3);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定 (&O)"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消 (&C)"_s, QDialogButtonBox::RejectRole)
        ->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CLogManagerSettingDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(location);
    layout->addWidget(buttons);
    resize(460, sizeHint().height());

    const LogSettings::Values values = m_settings.load();
    m_path->setText(m_settings.shownPath(values));
    m_delete->setChecked(values.deleteAfterDuration);
    m_days->setText(QString::number(values.keepingDuration));
    m_days->setEnabled(values.deleteAfterDuration);
    m_logEnable->setChecked(values.logEnable);
    connect(m_delete, &QCheckBox::toggled, m_days, &QWidget::setEnabled);
}

void CLogManagerSettingDlg::browseFolder()
{
    const QString folder = m_chooseFolder(this, u"选择保存登陆信息的文件夹."_s);
    if (!folder.isEmpty())
        m_path->setText(folder);
}

void CLogManagerSettingDlg::accept()
{
    // Nothing is checked: the values are stored as they stand.
    m_settings.save({ m_path->text(), m_delete->isChecked(),
        LogSettings::daysFromText(m_days->text()), m_logEnable->isChecked() });
    QDialog::accept();
}
