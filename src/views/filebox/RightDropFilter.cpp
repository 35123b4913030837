#include "RightDropFilter.h"

#include <QAbstractItemView>
#include <QDropEvent>

RightDropFilter::RightDropFilter(
    QAbstractItemView *view, FolderAt folderAt, Accepts accepts, Drop drop)
    : QObject(view)
    , m_folderAt(std::move(folderAt))
    , m_accepts(std::move(accepts))
    , m_drop(std::move(drop))
{
    view->setAcceptDrops(true);
    view->setDragDropMode(QAbstractItemView::DropOnly);
    view->setDropIndicatorShown(false);
    view->viewport()->installEventFilter(this);
}

bool RightDropFilter::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDropEvent *>(event);
        const bool ok = m_accepts(drag->mimeData()) && m_folderAt(drag->position().toPoint()) >= 0;
        if (ok)
            drag->acceptProposedAction();
        else
            drag->ignore();
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const qint32 folderId = m_folderAt(drop->position().toPoint());
        if (folderId < 0 || !m_accepts(drop->mimeData())) {
            drop->ignore();
            return true;
        }
        // Copy: the dragged groups and members stay where they are.
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        m_drop(folderId, drop->mimeData());
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}
