#include "PermissionCellDelegate.h"

#include <QKeyEvent>
#include <QMouseEvent>

void PermissionCellDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    QStyledItemDelegate::setModelData(editor, model, index);
    Q_EMIT edited(index);
}

bool PermissionCellDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
    const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const Qt::ItemFlags flags = model->flags(index);
    if (!(flags & Qt::ItemIsUserCheckable) || !(flags & Qt::ItemIsEnabled))
        return QStyledItemDelegate::editorEvent(event, model, option, index);

    switch (event->type()) {
    case QEvent::MouseButtonRelease: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint()))
            return false;
        break;
    }
    case QEvent::MouseButtonDblClick:
        // Taken, so that it opens no editor; its release turns the box over.
        return true;
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key != Qt::Key_Space && key != Qt::Key_Select)
            return false;
        break;
    }
    default:
        return false;
    }
    const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    Q_EMIT edited(index);
    return true;
}
