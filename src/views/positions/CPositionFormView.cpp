#include "CPositionFormView.h"

#include "CClassTreeCtrl.h"
#include "CVelmarManagerDoc.h"
#include "MembershipPositionModel.h"
#include "MessageService.h"
#include "PositionComboDelegate.h"
#include "PositionListModel.h"
#include "ViewRefusal.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QTableView>
#include <QToolButton>
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

QToolButton *toolButton(QAction *action, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setDefaultAction(action);
    button->setObjectName(action->objectName() + u"Button"_s);
    // The visible title, without its mnemonic.
    button->setAccessibleName(action->text().remove(u"(&"_s).remove(u')').chopped(1));
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setAutoRaise(true);
    return button;
}

} // namespace

CPositionFormView::CPositionFormView(
    CVelmarManagerDoc &document, MessageService &messages, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_messages(messages)
    , m_tree(new CClassTreeCtrl(document, messages))
    , m_gridModel(new MembershipPositionModel(document, this))
    , m_grid(new QTableView)
{
    setObjectName(u"positionView"_s);
    setAccessibleName(u"等级"_s);

    auto *title = caption(u"等级"_s, u"titleCaption"_s, this, 1.3);
    title->setContentsMargins(6, 4, 6, 4);

    auto *left = new QWidget;
    auto *leftHeader = new QHBoxLayout;
    leftHeader->setContentsMargins(0, 0, 0, 0);
    leftHeader->addWidget(caption(u"等级目录"_s, u"treeCaption"_s, left));
    leftHeader->addStretch(1);
    m_addButton = toolButton(m_tree->addPositionAction(), left);
    leftHeader->addWidget(m_addButton);
    leftHeader->addWidget(toolButton(m_tree->deletePositionAction(), left));
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(6, 2, 2, 6);
    leftLayout->addLayout(leftHeader);
    leftLayout->addWidget(m_tree);

    m_grid->setObjectName(u"positionGrid"_s);
    m_grid->setAccessibleName(u"登记编辑"_s);
    m_grid->setModel(m_gridModel);
    m_grid->setItemDelegateForColumn(MembershipPositionModel::PositionColumn,
        new PositionComboDelegate(*document.positions(), m_grid));
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked
        | QAbstractItemView::EditKeyPressed);
    m_grid->setWordWrap(false);
    m_grid->verticalHeader()->hide();
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 8);
    m_grid->horizontalHeader()->setHighlightSections(false);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        const QModelIndex at = m_grid->indexAt(pos);
        if (!at.isValid())
            return;
        if (!m_grid->selectionModel()->isRowSelected(at.row(), {}))
            m_grid->selectRow(at.row());
        QMenu *menu = createGridMenu(m_grid);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(m_grid->viewport()->mapToGlobal(pos));
    });

    auto *right = new QWidget;
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(2, 2, 6, 6);
    rightLayout->addWidget(caption(u"登记编辑"_s, u"gridCaption"_s, right));
    rightLayout->addWidget(m_grid);

    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setObjectName(u"positionSplitter"_s);
    splitter->addWidget(left);
    splitter->addWidget(right);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ 260, 600 });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title);
    layout->addWidget(splitter, 1);
    fitColumns();
}

QMenu *CPositionFormView::createGridMenu(QWidget *parent)
{
    auto *menu = new QMenu(u"等级设置"_s, parent);
    menu->setObjectName(u"positionGridMenu"_s);
    auto add = [this, menu](const QString &text, int command) {
        QAction *action = menu->addAction(text);
        action->setData(command);
        connect(action, &QAction::triggered, this, [this, command] { applyGridCommand(command); });
    };
    add(u"无等级"_s, 200);
    const QList<Position> &positions = m_document.positions()->list().positions;
    // Commands 201 to 299: the first 99 positions.
    for (int k = 0; k < positions.size() && k < 99; ++k)
        add(positions.at(k).name, 201 + k);
    return menu;
}

void CPositionFormView::applyGridCommand(int command)
{
    QList<int> rows;
    for (const QModelIndex &index : m_grid->selectionModel()->selectedRows())
        rows.append(index.row());
    const EditResult result = m_gridModel->setPosition(rows, command);
    if (!result.ok())
        showRefusal(m_messages, *result.refusal, m_grid);
}

void CPositionFormView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_document.positions()->list().count() == 0) {
        MessageService::Balloon tip;
        tip.title = u"Tip!"_s;
        tip.text = u"按右边的按钮，增加等级."_s;
        tip.icon = MessageService::Icon::Question;
        tip.timeoutMs = 3000;
        tip.anchor = m_addButton;
        tip.hint = true;
        m_messages.showBalloon(tip);
    }
}

void CPositionFormView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitColumns();
}

void CPositionFormView::fitColumns()
{
    // At 200 pixels and more the user ID and the position keep 100 pixels
    // and the group takes the rest.
    QHeaderView *header = m_grid->horizontalHeader();
    if (m_grid->viewport()->width() >= 200) {
        header->setSectionResizeMode(MembershipPositionModel::GroupColumn, QHeaderView::Stretch);
        m_grid->setColumnWidth(MembershipPositionModel::LoginNameColumn, 100);
        m_grid->setColumnWidth(MembershipPositionModel::PositionColumn, 100);
    } else {
        header->setSectionResizeMode(
            MembershipPositionModel::GroupColumn, QHeaderView::Interactive);
    }
}
