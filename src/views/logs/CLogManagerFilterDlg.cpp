#include "CLogManagerFilterDlg.h"

#include "CLogManagerFilterDlgListener.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const char *const ControlIdProperty = "controlId";

template<typename Control> Control *withId(Control *control, int id, const QString &name)
{
    control->setObjectName(name);
    control->setProperty(ControlIdProperty, id);
    return control;
}

QDateTimeEdit *picker(int id, const QString &name, const QDateTime &now, QWidget *parent)
{
    auto *edit = withId(new QDateTimeEdit(now, parent), id, name);
    edit->setDisplayFormat(u"yyyy-MM-dd HH:mm:ss"_s);
    edit->setCalendarPopup(true);
    return edit;
}

} // namespace

CLogManagerFilterDlg::CLogManagerFilterDlg(Clock clock, QWidget *parent)
    : QWidget(parent)
    , m_clock(std::move(clock))
{
    setObjectName(u"logFilterPanel"_s);
    setProperty(ControlIdProperty, 203);
    if (!m_clock)
        m_clock = [] { return QDateTime::currentDateTime(); };

    // The panel's own white background, whatever the view around it uses.
    setAutoFillBackground(true);
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    setPalette(white);

    const QDateTime now = m_clock();
    auto *frame = withId(new QGroupBox(u"搜索结果"_s, this), IdResults, u"resultsGroup"_s);
    auto *choosePeriod
        = withId(new QLabel(u"选 择 时 段"_s, frame), IdChoosePeriod, u"choosePeriodLabel"_s);
    auto *periodSettings
        = withId(new QLabel(u"时 段 设 置"_s, frame), IdPeriodSettings, u"periodSettingsLabel"_s);
    m_start = picker(IdStartPicker, u"startPicker"_s, now, frame);
    m_end = picker(IdEndPicker, u"endPicker"_s, now, frame);
    m_keyword = withId(new QLineEdit(frame), IdKeyword, u"keywordEdit"_s);
    m_newestFirst
        = withId(new QCheckBox(u"最新类别"_s, frame), IdNewestFirst, u"newestFirstCheck"_s);
    m_newestFirst->setChecked(true);
    m_search = withId(new QPushButton(u"时间段中查询"_s, frame), IdSearch, u"searchButton"_s);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(4);
    buttons->addWidget(periodButton(LogFilterRules::PeriodButton::Today, IdToday));
    buttons->addWidget(periodButton(LogFilterRules::PeriodButton::Week, IdWeek));
    buttons->addWidget(periodButton(LogFilterRules::PeriodButton::Month, IdMonth));
    buttons->addStretch(1);

    auto *pickers = new QHBoxLayout;
    pickers->setSpacing(4);
    pickers->addWidget(m_start, 1);
    pickers->addWidget(new QLabel(u"~"_s, frame));
    pickers->addWidget(m_end, 1);

    auto *grid = new QGridLayout(frame);
    grid->setContentsMargins(8, 4, 8, 4);
    grid->setVerticalSpacing(4);
    grid->setHorizontalSpacing(8);
    grid->addWidget(choosePeriod, 0, 0);
    grid->addLayout(pickers, 0, 1);
    grid->addWidget(new QLabel(u"排 列 顺 序"_s, frame), 0, 2);
    grid->addWidget(m_newestFirst, 0, 3);
    grid->addWidget(periodSettings, 1, 0);
    grid->addLayout(buttons, 1, 1);
    grid->addWidget(new QLabel(u"搜索关键词"_s, frame), 1, 2);
    grid->addWidget(m_keyword, 1, 3);
    grid->addWidget(m_search, 0, 4, 2, 1);
    grid->setColumnStretch(1, 1);
    m_search->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->addWidget(frame);

    connect(m_start, &QDateTimeEdit::dateTimeChanged, this, &CLogManagerFilterDlg::startChanged);
    connect(m_end, &QDateTimeEdit::dateTimeChanged, this, &CLogManagerFilterDlg::endChanged);
    connect(m_search, &QPushButton::clicked, this, &CLogManagerFilterDlg::search);
}

QPushButton *CLogManagerFilterDlg::periodButton(LogFilterRules::PeriodButton button, int id)
{
    static const QStringList names = { u"todayButton"_s, u"weekButton"_s, u"monthButton"_s };
    auto *push = withId(
        new QPushButton(LogFilterRules::buttonText(button), this), id, names.at(id - IdToday));
    connect(push, &QPushButton::clicked, this, [this, button] { choosePeriod(button); });
    return push;
}

QDateTime CLogManagerFilterDlg::start() const
{
    return m_start->dateTime();
}

QDateTime CLogManagerFilterDlg::end() const
{
    return m_end->dateTime();
}

bool CLogManagerFilterDlg::newestFirst() const
{
    return m_newestFirst->isChecked();
}

QWidget *CLogManagerFilterDlg::control(int id) const
{
    const QList<QWidget *> children = findChildren<QWidget *>();
    for (QWidget *child : children) {
        if (child->property(ControlIdProperty).toInt() == id)
            return child;
    }
    return nullptr;
}

void CLogManagerFilterDlg::startChanged()
{
    const QDateTime end = LogFilterRules::endAfterStartChanged(start(), this->end());
    if (end != this->end())
        m_end->setDateTime(end);
}

void CLogManagerFilterDlg::endChanged()
{
    const QDateTime start = LogFilterRules::startAfterEndChanged(this->start(), end());
    if (start != this->start())
        m_start->setDateTime(start);
}

void CLogManagerFilterDlg::choosePeriod(LogFilterRules::PeriodButton button)
{
    const LogFilterRules::Period period = LogFilterRules::periodFor(button, m_clock());
    // The end first: a start moved past the old end would drag it along.
    m_end->setDateTime(period.end);
    m_start->setDateTime(period.start);
}

void CLogManagerFilterDlg::search()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const LogFilter filter = LogFilterRules::searchFilter(start(), end(), newestFirst());
    if (m_listener)
        m_listener->applyFilter(filter);
    QGuiApplication::restoreOverrideCursor();
}
