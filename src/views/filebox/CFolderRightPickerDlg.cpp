#include "CFolderRightPickerDlg.h"

#include "AuthorityCode.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryNode.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CFolderRightPickerDlg::CFolderRightPickerDlg(
    CVelmarManagerDoc &document, const QString &folderPath, QWidget *parent)
    : QDialog(parent)
    , m_document(document)
{
    setObjectName(u"folderRightPicker"_s);
    setWindowTitle(u"添加权限 - %1"_s.arg(folderPath));
    resize(520, 480);

    m_pages = new QTabWidget(this);
    m_pages->setObjectName(u"pickerPages"_s);
    m_pages->setAccessibleName(u"类别和用户"_s);
    m_regularTree = makeTree(false);
    m_guestTree = makeTree(true);
    m_pages->addTab(m_regularTree, u"类别"_s);
    m_pages->addTab(m_guestTree, u"论坛结构"_s);

    auto *members = new QWidget(m_pages);
    m_filter = new QLineEdit(members);
    m_filter->setObjectName(u"memberFilter"_s);
    m_filter->setAccessibleName(u"查找"_s);
    m_filter->setPlaceholderText(u"用户ID"_s);
    m_regularMembers = makeMemberList(false, m_regularProxy);
    m_guestMembers = makeMemberList(true, m_guestProxy);
    m_memberPages = new QTabWidget(members);
    m_memberPages->setAccessibleName(u"用户"_s);
    m_memberPages->addTab(m_regularMembers, u"用户"_s);
    m_memberPages->addTab(m_guestMembers, u"论坛用户"_s);
    auto *memberLayout = new QVBoxLayout(members);
    memberLayout->addWidget(m_filter);
    memberLayout->addWidget(m_memberPages, 1);
    m_pages->addTab(members, u"用户"_s);
    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString &text) {
        const QRegularExpression pattern(
            QRegularExpression::escape(text), QRegularExpression::CaseInsensitiveOption);
        for (QSortFilterProxyModel *proxy : { m_regularProxy, m_guestProxy })
            proxy->setFilterRegularExpression(pattern);
    });

    m_authority = new QComboBox(this);
    m_authority->setObjectName(u"pickerAuthority"_s);
    m_authority->setAccessibleName(u"权限"_s);
    for (const qint32 code : { AuthorityCode::ReadOnly, AuthorityCode::ReadWrite })
        m_authority->addItem(AuthorityCode::displayText(code), code);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(u"pickerButtons"_s);
    buttons->button(QDialogButtonBox::Ok)->setText(u"确定"_s);
    buttons->button(QDialogButtonBox::Ok)->setAccessibleName(u"确定"_s);
    buttons->button(QDialogButtonBox::Cancel)->setText(u"取消"_s);
    buttons->button(QDialogButtonBox::Cancel)->setAccessibleName(u"取消"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *form = new QFormLayout;
    form->addRow(u"权限:"_s, m_authority);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_pages, 1);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

QTreeView *CFolderRightPickerDlg::makeTree(bool guest)
{
    auto *tree = new QTreeView(this);
    tree->setObjectName(guest ? u"pickerGuestTree"_s : u"pickerGroupTree"_s);
    tree->setAccessibleName(guest ? u"论坛结构"_s : u"类别"_s);
    tree->setHeaderHidden(true);
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    GroupTreeModel *model = m_document.directory()->tree(guest);
    tree->setModel(model);
    tree->expand(model->rootIndex());
    return tree;
}

QTableView *CFolderRightPickerDlg::makeMemberList(bool guest, QSortFilterProxyModel *&proxy)
{
    auto *list = new QTableView(this);
    list->setObjectName(guest ? u"pickerGuestMembers"_s : u"pickerMembers"_s);
    list->setAccessibleName(guest ? u"论坛用户"_s : u"用户"_s);
    proxy = new QSortFilterProxyModel(list);
    proxy->setSourceModel(m_document.directory()->members(guest));
    proxy->setFilterKeyColumn(MemberListModel::LoginNameColumn);
    list->setModel(proxy);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->verticalHeader()->hide();
    for (int column = MemberListModel::DisplayNameColumn + 1; column < MemberListModel::ColumnCount;
         ++column)
        list->hideColumn(column);
    list->horizontalHeader()->setStretchLastSection(true);
    return list;
}

QList<FileBoxEditor::Owner> CFolderRightPickerDlg::owners() const
{
    QList<FileBoxEditor::Owner> result;
    const int page = m_pages->currentIndex();
    if (page == 0 || page == 1) {
        QTreeView *tree = page == 1 ? m_guestTree : m_regularTree;
        for (const QModelIndex &index : tree->selectionModel()->selectedRows()) {
            const auto kind = DirectoryNode::Kind(index.data(GroupTreeModel::NodeKindRole).toInt());
            if (kind == DirectoryNode::Kind::Group)
                result.append({ true, index.data(GroupTreeModel::GroupIdRole).toInt() });
            else if (kind == DirectoryNode::Kind::Membership)
                result.append({ false, index.data(GroupTreeModel::MemberIdRole).toInt() });
        }
        return result;
    }
    QTableView *list = m_memberPages->currentIndex() == 1 ? m_guestMembers : m_regularMembers;
    for (const QModelIndex &index : list->selectionModel()->selectedRows()) {
        if (!index.data(MemberListModel::IsBlankRowRole).toBool())
            result.append({ false, index.data(MemberListModel::MemberIdRole).toInt() });
    }
    return result;
}

qint32 CFolderRightPickerDlg::authority() const
{
    return m_authority->currentData().toInt();
}
