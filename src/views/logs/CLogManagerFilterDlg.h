#pragma once

#include "LogFilterRules.h"

#include <functional>
#include <QDateTime>
#include <QWidget>

class CLogManagerFilterDlgListener;
class QCheckBox;
class QDateTimeEdit;
class QLineEdit;
class QPushButton;

// The filter panel at the top of every log view (dialog 203): two pickers for
// the period, three period buttons that only set the pickers, the newest-first
// check box and the search button, which hands a LogFilter to the listener.
// The keyword box has no function: no search reads it.
class CLogManagerFilterDlg final : public QWidget
{
    Q_OBJECT

public:
    using Clock = std::function<QDateTime()>;

    enum ControlId {
        IdChoosePeriod = 1074,
        IdPeriodSettings = 1075,
        IdStartPicker = 1076,
        IdEndPicker = 1077,
        IdToday = 1078,
        IdWeek = 1079,
        IdMonth = 1080,
        IdKeyword = 1081,
        IdSearch = 1082,
        IdResults = 1083,
        IdNewestFirst = 1085,
    };

    explicit CLogManagerFilterDlg(Clock clock, QWidget *parent = nullptr);

    // The view that fills itself on a search; none until the view sets itself.
    void setListener(CLogManagerFilterDlgListener *listener) { m_listener = listener; }
    CLogManagerFilterDlgListener *listener() const { return m_listener; }

    QDateTime start() const;
    QDateTime end() const;
    bool newestFirst() const;

    // The control with a dialog id, for the views and tests.
    QWidget *control(int id) const;

    // Click on 1082.
    void search();
    // Click on a period button.
    void choosePeriod(LogFilterRules::PeriodButton button);

private:
    void startChanged();
    void endChanged();
    QPushButton *periodButton(LogFilterRules::PeriodButton button, int id);

    Clock m_clock;
    CLogManagerFilterDlgListener *m_listener = nullptr;
    QDateTimeEdit *m_start = nullptr;
    QDateTimeEdit *m_end = nullptr;
    QLineEdit *m_keyword = nullptr;
    QCheckBox *m_newestFirst = nullptr;
    QPushButton *m_search = nullptr;
};
