#include "CSetupHomepageDlg.h"

#include "CEditHomepageDlg.h"
#include "DialogHelpers.h"
#include "MessageService.h"
#include "ServerNotifier.h"

#include <algorithm>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CSetupHomepageDlg::CSetupHomepageDlg(
    const QString &profilePath, MessageService &messages, QWidget *parent)
    : QDialog(parent)
    , m_settings(profilePath)
    , m_messages(messages)
    , m_list(new QTreeWidget(this))
    , m_runEdit([](CEditHomepageDlg &dialog) { return dialog.exec(); })
{
    setObjectName(u"setupHomepageDialog"_s);
    setWindowTitle(u"网站主页设置"_s);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *caption = new QLabel(u"☆ 主页地址设置"_s, this);
    caption->setObjectName(u"sectionCaption"_s);
    m_list->setObjectName(u"siteList"_s);
    m_list->setRootIsDecorated(false);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setHeaderLabels({ u"显示姓名"_s, u"文件地址"_s });
    m_list->setColumnWidth(0, 120);
    m_list->setColumnWidth(1, 175);

    auto *add = new QPushButton(u"追加(&A)"_s, this);
    add->setObjectName(u"addButton"_s);
    auto *remove = new QPushButton(u"清除(&R)"_s, this);
    remove->setObjectName(u"removeButton"_s);
    connect(add, &QPushButton::clicked, this, &CSetupHomepageDlg::addSite);
    connect(remove, &QPushButton::clicked, this, &CSetupHomepageDlg::removeSites);
    auto *listButtons = new QVBoxLayout;
    listButtons->addWidget(add);
    listButtons->addWidget(remove);
    listButtons->addStretch();
    auto *listRow = new QHBoxLayout;
    listRow->addWidget(m_list, 1);
    listRow->addLayout(listButtons);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"okButton"_s);
    ok->setDefault(true);
    buttons->addButton(u"取消"_s, QDialogButtonBox::RejectRole)->setObjectName(u"cancelButton"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &CSetupHomepageDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(caption);
    layout->addLayout(listRow);
    layout->addWidget(buttons);
    resize(440, 320);

    for (const Site &site : m_settings.load())
        appendRow(site);
}

void CSetupHomepageDlg::appendRow(const Site &site)
{
    const Site shown = SiteListSettings::row(site);
    auto *item = new QTreeWidgetItem(m_list);
    item->setText(0, shown.name);
    item->setText(1, shown.address);
}

void CSetupHomepageDlg::addSite()
{
    if (m_list->topLevelItemCount() >= SiteListSettings::MaxSites) {
        m_messages.showMessage({ SiteListSettings::TooManyText, QString(),
            MessageService::Buttons::Ok, MessageService::Icon::Exclamation, this });
        return;
    }
    CEditHomepageDlg dialog(m_messages, this);
    if (m_runEdit(dialog) != QDialog::Accepted)
        return;
    appendRow({ dialog.name(), dialog.address() });
}

void CSetupHomepageDlg::removeSites()
{
    DialogHelpers::removeSelectedRows(m_list);
}

void CSetupHomepageDlg::accept()
{
    QList<Site> rows;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        rows.append({ m_list->topLevelItem(i)->text(0), m_list->topLevelItem(i)->text(1) });
    m_settings.save(rows);
    QDialog::accept();
    // The distribution server passes the list on to the clients.
    ServerNotifier(m_messages)
        .notify(ServerNotification::DistributionPort, ServerNotification::PresentationChanged);
}
