#include "CVelmarboxSettingDlg.h"

#include "MessageService.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

const QString CVelmarboxSettingDlg::HomeHintText
    = u"VelmarBox文件夹基本设置.\n在用户计算机上设置 VelmarBox.\n按钮在设置新闻之下."_s;

CVelmarboxSettingDlg::CVelmarboxSettingDlg(
    VelmarBoxSettings settings, MessageService &messages, QWidget *parent)
    : QDialog(parent)
    , m_settings(std::move(settings))
    , m_messages(messages)
    , m_home(new QLineEdit(this))
    , m_pasvIp(new QLineEdit(this))
    , m_minPort(new QLineEdit(this))
    , m_maxPort(new QLineEdit(this))
    , m_chooseFolder(DialogHelpers::systemFolderChooser())
{
    setObjectName(u"velmarboxSettingDialog"_s);
    setWindowTitle(u"VelmarBox 设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    m_home->setObjectName(u"homeDirectoryEdit"_s);
    m_pasvIp->setObjectName(u"pasvIpEdit"_s);
    m_minPort->setObjectName(u"minPortEdit"_s);
    m_maxPort->setObjectName(u"maxPortEdit"_s);

    auto *caption = new QLabel(u" VelmarBox 服务器数据设置."_s, this);
    caption->setObjectName(u"captionLabel"_s);

    auto *service = new QGroupBox(u"VelmarBox 服务设置"_s, this);
    auto *folderButton = new QPushButton(u"文件夹地址(&R)"_s, service);
    folderButton->setObjectName(u"folderButton"_s);
    connect(folderButton, &QPushButton::clicked, this, &CVelmarboxSettingDlg::browseFolder);
    auto *serviceGrid = new QGridLayout(service);
    serviceGrid->addWidget(new QLabel(u"默认文件夹设置"_s, service), 0, 0);
    serviceGrid->addWidget(m_home, 0, 1);
    serviceGrid->addWidget(folderButton, 0, 2);

    auto *passive = new QGroupBox(u"Passive mode 设置"_s, this);
    auto *passiveGrid = new QGridLayout(passive);
    passiveGrid->addWidget(new QLabel(u"公众IP 地址:"_s, passive), 0, 0);
    passiveGrid->addWidget(m_pasvIp, 0, 1, 1, 3);
    passiveGrid->addWidget(new QLabel(u"端  口:"_s, passive), 1, 0);
    passiveGrid->addWidget(m_minPort, 1, 1);
    passiveGrid->addWidget(new QLabel(u"~"_s, passive), 1, 2);
    passiveGrid->addWidget(m_maxPort, 1, 3);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定 (&O)"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消 (&C)"_s, QDialogButtonBox::RejectRole)
        ->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CVelmarboxSettingDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addWidget(service);
    layout->addWidget(passive);
    layout->addWidget(buttons);
    resize(460, sizeHint().height());

    const VelmarBoxSettings::Values values = m_settings.open();
    m_home->setText(values.homeDirectory);
    m_pasvIp->setText(values.pasvIp);
    // A key that could not be opened leaves the fields empty.
    if (!values.homeDirectory.isEmpty() || values.minPort != 0 || values.maxPort != 0) {
        m_minPort->setText(QString::number(values.minPort));
        m_maxPort->setText(QString::number(values.maxPort));
    }
    m_home->installEventFilter(this);
}

void CVelmarboxSettingDlg::showHomeHint()
{
    MessageService::Balloon balloon;
    balloon.text = HomeHintText;
    balloon.icon = MessageService::Icon::Information;
    balloon.timeoutMs = 60000;
    balloon.anchor = m_home;
    balloon.hint = true;
    m_messages.showBalloon(balloon);
}

bool CVelmarboxSettingDlg::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_home) {
        if (event->type() == QEvent::FocusIn)
            showHomeHint();
        else if (event->type() == QEvent::FocusOut)
            m_messages.hideHint();
    }
    return QDialog::eventFilter(watched, event);
}

void CVelmarboxSettingDlg::moveEvent(QMoveEvent *event)
{
    QDialog::moveEvent(event);
    // The hint follows the dialog.
    if (m_home->hasFocus())
        showHomeHint();
}

void CVelmarboxSettingDlg::browseFolder()
{
    const QString folder = m_chooseFolder(this, u"Velmarbox选定使用默认的文件夹."_s);
    if (!folder.isEmpty())
        m_home->setText(folder);
}

void CVelmarboxSettingDlg::accept()
{
    int minPort = 0;
    int maxPort = 0;
    if (!DialogHelpers::takeInteger(m_messages, m_minPort, minPort, VelmarBoxSettings::LowestPort,
            VelmarBoxSettings::HighestPort)
        || !DialogHelpers::takeInteger(m_messages, m_maxPort, maxPort,
            VelmarBoxSettings::LowestPort, VelmarBoxSettings::HighestPort))
        return;
    if (!VelmarBoxSettings::portsInOrder(minPort, maxPort)) {
        m_messages.showMessage({ VelmarBoxSettings::PortErrorText, QString(),
            MessageService::Buttons::Ok, MessageService::Icon::Exclamation, this });
        return;
    }
    // A registry failure is not reported; the dialog closes all the same.
    m_settings.save({ m_home->text(), m_pasvIp->text(), minPort, maxPort });
    QDialog::accept();
}
