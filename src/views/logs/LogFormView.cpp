#include "LogFormView.h"

#include "CLogManagerFilterDlg.h"
#include "Directory.h"
#include "LogLocations.h"
#include "LogMemberNames.h"
#include "LogTableModel.h"

#include <algorithm>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QTableView>

using namespace Qt::StringLiterals;

LogFormView::LogFormView(LogTableModel *model, const LogViewContext &context, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_model(model)
{
    m_model->setParent(this);

    m_title = new QLabel(u"日志管理"_s, this);
    m_title->setObjectName(u"titleCaption"_s);
    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    m_title->setFont(titleFont);
    m_title->setContentsMargins(6, 4, 6, 4);

    m_filterPanel = new CLogManagerFilterDlg(m_context.clock, this);
    m_filterPanel->setFixedHeight(FilterPanelHeight);
    m_filterPanel->setListener(this);

    m_listHeader = new QWidget(this);
    auto *caption = new QLabel(u"日志"_s, m_listHeader);
    caption->setObjectName(u"listCaption"_s);
    QFont captionFont = caption->font();
    captionFont.setBold(true);
    caption->setFont(captionFont);
    m_progress = new QProgressBar(m_listHeader);
    m_progress->setObjectName(u"searchProgress"_s);
    m_progress->setRange(0, 0);
    m_progress->setMaximumWidth(240);
    m_progress->setMaximumHeight(caption->sizeHint().height());
    QSizePolicy keepPlace = m_progress->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    m_progress->setSizePolicy(keepPlace);
    m_progress->hide();
    auto *headerLayout = new QHBoxLayout(m_listHeader);
    headerLayout->setContentsMargins(6, 2, 6, 2);
    headerLayout->addWidget(caption);
    headerLayout->addStretch(1);
    headerLayout->addWidget(m_progress);

    m_list = new QTableView(this);
    m_list->setObjectName(u"logList"_s);
    m_list->setModel(m_model);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setShowGrid(false);
    m_list->setWordWrap(false);
    m_list->verticalHeader()->hide();
    m_list->verticalHeader()->setDefaultSectionSize(m_list->fontMetrics().height() + 6);
    m_list->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_list->horizontalHeader()->setHighlightSections(false);
    // The widths were chosen for a system font in which a date and a time
    // take about 110 pixels; with a wider font they grow alike, so the label
    // column still shows the whole time.
    m_widthScale
        = std::max(1.0, m_list->fontMetrics().horizontalAdvance(u"2007-10-08 14:05:09"_s) / 110.0);
    const QList<int> widths = m_model->columnWidths();
    for (int column = 0; column < widths.size(); ++column) {
        // A zero width keeps a column out of sight (the path, the raw fields).
        if (widths.at(column) == 0)
            m_list->setColumnHidden(column, true);
        else
            m_list->setColumnWidth(column, qRound(widths.at(column) * m_widthScale));
    }

    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &LogFormView::selectionMoved);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &LogFormView::selectionMoved);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { m_shownRow = -1; });
    connect(m_model, &LogTableModel::loadingChanged, this, [this](bool loading) {
        if (!loading)
            m_progress->hide();
    });
    connect(m_model, &LogTableModel::searchProgress, this, &LogFormView::showProgress);
}

bool LogFormView::isLoading() const
{
    return m_model->isLoading();
}

void LogFormView::selectRow(int row)
{
    const QModelIndex index = m_model->index(row, 0);
    if (!index.isValid())
        return;
    m_list->selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_list->scrollTo(index);
}

void LogFormView::applyFilter(const LogFilter &filter)
{
    LogSearchRequest request;
    request.filter = filter;
    request.logRoot = LogLocations::logRoot(m_context.hives, m_context.programDirectory);
    // The reading thread gets its own copy of the names.
    if (m_context.directory)
        request.names = logMemberNames(m_context.directory->memberRows(false).toList(),
            m_context.directory->memberRows(true).toList());
    m_model->search(request);
    if (m_model->isSearching()) {
        m_progress->setRange(0, 0); // busy until the first report
        m_progress->show();
    }
}

void LogFormView::showProgress(qint64 done, qint64 total)
{
    if (total <= 0)
        return;
    m_progress->setRange(0, 1000);
    m_progress->setValue(int(std::min<qint64>(done, total) * 1000 / total));
}

void LogFormView::selectionMoved()
{
    if (isLoading())
        return;
    const QModelIndex current = m_list->selectionModel()->currentIndex();
    if (!current.isValid() || !m_list->selectionModel()->isRowSelected(current.row()))
        return;
    if (current.row() == m_shownRow)
        return;
    m_shownRow = current.row();
    rowSelected(current.row());
}
