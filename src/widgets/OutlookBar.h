#pragma once

#include <QIcon>
#include <QWidget>

class QListWidget;
class QListWidgetItem;
class QToolBox;

// The bar on the left of the main window: groups with a caption button each,
// opened one at a time, holding large-icon items. Every item stands for one
// form view, named by its view id; choosing an enabled item emits viewSelected.
class OutlookBar : public QWidget
{
    Q_OBJECT

public:
    explicit OutlookBar(QWidget *parent = nullptr);

    // Returns the group's index; a caption that exists already is reused.
    int addGroup(const QString &caption);
    // Adds the item to the group (created when missing). An item with the same
    // view id is replaced, so a view that comes later takes over its place holder.
    void addItem(const QString &group, int viewId, const QString &caption,
        const QIcon &icon = QIcon(), bool enabled = true);

    void setItemEnabled(int viewId, bool enabled);
    bool isItemEnabled(int viewId) const;
    bool hasItem(int viewId) const;
    QString itemCaption(int viewId) const;
    // The caption of the group holding the item, empty when there is none.
    QString itemGroup(int viewId) const;
    QStringList groupCaptions() const;
    QList<int> itemIds(const QString &group) const;
    int currentGroup() const;
    // -1 when no item is selected.
    int currentView() const { return m_currentView; }

    // Selects the item and opens its group, without emitting viewSelected.
    void setCurrentView(int viewId);

Q_SIGNALS:
    void viewSelected(int viewId);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fitItems(QListWidget *list);
    QListWidget *groupList(const QString &caption) const;
    QListWidgetItem *findItem(int viewId, QListWidget **list = nullptr) const;
    void choose(QListWidgetItem *item);
    void highlight(QListWidgetItem *item);

    QToolBox *m_toolBox;
    QList<QListWidget *> m_groups;
    int m_currentView = -1;
};
