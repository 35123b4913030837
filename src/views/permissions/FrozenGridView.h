#pragma once

#include <QTableView>

class QAbstractItemDelegate;

// A grid whose first rows and first columns stay in place while the rest
// scrolls, as fixed rows and columns of a grid control do. Three views over
// the same model and selection stand above the grid: one for the fixed rows
// (with the column titles), one for the fixed columns and one for the corner
// where both meet; they follow the grid's scrolling and column widths.
class FrozenGridView final : public QTableView
{
    Q_OBJECT

public:
    explicit FrozenGridView(QWidget *parent = nullptr);

    void setModel(QAbstractItemModel *model) override;
    void setSelectionModel(QItemSelectionModel *selectionModel) override;
    void setFrozen(int rows, int columns);
    // The grid and its fixed parts, each of which needs a delegate of its
    // own (a delegate's editor signals go to every view it serves).
    QList<QTableView *> allViews() const;
    void setRowHeight(int height);

    QTableView *frozenRowsView() const { return m_top; }
    QTableView *frozenColumnsView() const { return m_left; }
    QTableView *frozenCornerView() const { return m_corner; }
    // The view that shows a cell on screen: a fixed part or the grid itself.
    QTableView *viewShowing(const QModelIndex &index) const;

    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void updateGeometries() override;

private:
    QTableView *makeOverlay(const QString &name);
    void placeOverlays();
    int frozenWidth() const;
    int frozenHeight() const;

    QTableView *m_top;
    QTableView *m_left;
    QTableView *m_corner;
    int m_rows = 0;
    int m_columns = 0;
};
