#include "OutlookBar.h"

#include <QEvent>
#include <QListWidget>
#include <QSignalBlocker>
#include <QToolBox>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
constexpr int ViewIdRole = Qt::UserRole + 1;
constexpr int IconSize = 32;
} // namespace

OutlookBar::OutlookBar(QWidget *parent)
    : QWidget(parent)
    , m_toolBox(new QToolBox(this))
{
    setObjectName(u"outlookBar"_s);
    m_toolBox->setObjectName(u"outlookGroups"_s);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_toolBox);
    setMinimumWidth(120);
}

int OutlookBar::addGroup(const QString &caption)
{
    for (int i = 0; i < m_groups.size(); ++i) {
        if (m_toolBox->itemText(i) == caption)
            return i;
    }
    auto *list = new QListWidget(m_toolBox);
    list->setObjectName(u"outlookGroup%1"_s.arg(m_groups.size()));
    list->setViewMode(QListView::IconMode);
    list->setFlow(QListView::LeftToRight);
    list->setWrapping(true);
    list->setMovement(QListView::Static);
    list->setResizeMode(QListView::Adjust);
    list->setIconSize(QSize(IconSize, IconSize));
    list->setSpacing(4);
    list->setWordWrap(true);
    list->setUniformItemSizes(true);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setFrameShape(QFrame::NoFrame);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The bar's classic look: light captions on a dark page.
    QPalette pal = list->palette();
    pal.setColor(QPalette::Base, QColor(0x5b, 0x6b, 0x82));
    pal.setColor(QPalette::Text, Qt::white);
    pal.setColor(QPalette::Disabled, QPalette::Text, QColor(0xa9, 0xb3, 0xc1));
    pal.setColor(QPalette::Highlight, QColor(0x8e, 0xa6, 0xc8));
    pal.setColor(QPalette::HighlightedText, Qt::white);
    list->setPalette(pal);
    list->viewport()->installEventFilter(this);
    connect(list, &QListWidget::itemClicked, this, &OutlookBar::choose);
    connect(list, &QListWidget::itemActivated, this, &OutlookBar::choose);
    connect(list, &QListWidget::currentItemChanged, this, [this](QListWidgetItem *current) {
        // Keyboard moves inside a group choose the view too.
        if (current && current->isSelected())
            choose(current);
    });
    m_groups.append(list);
    const int index = m_toolBox->addItem(list, caption);
    fitItems(list);
    return index;
}

void OutlookBar::fitItems(QListWidget *list)
{
    // Items as wide as the bar, so that a caption stays on one line.
    const int width = qMax(IconSize + 16, list->viewport()->width() - 2 * list->spacing());
    list->setGridSize(QSize(width, IconSize + 2 * list->fontMetrics().height() + 8));
}

bool OutlookBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        for (QListWidget *list : std::as_const(m_groups)) {
            if (list->viewport() == watched)
                fitItems(list);
        }
    }
    return QWidget::eventFilter(watched, event);
}

void OutlookBar::addItem(
    const QString &group, int viewId, const QString &caption, const QIcon &icon, bool enabled)
{
    QListWidget *oldList = nullptr;
    if (QListWidgetItem *old = findItem(viewId, &oldList))
        delete oldList->takeItem(oldList->row(old));

    QListWidget *list = m_groups.at(addGroup(group));
    auto *item = new QListWidgetItem(icon, caption);
    item->setData(ViewIdRole, viewId);
    item->setTextAlignment(Qt::AlignHCenter | Qt::AlignTop);
    item->setToolTip(caption);
    {
        const QSignalBlocker blocker(list);
        list->addItem(item);
    }
    setItemEnabled(viewId, enabled);
    if (viewId == m_currentView)
        highlight(item);
}

void OutlookBar::setItemEnabled(int viewId, bool enabled)
{
    if (QListWidgetItem *item = findItem(viewId)) {
        const Qt::ItemFlags base = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
        item->setFlags(enabled ? base : Qt::ItemFlags());
    }
}

bool OutlookBar::isItemEnabled(int viewId) const
{
    const QListWidgetItem *item = findItem(viewId);
    return item && item->flags().testFlag(Qt::ItemIsEnabled);
}

bool OutlookBar::hasItem(int viewId) const
{
    return findItem(viewId) != nullptr;
}

QString OutlookBar::itemCaption(int viewId) const
{
    const QListWidgetItem *item = findItem(viewId);
    return item ? item->text() : QString();
}

QString OutlookBar::itemGroup(int viewId) const
{
    QListWidget *list = nullptr;
    if (!findItem(viewId, &list))
        return {};
    return m_toolBox->itemText(m_toolBox->indexOf(list));
}

QStringList OutlookBar::groupCaptions() const
{
    QStringList captions;
    for (int i = 0; i < m_toolBox->count(); ++i)
        captions.append(m_toolBox->itemText(i));
    return captions;
}

QList<int> OutlookBar::itemIds(const QString &group) const
{
    QList<int> ids;
    if (const QListWidget *list = groupList(group)) {
        for (int row = 0; row < list->count(); ++row)
            ids.append(list->item(row)->data(ViewIdRole).toInt());
    }
    return ids;
}

int OutlookBar::currentGroup() const
{
    return m_toolBox->currentIndex();
}

void OutlookBar::setCurrentView(int viewId)
{
    QListWidget *list = nullptr;
    QListWidgetItem *item = findItem(viewId, &list);
    if (!item)
        return;
    m_currentView = viewId;
    m_toolBox->setCurrentWidget(list);
    highlight(item);
}

QListWidget *OutlookBar::groupList(const QString &caption) const
{
    for (int i = 0; i < m_toolBox->count(); ++i) {
        if (m_toolBox->itemText(i) == caption)
            return qobject_cast<QListWidget *>(m_toolBox->widget(i));
    }
    return nullptr;
}

QListWidgetItem *OutlookBar::findItem(int viewId, QListWidget **listOut) const
{
    for (QListWidget *list : m_groups) {
        for (int row = 0; row < list->count(); ++row) {
            QListWidgetItem *item = list->item(row);
            if (item->data(ViewIdRole).toInt() == viewId) {
                if (listOut)
                    *listOut = list;
                return item;
            }
        }
    }
    return nullptr;
}

void OutlookBar::choose(QListWidgetItem *item)
{
    if (!item || !item->flags().testFlag(Qt::ItemIsEnabled))
        return;
    const int viewId = item->data(ViewIdRole).toInt();
    highlight(item);
    // A click and the current-item change of one press both end here.
    if (viewId == m_currentView)
        return;
    m_currentView = viewId;
    Q_EMIT viewSelected(viewId);
}

void OutlookBar::highlight(QListWidgetItem *item)
{
    // One highlighted item across all groups: the view on screen.
    for (QListWidget *list : m_groups) {
        const QSignalBlocker blocker(list);
        if (list == item->listWidget()) {
            list->setCurrentItem(item);
            item->setSelected(true);
        } else {
            list->clearSelection();
            list->setCurrentItem(nullptr);
        }
    }
}
