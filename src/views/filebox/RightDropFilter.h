#pragma once

#include <functional>
#include <QObject>

class QAbstractItemView;
class QMimeData;
class QPoint;

// Lets an item view take groups and members dropped on it as new rights on a
// folder. The view's own drop handling stays off: the filter sits on its
// viewport, asks which folder a position stands for (-1: none) and whether
// the data names groups or members, and hands the drop over.
class RightDropFilter final : public QObject
{
    Q_OBJECT

public:
    using FolderAt = std::function<qint32(const QPoint &position)>;
    using Accepts = std::function<bool(const QMimeData *data)>;
    using Drop = std::function<void(qint32 folderId, const QMimeData *data)>;

    RightDropFilter(QAbstractItemView *view, FolderAt folderAt, Accepts accepts, Drop drop);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    FolderAt m_folderAt;
    Accepts m_accepts;
    Drop m_drop;
};
