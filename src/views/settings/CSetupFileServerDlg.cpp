#include "CSetupFileServerDlg.h"

#include "CEditFileServerDlg.h"
#include "DialogHelpers.h"

#include <algorithm>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CSetupFileServerDlg::CSetupFileServerDlg(SessionServerList settings, MessageService &messages,
    std::function<QString()> localAddress, QWidget *parent)
    : QDialog(parent)
    , m_settings(std::move(settings))
    , m_messages(messages)
    , m_list(new QTreeWidget(this))
    , m_keeping(new QLineEdit(this))
    , m_sizeCheck(new QCheckBox(u"设置服务器保存文件最大磁盘空间 : "_s, this))
    , m_size(new QLineEdit(this))
    , m_runEdit([](CEditFileServerDlg &dialog) { return dialog.exec(); })
{
    setObjectName(u"setupFileServerDialog"_s);
    setWindowTitle(u"文件服务设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    m_list->setObjectName(u"serverList"_s);
    m_list->setRootIsDecorated(false);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setHeaderLabels({ u"IP 地址"_s, u"Port 端口"_s, u"是否使用"_s });
    // The port is kept in the row but not seen.
    m_list->header()->setMinimumSectionSize(0);
    m_list->header()->setStretchLastSection(false);
    m_list->setColumnWidth(0, 230);
    m_list->setColumnWidth(1, 0);
    m_list->setColumnWidth(2, 80);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &CSetupFileServerDlg::editServer);

    auto *add = new QPushButton(u"追加(&A)"_s, this);
    add->setObjectName(u"addButton"_s);
    auto *remove = new QPushButton(u"清除(&R)"_s, this);
    remove->setObjectName(u"removeButton"_s);
    auto *edit = new QPushButton(u"编辑(&E)"_s, this);
    edit->setObjectName(u"editButton"_s);
    connect(add, &QPushButton::clicked, this, &CSetupFileServerDlg::addServer);
    connect(remove, &QPushButton::clicked, this, &CSetupFileServerDlg::removeServers);
    connect(edit, &QPushButton::clicked, this, &CSetupFileServerDlg::editServer);
    auto *listButtons = new QVBoxLayout;
    listButtons->addWidget(add);
    listButtons->addWidget(remove);
    listButtons->addWidget(edit);
    listButtons->addStretch();
    auto *listRow = new QHBoxLayout;
    listRow->addWidget(m_list, 1);
    listRow->addLayout(listButtons);

    m_keeping->setObjectName(u"keepingEdit"_s);
    m_sizeCheck->setObjectName(u"sizeCheck"_s);
    m_size->setObjectName(u"sizeEdit"_s);
    connect(m_sizeCheck, &QCheckBox::toggled, m_size, &QWidget::setEnabled);
    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(u"文件服务器保存文件时间    天数"_s, this), 0, 0);
    grid->addWidget(m_keeping, 0, 1);
    grid->addWidget(new QLabel(u"日"_s, this), 0, 2);
    grid->addWidget(m_sizeCheck, 1, 0);
    grid->addWidget(m_size, 1, 1);
    grid->addWidget(new QLabel(u"MB"_s, this), 1, 2);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CSetupFileServerDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(listRow);
    layout->addLayout(grid);
    layout->addWidget(buttons);
    resize(480, 360);

    const int maxSize = m_settings.fileTransMaxSize();
    m_sizeCheck->setChecked(maxSize != 0);
    m_size->setText(QString::number(maxSize));
    m_size->setEnabled(maxSize != 0);
    for (const SessionServerEntry &entry : m_settings.LoadSessionServerList(localAddress))
        appendRow(entry);
    m_keeping->setText(QString::number(m_settings.keepingDuration()));
}

void CSetupFileServerDlg::fillRow(QTreeWidgetItem *item, const QString &address, bool enabled)
{
    item->setText(0, address);
    item->setText(1, SessionServerList::PortText);
    item->setText(2, SessionServerList::enabledText(enabled));
}

void CSetupFileServerDlg::appendRow(const SessionServerEntry &entry)
{
    auto *item = new QTreeWidgetItem(m_list);
    fillRow(item, entry.address, entry.enabled);
}

void CSetupFileServerDlg::addServer()
{
    CEditFileServerDlg dialog(this);
    dialog.setEntry(QString(), false);
    if (m_runEdit(dialog) != QDialog::Accepted)
        return;
    appendRow({ dialog.address(), SessionServerList::SessionPort, dialog.isEnabled() });
}

void CSetupFileServerDlg::editServer()
{
    QTreeWidgetItem *first = nullptr;
    for (int i = 0; i < m_list->topLevelItemCount() && !first; ++i) {
        if (m_list->topLevelItem(i)->isSelected())
            first = m_list->topLevelItem(i);
    }
    if (!first)
        return;
    CEditFileServerDlg dialog(this);
    dialog.setEntry(first->text(0), first->text(2) == SessionServerList::EnabledText);
    if (m_runEdit(dialog) != QDialog::Accepted)
        return;
    fillRow(first, dialog.address(), dialog.isEnabled());
}

void CSetupFileServerDlg::removeServers()
{
    DialogHelpers::removeSelectedRows(m_list);
}

void CSetupFileServerDlg::accept()
{
    int keeping = 0;
    int size = 0;
    if (!DialogHelpers::takeInteger(m_messages, m_keeping, keeping)
        || !DialogHelpers::takeInteger(m_messages, m_size, size))
        return;
    QList<SessionServerEntry> rows;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *item = m_list->topLevelItem(i);
        rows.append({ item->text(0), quint16(item->text(1).toUInt()),
            item->text(2) == SessionServerList::EnabledText });
    }
    if (!m_sizeCheck->isChecked())
        size = 0;
    // A list key that cannot be opened keeps the dialog open with nothing saved.
    if (!m_settings.save(rows, keeping, size))
        return;
    QDialog::accept();
}
