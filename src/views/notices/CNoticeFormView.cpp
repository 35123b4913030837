#include "CNoticeFormView.h"

#include "CNoticeViewDlg.h"
#include "CVelmarManagerDoc.h"
#include "NoticeEditor.h"
#include "NoticeListModel.h"

#include <QAction>
#include <QHeaderView>
#include <QTableView>

using namespace Qt::StringLiterals;

CNoticeFormView::CNoticeFormView(CVelmarManagerDoc &document,
    std::function<QString(const QString &)> uploadFolder,
    std::function<void(const QString &)> openFolder, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_list(new QTableView(this))
    , m_panel(new CNoticeViewDlg(std::move(uploadFolder), std::move(openFolder), this))
{
    setObjectName(u"noticeView"_s);
    NoticeListModel *notices = document.notices();
    m_list->setObjectName(u"noticeList"_s);
    m_list->setAccessibleName(u"公告管理"_s);
    m_list->setModel(notices);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setWordWrap(false);
    m_list->setShowGrid(false);
    m_list->verticalHeader()->hide();
    m_list->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_list->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_list->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (int column = 0; column < NoticeListModel::ColumnCount; ++column)
        m_list->setColumnWidth(column, NoticeListModel::initialColumnWidth(column));

    auto *remove = new QAction(m_list);
    remove->setShortcut(QKeySequence::Delete);
    remove->setShortcutContext(Qt::WidgetShortcut);
    connect(remove, &QAction::triggered, this, &CNoticeFormView::deleteSelected);
    m_list->addAction(remove);
    connect(m_list, &QAbstractItemView::doubleClicked, this,
        [this](const QModelIndex &index) { showRow(index.row()); });
    // A reload replaces every record: what the panel showed is gone.
    connect(notices, &QAbstractItemModel::modelReset, m_panel, &CNoticeViewDlg::clear);
}

void CNoticeFormView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const int listHeight = std::max(0, height() - PanelHeight);
    m_list->setGeometry(0, 0, width(), listHeight);
    m_panel->setGeometry(0, listHeight, width(), height() - listHeight);
}

bool CNoticeFormView::deleteSelected()
{
    QList<int> rows;
    for (const QModelIndex &index : m_list->selectionModel()->selectedRows())
        rows.append(index.row());
    if (rows.isEmpty())
        return false;
    return NoticeEditor(m_document).deleteNotices(rows).ok();
}

void CNoticeFormView::showRow(int row)
{
    NoticeListModel *notices = m_document.notices();
    if (row < 0 || row >= notices->rowCount())
        return;
    m_panel->showNotice(notices->record(row));
}
