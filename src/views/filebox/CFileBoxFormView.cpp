#include "CFileBoxFormView.h"

#include "AuthorityCode.h"
#include "AuthorityDelegate.h"
#include "CAccessOverviewPanel.h"
#include "CFolderRightPickerDlg.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryNode.h"
#include "FolderListModel.h"
#include "FolderRightsModel.h"
#include "GroupTreeModel.h"
#include "MemberDragFormat.h"
#include "MemberListModel.h"
#include "MessageService.h"
#include "RightDropFilter.h"
#include "RightRowDelegate.h"
#include "UserInfo.h"
#include "ViewRefusal.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QTableView>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QPushButton *button(const QString &text, const QString &name, QWidget *parent)
{
    auto *result = new QPushButton(text, parent);
    result->setObjectName(name);
    result->setAccessibleName(text);
    return result;
}

QLabel *caption(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

// Delete on a table runs an operation while the table has the focus.
void onDeleteKey(QTableView *table, std::function<void()> operation)
{
    auto *action = new QAction(table);
    action->setShortcut(QKeySequence::Delete);
    action->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(action, &QAction::triggered, table, std::move(operation));
    table->addAction(action);
}

} // namespace

CFileBoxFormView::CFileBoxFormView(CVelmarManagerDoc &document, MessageService &messages,
    std::function<QString()> homeDirectory, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_messages(messages)
    , m_homeDirectory(std::move(homeDirectory))
    , m_folders(new FolderListModel(document, this))
    , m_rights(new FolderRightsModel(document, this))
{
    setObjectName(u"fileBoxView"_s);

    auto *rightsPage = new QSplitter(Qt::Horizontal);
    rightsPage->setObjectName(u"fileBoxSplitter"_s);
    rightsPage->setChildrenCollapsible(false);
    rightsPage->addWidget(makeFolderPane());
    rightsPage->addWidget(makeRightsPane());
    rightsPage->addWidget(makeSourcePane());
    rightsPage->setStretchFactor(0, 3);
    rightsPage->setStretchFactor(1, 4);
    rightsPage->setStretchFactor(2, 3);
    rightsPage->setSizes({ 260, 340, 260 });

    m_overview = new CAccessOverviewPanel(document, m_folders, messages);

    m_pages = new QTabWidget(this);
    m_pages->setObjectName(u"fileBoxPages"_s);
    m_pages->setAccessibleName(u"文件夹权限"_s);
    m_pages->addTab(rightsPage, u"文件夹权限"_s);
    m_pages->addTab(m_overview, u"访问概览"_s);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);

    connect(m_folderTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &CFileBoxFormView::folderChanged);
    // A reset (undo of an added or removed folder, a reload) loses the
    // current row: the same folder is chosen again when it is still there,
    // else the first one.
    connect(m_folders, &QAbstractItemModel::modelAboutToBeReset, this,
        [this] { m_folderBeforeReset = currentFolderId(); });
    connect(m_folders, &QAbstractItemModel::modelReset, this, [this] {
        if (selectFolder(m_folderBeforeReset))
            return;
        if (m_folders->rowCount() > 0)
            selectFolder(m_folders->folderIdAt(0));
        else
            folderChanged();
    });
    // A reload empties the rights model after the folder list chose its
    // first folder again (the models follow the document in the order they
    // were made): the rights are shown again once both have followed.
    connect(&document, &CVelmarManagerDoc::adopted, this, &CFileBoxFormView::folderChanged);
    connect(
        m_rights, &QAbstractItemModel::modelReset, this, &CFileBoxFormView::openAuthorityEditors);
    connect(m_rightsTable->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &CFileBoxFormView::updateButtons);
    // A double-click asks the overview: who a folder reaches, what reaches a member.
    connect(
        m_folderTable, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
            m_pages->setCurrentWidget(m_overview);
            m_overview->showFolder(m_folders->folderIdAt(index.row()));
        });
    connect(
        m_rightsTable, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
            if (index.data(FolderRightsModel::IsGroupRole).toBool()
                || index.data(FolderRightsModel::MissingRole).toBool())
                return;
            const UserInfo *member = m_document.directory()->findMember(
                index.data(FolderRightsModel::OwnerIdRole).toInt());
            m_pages->setCurrentWidget(m_overview);
            m_overview->memberField()->setText(member->loginName);
            m_overview->showMember(member->loginName);
        });
    if (m_folders->rowCount() > 0)
        selectFolder(m_folders->folderIdAt(0));
    folderChanged();
}

QWidget *CFileBoxFormView::makeFolderPane()
{
    auto *pane = new QWidget;
    m_folderTable = new QTableView(pane);
    m_folderTable->setObjectName(u"folderTable"_s);
    m_folderTable->setAccessibleName(u"文件夹"_s);
    m_folderTable->setModel(m_folders);
    m_folderTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_folderTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_folderTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_folderTable->verticalHeader()->hide();
    m_folderTable->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    QHeaderView *header = m_folderTable->horizontalHeader();
    header->setSectionResizeMode(FolderListModel::PathColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(FolderListModel::FolderIdColumn, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(FolderListModel::RightsCountColumn, QHeaderView::ResizeToContents);
    new RightDropFilter(
        m_folderTable,
        [this](const QPoint &position) {
            const QModelIndex index = m_folderTable->indexAt(position);
            return index.isValid() ? m_folders->folderIdAt(index.row()) : -1;
        },
        [this](
            const QMimeData *data) { return !ownersOf(*m_document.directory(), data).isEmpty(); },
        [this](qint32 folderId, const QMimeData *data) { dropRights(folderId, data); });
    onDeleteKey(m_folderTable, [this] { removeFolder(); });

    auto *pathLabel = new QLabel(u"文件夹路径:"_s, pane);
    m_pathField = new QLineEdit(pane);
    m_pathField->setObjectName(u"folderPathField"_s);
    m_pathField->setAccessibleName(u"文件夹路径"_s);
    m_pathField->setPlaceholderText(u"\\部门共享\\市场部"_s);
    pathLabel->setBuddy(m_pathField);
    m_browseButton = button(u"浏览..."_s, u"browseFolderButton"_s, pane);
    m_addFolderButton = button(u"添加文件夹"_s, u"addFolderButton"_s, pane);
    m_removeFolderButton = button(u"删除文件夹"_s, u"removeFolderButton"_s, pane);
    connect(m_browseButton, &QPushButton::clicked, this, &CFileBoxFormView::browse);
    connect(m_addFolderButton, &QPushButton::clicked, this, &CFileBoxFormView::addFolder);
    connect(m_pathField, &QLineEdit::returnPressed, this, &CFileBoxFormView::addFolder);
    connect(m_removeFolderButton, &QPushButton::clicked, this, &CFileBoxFormView::removeFolder);

    auto *layout = new QGridLayout(pane);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(caption(u"文件夹"_s, pane), 0, 0, 1, 3);
    layout->addWidget(m_folderTable, 1, 0, 1, 3);
    layout->addWidget(pathLabel, 2, 0, 1, 3);
    layout->addWidget(m_pathField, 3, 0, 1, 2);
    layout->addWidget(m_browseButton, 3, 2);
    layout->addWidget(m_addFolderButton, 4, 1);
    layout->addWidget(m_removeFolderButton, 4, 2);
    layout->setColumnStretch(0, 1);
    layout->setRowStretch(1, 1);
    return pane;
}

QWidget *CFileBoxFormView::makeRightsPane()
{
    auto *pane = new QWidget;
    m_rightsTitle = caption(QString(), pane);
    m_rightsTitle->setObjectName(u"rightsTitle"_s);
    m_rightsTitle->setTextFormat(Qt::PlainText);
    m_rightsTable = new QTableView(pane);
    m_rightsTable->setObjectName(u"rightsTable"_s);
    m_rightsTable->setAccessibleName(u"权限"_s);
    m_rightsTable->setModel(m_rights);
    m_rightsTable->setItemDelegate(new RightRowDelegate(m_rightsTable));
    m_rightsTable->setItemDelegateForColumn(
        FolderRightsModel::AuthorityColumn, new AuthorityDelegate(m_rightsTable));
    m_rightsTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_rightsTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_rightsTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_rightsTable->verticalHeader()->hide();
    m_rightsTable->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 12);
    QHeaderView *header = m_rightsTable->horizontalHeader();
    header->moveSection(FolderRightsModel::MemberNameColumn, FolderRightsModel::KindColumn);
    header->setSectionResizeMode(FolderRightsModel::NameColumn, QHeaderView::Stretch);
    header->resizeSection(FolderRightsModel::MemberNameColumn, 80);
    header->resizeSection(FolderRightsModel::KindColumn, 64);
    header->resizeSection(FolderRightsModel::AuthorityColumn, 80);
    new RightDropFilter(
        m_rightsTable, [this](const QPoint &) { return currentFolderId(); },
        [this](
            const QMimeData *data) { return !ownersOf(*m_document.directory(), data).isEmpty(); },
        [this](qint32 folderId, const QMimeData *data) { dropRights(folderId, data); });
    onDeleteKey(m_rightsTable, [this] { removeSelectedRights(); });

    m_addRightButton = button(u"添加权限..."_s, u"addRightButton"_s, pane);
    m_removeRightButton = button(u"删除权限"_s, u"removeRightButton"_s, pane);
    connect(m_addRightButton, &QPushButton::clicked, this, &CFileBoxFormView::addRightsWithPicker);
    connect(
        m_removeRightButton, &QPushButton::clicked, this, &CFileBoxFormView::removeSelectedRights);
    auto *hint = new QLabel(u"把类别或用户拖到文件夹或这里, 添加只读权限."_s, pane);
    hint->setObjectName(u"rightsHint"_s);
    hint->setWordWrap(true);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_addRightButton);
    buttons->addWidget(m_removeRightButton);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(m_rightsTitle);
    layout->addWidget(m_rightsTable, 1);
    layout->addWidget(hint);
    layout->addLayout(buttons);
    return pane;
}

QWidget *CFileBoxFormView::makeSourcePane()
{
    auto *pane = new QWidget;
    auto *sources = new QTabWidget(pane);
    sources->setObjectName(u"rightSources"_s);
    sources->setAccessibleName(u"类别和用户"_s);
    m_regularTree = makeSourceTree(false, sources);
    m_guestTree = makeSourceTree(true, sources);
    m_regularMembers = makeSourceMembers(false, sources);
    m_guestMembers = makeSourceMembers(true, sources);
    sources->addTab(m_regularTree, u"类别"_s);
    sources->addTab(m_guestTree, u"论坛结构"_s);
    sources->addTab(m_regularMembers, u"用户"_s);
    sources->addTab(m_guestMembers, u"论坛用户"_s);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(caption(u"类别和用户"_s, pane));
    layout->addWidget(sources, 1);
    return pane;
}

QTreeView *CFileBoxFormView::makeSourceTree(bool guest, QWidget *parent)
{
    auto *tree = new QTreeView(parent);
    tree->setObjectName(guest ? u"sourceGuestTree"_s : u"sourceGroupTree"_s);
    tree->setAccessibleName(guest ? u"论坛结构"_s : u"类别"_s);
    tree->setHeaderHidden(true);
    tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setDragEnabled(true);
    tree->setDragDropMode(QAbstractItemView::DragOnly);
    tree->setDefaultDropAction(Qt::CopyAction);
    GroupTreeModel *model = m_document.directory()->tree(guest);
    tree->setModel(model);
    tree->expand(model->rootIndex());
    connect(model, &QAbstractItemModel::modelReset, tree,
        [tree, model] { tree->expand(model->rootIndex()); });
    return tree;
}

QTableView *CFileBoxFormView::makeSourceMembers(bool guest, QWidget *parent)
{
    auto *list = new QTableView(parent);
    list->setObjectName(guest ? u"sourceGuestMembers"_s : u"sourceMembers"_s);
    list->setAccessibleName(guest ? u"论坛用户"_s : u"用户"_s);
    // The member grid's blank new-member row has no place here.
    auto *members = new QSortFilterProxyModel(list);
    members->setSourceModel(m_document.directory()->members(guest));
    members->setFilterRole(MemberListModel::IsBlankRowRole);
    members->setFilterFixedString(u"false"_s);
    list->setModel(members);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setDragEnabled(true);
    list->setDragDropMode(QAbstractItemView::DragOnly);
    list->setDefaultDropAction(Qt::CopyAction);
    list->verticalHeader()->hide();
    list->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    for (int column = MemberListModel::DisplayNameColumn + 1; column < MemberListModel::ColumnCount;
         ++column)
        list->hideColumn(column);
    list->horizontalHeader()->setStretchLastSection(true);
    return list;
}

qint32 CFileBoxFormView::currentFolderId() const
{
    const QModelIndex index = m_folderTable->currentIndex();
    return index.isValid() ? m_folders->folderIdAt(index.row()) : -1;
}

bool CFileBoxFormView::selectFolder(qint32 folderId)
{
    const int row = m_folders->rowOfFolder(folderId);
    if (row < 0)
        return false;
    m_folderTable->setCurrentIndex(m_folders->index(row, FolderListModel::PathColumn));
    m_folderTable->scrollTo(m_folderTable->currentIndex());
    folderChanged();
    return true;
}

void CFileBoxFormView::folderChanged()
{
    const qint32 folderId = currentFolderId();
    if (folderId != m_rights->folderId())
        m_rights->setFolder(folderId);
    m_rightsTitle->setText(folderId < 0
            ? u"权限"_s
            : u"%1 的权限"_s.arg(m_document.fileBox().pathByFolderId(folderId)));
    updateButtons();
}

void CFileBoxFormView::openAuthorityEditors()
{
    // The drop-down stands in every row, so that a right is changed in one click.
    for (int row = 0; row < m_rights->rowCount(); ++row)
        m_rightsTable->openPersistentEditor(
            m_rights->index(row, FolderRightsModel::AuthorityColumn));
    updateButtons();
}

void CFileBoxFormView::updateButtons()
{
    const bool folder = currentFolderId() >= 0;
    m_removeFolderButton->setEnabled(folder);
    m_addRightButton->setEnabled(folder);
    m_removeRightButton->setEnabled(folder && m_rightsTable->selectionModel()->hasSelection());
}

void CFileBoxFormView::showRefusal(const EditRefusal &refusal, QWidget *anchor)
{
    ::showRefusal(m_messages, refusal, anchor);
}

bool CFileBoxFormView::addFolder()
{
    const EditResult result = FileBoxEditor(m_document).addFolder(m_pathField->text());
    if (!result.ok()) {
        showRefusal(*result.refusal, m_pathField);
        return false;
    }
    m_pathField->clear();
    selectFolder(result.id);
    return true;
}

bool CFileBoxFormView::removeFolder()
{
    const qint32 folderId = currentFolderId();
    if (folderId < 0)
        return false;
    MessageService::Box box;
    box.text = u"删除文件夹 \"%1\" 以及它的 %2 项权限吗?"_s.arg(
        m_document.fileBox().pathByFolderId(folderId),
        QString::number(m_document.fileBox().rightsCountOfFolder(folderId)));
    box.title = u"删除文件夹"_s;
    box.buttons = MessageService::Buttons::YesNo;
    box.icon = MessageService::Icon::Question;
    box.parent = this;
    if (m_messages.showMessage(box) != MessageService::Yes)
        return false;
    const int row = m_folderTable->currentIndex().row();
    const EditResult result = FileBoxEditor(m_document).removeFolder(folderId);
    if (!result.ok()) {
        showRefusal(*result.refusal, m_folderTable);
        return false;
    }
    // The folder that took its place, or the one above when it was the last.
    if (m_folders->rowCount() > 0)
        selectFolder(m_folders->folderIdAt(std::min(row, m_folders->rowCount() - 1)));
    return true;
}

bool CFileBoxFormView::removeSelectedRights()
{
    const qint32 folderId = currentFolderId();
    QList<FileBoxEditor::Owner> owners;
    for (const QModelIndex &index : m_rightsTable->selectionModel()->selectedRows()) {
        owners.append({ index.data(FolderRightsModel::IsGroupRole).toBool(),
            index.data(FolderRightsModel::OwnerIdRole).toInt() });
    }
    if (folderId < 0 || owners.isEmpty())
        return false;
    const EditResult result = FileBoxEditor(m_document).removeRights(folderId, owners);
    if (!result.ok())
        showRefusal(*result.refusal, m_rightsTable);
    return result.ok();
}

void CFileBoxFormView::addRightsWithPicker()
{
    const qint32 folderId = currentFolderId();
    if (folderId < 0)
        return;
    CFolderRightPickerDlg picker(m_document, m_document.fileBox().pathByFolderId(folderId), this);
    if (picker.exec() != QDialog::Accepted)
        return;
    const EditResult result
        = FileBoxEditor(m_document).addRights(folderId, picker.owners(), picker.authority());
    if (!result.ok())
        showRefusal(*result.refusal, m_rightsTable);
}

QList<FileBoxEditor::Owner> CFileBoxFormView::ownersOf(
    const Directory &directory, const QMimeData *data)
{
    QList<FileBoxEditor::Owner> owners;
    if (!data)
        return owners;
    if (const auto members = MemberDragFormat::fromMimeData(data)) {
        for (const DraggedMember &member : *members)
            owners.append({ false, member.id });
        return owners;
    }
    if (data->hasFormat(GroupTreeModel::nodeMimeType())) {
        for (const bool guest : { false, true }) {
            const DirectoryNode *node = directory.tree(guest)->draggedNode(data);
            if (node && node->isGroup())
                owners.append({ true, node->id() });
            else if (node && node->isMembership())
                owners.append({ false, node->id() });
        }
    }
    return owners;
}

bool CFileBoxFormView::dropRights(qint32 folderId, const QMimeData *data)
{
    const QList<FileBoxEditor::Owner> owners = ownersOf(*m_document.directory(), data);
    const EditResult result
        = FileBoxEditor(m_document).addRights(folderId, owners, AuthorityCode::ReadOnly);
    selectFolder(folderId);
    if (!result.ok()) {
        showRefusal(*result.refusal, m_rightsTable);
        return false;
    }
    return true;
}

QString CFileBoxFormView::folderPathFor(const QString &picked, const QString &home)
{
    const QString folder = QDir::cleanPath(picked);
    const QString root = QDir::cleanPath(home);
    QString path = folder;
    if (!root.isEmpty() && (folder == root || folder.startsWith(root + u'/')))
        path = folder.mid(root.size());
    path.replace(u'/', u'\\');
    return path.isEmpty() ? u"\\"_s : path;
}

void CFileBoxFormView::browse()
{
    const QString home = m_homeDirectory ? m_homeDirectory() : QString();
    const QString picked = QFileDialog::getExistingDirectory(this, u"选择文件夹"_s, home);
    if (picked.isEmpty())
        return;
    m_pathField->setText(folderPathFor(picked, home));
    m_pathField->setFocus();
}
