#include "CClassTreeCtrl.h"

#include "CVelmarManagerDoc.h"
#include "DirectoryEditor.h"
#include "MessageService.h"
#include "PositionListModel.h"
#include "PositionTreeModel.h"
#include "ViewRefusal.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>

using namespace Qt::StringLiterals;

CClassTreeCtrl::CClassTreeCtrl(
    CVelmarManagerDoc &document, MessageService &messages, QWidget *parent)
    : QTreeView(parent)
    , m_document(document)
    , m_messages(messages)
    , m_model(new PositionTreeModel(document.positions(), this))
{
    setObjectName(u"positionTree"_s);
    setAccessibleName(u"等级目录"_s);
    setModel(m_model);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);

    auto action = [this](const QString &text, const QString &name) {
        auto *result = new QAction(text, this);
        result->setObjectName(name);
        return result;
    };
    m_add = action(u"追加等级(&A)"_s, u"addPosition"_s);
    m_rename = action(u"等级名修改(&M)"_s, u"renamePosition"_s);
    m_delete = action(u"删除(&D)"_s, u"deletePosition"_s);
    m_moveUp = action(u"向上移动(&U)"_s, u"movePositionUp"_s);
    m_moveDown = action(u"向下移动(&W)"_s, u"movePositionDown"_s);
    m_default = action(u"默认登记设置(&E)"_s, u"defaultPosition"_s);
    m_default->setCheckable(true);
    connect(m_add, &QAction::triggered, this, &CClassTreeCtrl::addPosition);
    connect(m_rename, &QAction::triggered, this, &CClassTreeCtrl::renameSelected);
    connect(m_delete, &QAction::triggered, this, &CClassTreeCtrl::deleteSelected);
    connect(m_moveUp, &QAction::triggered, this, [this] { moveSelected(-1); });
    connect(m_moveDown, &QAction::triggered, this, [this] { moveSelected(1); });
    connect(m_default, &QAction::triggered, this, &CClassTreeCtrl::setSelectedAsDefault);

    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
        &CClassTreeCtrl::updateActions);
    // Moves, additions and the default change what the commands may do.
    connect(document.positions(), &PositionListModel::positionsChanged, this,
        &CClassTreeCtrl::updateActions);
    connect(m_model, &QAbstractItemModel::modelReset, this, &CClassTreeCtrl::expandRoot);
    expandRoot();
    updateActions();
}

void CClassTreeCtrl::expandRoot()
{
    expand(m_model->rootIndex());
    if (!currentIndex().isValid())
        setCurrentIndex(m_model->rootIndex());
}

int CClassTreeCtrl::selectedRow() const
{
    return m_model->positionRow(currentIndex());
}

void CClassTreeCtrl::updateActions()
{
    const int row = selectedRow();
    const int count = m_document.positions()->list().count();
    const bool position = row >= 0;
    m_rename->setEnabled(position);
    m_delete->setEnabled(position);
    m_moveUp->setEnabled(position && row > 0);
    m_moveDown->setEnabled(position && row + 1 < count);
    const PositionList &list = m_document.positions()->list();
    m_default->setChecked(position && list.positions.at(row).id == list.defaultId);
    Q_EMIT positionSelectedChanged(position);
}

QMenu *CClassTreeCtrl::createPopupMenu(QWidget *parent)
{
    auto *menu = new QMenu(u"等级设置"_s, parent);
    menu->setObjectName(u"positionTreeMenu"_s);
    menu->addAction(m_add);
    // On the root only adding makes sense.
    if (selectedRow() >= 0) {
        menu->addAction(m_rename);
        menu->addAction(m_delete);
        menu->addSeparator();
        menu->addAction(m_moveUp);
        menu->addAction(m_moveDown);
        menu->addSeparator();
        menu->addAction(m_default);
    }
    return menu;
}

void CClassTreeCtrl::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex at = indexAt(event->pos());
    if (at.isValid())
        setCurrentIndex(at);
    else if (event->reason() == QContextMenuEvent::Mouse)
        return;
    QMenu *menu = createPopupMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // From the keyboard the menu opens at the selected node.
    const QPoint where = event->reason() == QContextMenuEvent::Mouse
        ? event->globalPos()
        : viewport()->mapToGlobal(visualRect(currentIndex()).center());
    menu->popup(where);
}

void CClassTreeCtrl::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete && state() != EditingState) {
        deleteSelected();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void CClassTreeCtrl::commitData(QWidget *editor)
{
    // The label editor's text goes to the editor operation, which refuses a
    // name already in the list (the position's own included) and an empty
    // one; the label then keeps its name.
    auto *line = qobject_cast<QLineEdit *>(editor);
    const int row = selectedRow();
    if (!line || row < 0)
        return;
    const EditResult result = m_document.editor().renamePosition(row, line->text());
    if (result.ok() || result.refusal->text.isEmpty())
        return;
    QMetaObject::invokeMethod(
        this, [this, refusal = *result.refusal] { showRefusal(m_messages, refusal, this); },
        Qt::QueuedConnection);
}

void CClassTreeCtrl::addPosition()
{
    const EditResult result = m_document.editor().addPosition();
    if (!result.ok()) {
        showRefusal(m_messages, *result.refusal, this);
        return;
    }
    expand(m_model->rootIndex());
    const QModelIndex added = m_model->positionIndex(m_document.positions()->list().count() - 1);
    setCurrentIndex(added);
    setFocus();
    edit(added);
}

void CClassTreeCtrl::renameSelected()
{
    if (selectedRow() < 0)
        return;
    setFocus();
    edit(currentIndex());
}

void CClassTreeCtrl::deleteSelected()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    DirectoryEditor &editor = m_document.editor();
    if (std::optional<EditRefusal> refusal = editor.deletePositionRefusal(row)) {
        showRefusal(m_messages, *refusal, this);
        return;
    }
    MessageService::Box box;
    box.text = u"删除等级将使用该登记的用户全部删除.\n确定要删除?"_s;
    box.buttons = MessageService::Buttons::YesNo;
    box.icon = MessageService::Icon::Question;
    box.parent = window();
    if (m_messages.showMessage(box) != MessageService::Yes)
        return;
    const EditResult result = editor.deletePosition(row);
    if (!result.ok())
        showRefusal(m_messages, *result.refusal, this);
}

void CClassTreeCtrl::setSelectedAsDefault()
{
    const int row = selectedRow();
    const qint32 id = row >= 0 ? m_document.positions()->list().positions.at(row).id : -1;
    const EditResult result = m_document.editor().setDefaultPosition(id);
    if (!result.ok())
        showRefusal(m_messages, *result.refusal, this);
    updateActions();
}

void CClassTreeCtrl::moveSelected(int delta)
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const EditResult result = m_document.editor().movePosition(row, delta);
    if (!result.ok())
        showRefusal(m_messages, *result.refusal, this, visualRect(currentIndex()));
    updateActions();
}
