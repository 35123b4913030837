#pragma once

#include "CLogManagerFilterDlgListener.h"
#include "LogViewContext.h"

#include <QWidget>

class CLogManagerFilterDlg;
class LogTableModel;
class QLabel;
class QProgressBar;
class QTableView;

// What the three log views share: the title caption, the filter panel (whose
// listener the view is), the list caption with the search progress, and the
// list over the view's model. A search reads on a worker thread; the list
// stays empty and selections are ignored until the whole result is in, and a
// new search cancels the one still running.
class LogFormView : public QWidget, public CLogManagerFilterDlgListener
{
    Q_OBJECT

public:
    static constexpr int FilterPanelHeight = 98;

    // Refills the list for the period: the only way the list is filled.
    void applyFilter(const LogFilter &filter) override;

    CLogManagerFilterDlg *filterPanel() const { return m_filterPanel; }
    QTableView *list() const { return m_list; }
    LogTableModel *model() const { return m_model; }
    // True while the list is being filled; selections do nothing then.
    bool isLoading() const;
    // How much wider than designed the columns are for this font (at least 1).
    double widthScale() const { return m_widthScale; }
    // Makes row the focused and selected one, as a click does.
    void selectRow(int row);

protected:
    // The view takes model.
    LogFormView(LogTableModel *model, const LogViewContext &context, QWidget *parent);

    // A row became focused and selected while the view was not loading.
    virtual void rowSelected(int row) = 0;

    const LogViewContext &context() const { return m_context; }
    QLabel *titleCaption() const { return m_title; }
    // The list caption and the progress bar, one row above the list.
    QWidget *listHeader() const { return m_listHeader; }

private:
    void selectionMoved();
    void showProgress(qint64 done, qint64 total);

    LogViewContext m_context;
    LogTableModel *m_model;
    QLabel *m_title;
    CLogManagerFilterDlg *m_filterPanel;
    QWidget *m_listHeader;
    QProgressBar *m_progress;
    QTableView *m_list;
    int m_shownRow = -1;
    double m_widthScale = 1.0;
};
