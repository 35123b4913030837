#include "FrozenGridView.h"

#include <QHeaderView>
#include <QScrollBar>

using namespace Qt::StringLiterals;

FrozenGridView::FrozenGridView(QWidget *parent)
    : QTableView(parent)
    , m_top(makeOverlay(u"frozenRows"_s))
    , m_left(makeOverlay(u"frozenColumns"_s))
    , m_corner(makeOverlay(u"frozenCorner"_s))
{
    verticalHeader()->hide();
    setHorizontalScrollMode(ScrollPerPixel);
    m_top->setHorizontalScrollMode(ScrollPerPixel);

    // The fixed rows scroll sideways with the grid, the fixed columns up and
    // down; the corner never scrolls.
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, m_top->horizontalScrollBar(),
        &QScrollBar::setValue);
    connect(m_top->horizontalScrollBar(), &QScrollBar::valueChanged, horizontalScrollBar(),
        &QScrollBar::setValue);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, m_left->verticalScrollBar(),
        &QScrollBar::setValue);
    connect(m_left->verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(),
        &QScrollBar::setValue);
    for (QScrollBar *fixed : { m_top->verticalScrollBar(), m_left->horizontalScrollBar(),
             m_corner->verticalScrollBar(), m_corner->horizontalScrollBar() }) {
        connect(fixed, &QScrollBar::valueChanged, fixed, [fixed](int value) {
            if (value != 0)
                fixed->setValue(0);
        });
    }

    // Column widths follow whichever header was dragged.
    const QList<QHeaderView *> headers = { horizontalHeader(), m_top->horizontalHeader(),
        m_left->horizontalHeader(), m_corner->horizontalHeader() };
    for (QHeaderView *from : headers) {
        connect(
            from, &QHeaderView::sectionResized, this, [this, headers](int column, int, int size) {
                for (QHeaderView *to : headers) {
                    if (to->sectionSize(column) != size)
                        to->resizeSection(column, size);
                }
                placeOverlays();
            });
    }
    m_left->raise();
    m_corner->raise();
}

QTableView *FrozenGridView::makeOverlay(const QString &name)
{
    auto *view = new QTableView(this);
    view->setObjectName(name);
    view->setFocusPolicy(Qt::NoFocus);
    view->verticalHeader()->hide();
    view->setFrameShape(QFrame::NoFrame);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setWordWrap(false);
    view->hide();
    return view;
}

void FrozenGridView::setModel(QAbstractItemModel *model)
{
    QTableView::setModel(model);
    for (QTableView *view : { m_top, m_left, m_corner }) {
        view->setModel(model);
        view->setSelectionModel(selectionModel());
    }
    placeOverlays();
}

void FrozenGridView::setSelectionModel(QItemSelectionModel *selectionModel)
{
    QTableView::setSelectionModel(selectionModel);
    for (QTableView *view : { m_top, m_left, m_corner }) {
        if (view->model() == model())
            view->setSelectionModel(selectionModel);
    }
}

void FrozenGridView::setFrozen(int rows, int columns)
{
    m_rows = rows;
    m_columns = columns;
    m_top->setVisible(rows > 0);
    m_left->setVisible(columns > 0);
    m_corner->setVisible(rows > 0 && columns > 0);
    placeOverlays();
}

QList<QTableView *> FrozenGridView::allViews() const
{
    return { const_cast<FrozenGridView *>(this), m_top, m_left, m_corner };
}

void FrozenGridView::setRowHeight(int height)
{
    for (QTableView *view : { static_cast<QTableView *>(this), m_top, m_left, m_corner }) {
        view->verticalHeader()->setMinimumSectionSize(height);
        view->verticalHeader()->setDefaultSectionSize(height);
    }
    placeOverlays();
}

QTableView *FrozenGridView::viewShowing(const QModelIndex &index) const
{
    const bool fixedRow = index.row() < m_rows;
    const bool fixedColumn = index.column() < m_columns;
    if (fixedRow && fixedColumn)
        return m_corner;
    if (fixedRow)
        return m_top;
    if (fixedColumn)
        return m_left;
    return const_cast<FrozenGridView *>(this);
}

int FrozenGridView::frozenWidth() const
{
    int width = 0;
    for (int column = 0; column < m_columns; ++column)
        width += columnWidth(column);
    return width;
}

int FrozenGridView::frozenHeight() const
{
    int height = 0;
    for (int row = 0; row < m_rows && model() && row < model()->rowCount(); ++row)
        height += rowHeight(row);
    if (height == 0 && m_rows > 0)
        height = m_rows * verticalHeader()->defaultSectionSize();
    return height;
}

void FrozenGridView::placeOverlays()
{
    const QRect area = viewport()->geometry();
    const int headerHeight = horizontalHeader()->isVisible() ? horizontalHeader()->height() : 0;
    const int top = area.top() - headerHeight;
    const int rowsHeight = frozenHeight();
    const int columnsWidth = std::min(frozenWidth(), area.width());
    for (QTableView *view : { m_top, m_left, m_corner })
        view->horizontalHeader()->setFixedHeight(headerHeight);
    m_top->setGeometry(area.left(), top, area.width(), headerHeight + rowsHeight);
    m_left->setGeometry(area.left(), top, columnsWidth, headerHeight + area.height());
    m_corner->setGeometry(area.left(), top, columnsWidth, headerHeight + rowsHeight);
    m_top->horizontalScrollBar()->setValue(horizontalScrollBar()->value());
    m_left->verticalScrollBar()->setValue(verticalScrollBar()->value());
}

void FrozenGridView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    placeOverlays();
}

void FrozenGridView::updateGeometries()
{
    QTableView::updateGeometries();
    placeOverlays();
}

void FrozenGridView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    const int horizontal = horizontalScrollBar()->value();
    const int vertical = verticalScrollBar()->value();
    QTableView::scrollTo(index, hint);
    if (!index.isValid())
        return;
    // A fixed cell is always in sight: the grid stays where it was.
    if (index.column() < m_columns) {
        horizontalScrollBar()->setValue(horizontal);
    } else {
        const int hidden = frozenWidth() - visualRect(index).left();
        if (hidden > 0)
            horizontalScrollBar()->setValue(horizontalScrollBar()->value() - hidden);
    }
    if (index.row() < m_rows) {
        verticalScrollBar()->setValue(vertical);
    } else if (verticalScrollMode() == ScrollPerItem) {
        // The first rows on screen are under the fixed rows.
        const int first = verticalScrollBar()->value();
        if (index.row() < first + m_rows)
            verticalScrollBar()->setValue(std::max(0, index.row() - m_rows));
    } else {
        const int hidden = frozenHeight() - visualRect(index).top();
        if (hidden > 0)
            verticalScrollBar()->setValue(verticalScrollBar()->value() - hidden);
    }
}
