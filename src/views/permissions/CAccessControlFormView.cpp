#include "CAccessControlFormView.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "FrozenGridView.h"
#include "GroupTreeModel.h"
#include "PermissionCellDelegate.h"
#include "PermissionEditor.h"
#include "PermissionTableModel.h"
#include "ViewRefusal.h"

#include <algorithm>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QLabel *caption(const QString &text, const QString &name, QWidget *parent, double scale = 1.0)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    return label;
}

} // namespace

CAccessControlFormView::CAccessControlFormView(
    CVelmarManagerDoc &document, MessageService &messages, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_messages(messages)
    , m_tree(new QTreeView)
    , m_model(new PermissionTableModel(document, this))
    , m_grid(new FrozenGridView)
{
    setObjectName(u"accessControlView"_s);
    setAccessibleName(u"权限管理"_s);

    auto *title = caption(u"权限管理"_s, u"titleCaption"_s, this, 1.3);
    title->setContentsMargins(6, 4, 6, 4);

    // The document's own tree: read here, edited in the organisation view.
    GroupTreeModel *treeModel = document.directory()->regularTree();
    m_tree->setObjectName(u"groupTree"_s);
    m_tree->setAccessibleName(u"类别"_s);
    m_tree->setModel(treeModel);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setDragDropMode(QAbstractItemView::NoDragDrop);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
        &CAccessControlFormView::showSelectedGroup);
    // Members placed into or taken out of the group shown change its rows.
    auto refillUnder = [this](const QModelIndex &parent) {
        if (parent == m_tree->currentIndex())
            showSelectedGroup();
    };
    connect(treeModel, &QAbstractItemModel::rowsInserted, this, refillUnder);
    connect(treeModel, &QAbstractItemModel::rowsRemoved, this, refillUnder);
    // A load replaces the tree and then the permissions; the grid is filled
    // once both are in (after the model has emptied itself).
    connect(&document, &CVelmarManagerDoc::adopted, this, &CAccessControlFormView::selectRoot);

    auto *left = new QWidget;
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(6, 2, 2, 6);
    leftLayout->addWidget(caption(u"类别"_s, u"treeCaption"_s, left));
    leftLayout->addWidget(m_tree);

    m_grid->setObjectName(u"permissionGrid"_s);
    m_grid->setAccessibleName(u"权限"_s);
    // The fixed parts by what they show.
    m_grid->frozenRowsView()->setAccessibleName(u"Check all"_s);
    m_grid->frozenColumnsView()->setAccessibleName(u"用户ID"_s);
    m_grid->frozenCornerView()->setAccessibleName(u"用户ID 姓名"_s);
    m_grid->setModel(m_model);
    for (QTableView *view : m_grid->allViews()) {
        auto *delegate = new PermissionCellDelegate(view);
        view->setItemDelegate(delegate);
        connect(
            delegate, &PermissionCellDelegate::edited, this, &CAccessControlFormView::cellEdited);
    }
    m_grid->setRowHeight(m_grid->fontMetrics().height() + 8);
    m_grid->setFrozen(1, 2);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
        | QAbstractItemView::AnyKeyPressed);
    m_grid->setWordWrap(false);
    m_grid->horizontalHeader()->setHighlightSections(false);
    for (QTableView *view : { static_cast<QTableView *>(m_grid), m_grid->frozenColumnsView() }) {
        view->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(view, &QWidget::customContextMenuRequested, this, [this, view](const QPoint &pos) {
            const QModelIndex at = view->indexAt(pos);
            if (!at.isValid() || at.row() == PermissionTableModel::CheckAllRow)
                return;
            if (!m_grid->selectionModel()->isRowSelected(at.row(), {}))
                m_grid->selectRow(at.row());
            QMenu *menu = createGridMenu(m_grid);
            menu->setAttribute(Qt::WA_DeleteOnClose);
            menu->popup(view->viewport()->mapToGlobal(pos));
        });
    }
    connect(m_grid->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        [this] { Q_EMIT memberSelectionChanged(!selectedMembers().isEmpty()); });
    fitColumns();

    auto *right = new QWidget;
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(2, 2, 6, 6);
    rightLayout->addWidget(caption(u"权限"_s, u"gridCaption"_s, right));
    rightLayout->addWidget(m_grid);

    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"accessControlSplitter"_s);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ 200, 800 });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title);
    layout->addWidget(splitter, 1);

    selectRoot();
}

void CAccessControlFormView::fitColumns()
{
    const QFontMetrics metrics = m_grid->fontMetrics();
    // A check box and its label beside it.
    const int box = metrics.horizontalAdvance(u"Check all"_s) + 30;
    for (int column = 0; column < PermissionTableModel::ColumnCount; ++column) {
        const int title = metrics.horizontalAdvance(PermissionTableModel::columnTitle(column)) + 20;
        int width = std::max(title, 100);
        if (PermissionTableModel::isFeatureColumn(column))
            width = std::max(title, box);
        m_grid->setColumnWidth(column, width);
    }
}

void CAccessControlFormView::selectRoot()
{
    GroupTreeModel *treeModel = m_document.directory()->regularTree();
    const QModelIndex root = treeModel->rootIndex();
    m_tree->expand(root);
    if (m_tree->currentIndex() == root)
        showSelectedGroup();
    else
        m_tree->setCurrentIndex(root);
}

void CAccessControlFormView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_fillPending)
        showSelectedGroup();
}

void CAccessControlFormView::showSelectedGroup()
{
    m_fillPending = !isVisible();
    if (m_fillPending)
        return;
    const GroupTreeModel *treeModel = m_document.directory()->regularTree();
    const DirectoryNode *node = treeModel->nodeForIndex(m_tree->currentIndex());
    if (!node)
        return;
    m_model->showGroup(false, node);
}

QMenu *CAccessControlFormView::createGridMenu(QWidget *parent)
{
    auto *menu = new QMenu(u"权限设置"_s, parent);
    menu->setObjectName(u"permissionGridMenu"_s);
    for (QAction *action : m_popupActions)
        menu->addAction(action);
    return menu;
}

QList<qint32> CAccessControlFormView::selectedMembers() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_grid->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QList<qint32> members;
    for (const int row : rows) {
        if (row != PermissionTableModel::CheckAllRow)
            members.append(m_model->shownMembers().at(row - 1));
    }
    return members;
}

void CAccessControlFormView::deleteSelectedPermissions()
{
    const QList<qint32> members = selectedMembers();
    if (members.isEmpty())
        return;
    PermissionEditor editor(m_document);
    const EditResult result = editor.removePermissions(members);
    if (!result.ok()) {
        showRefusal(m_messages, *result.refusal, m_grid);
        return;
    }
    // Rows shown get their records, as filling the grid gives them.
    editor.ensureRecords(members);
}

void CAccessControlFormView::cellEdited(const QModelIndex &index)
{
    const std::optional<EditRefusal> &refusal = m_model->lastRefusal();
    if (!refusal || refusal->text.isEmpty())
        return;
    QTableView *view = m_grid->viewShowing(index);
    QMetaObject::invokeMethod(
        this,
        [this, view, rect = view->visualRect(index), refusal = *refusal] {
            showRefusal(m_messages, refusal, view->viewport(), rect);
        },
        Qt::QueuedConnection);
}
