#include "RightRowDelegate.h"

#include "FolderRightsModel.h"

void RightRowDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(FolderRightsModel::MissingRole).toBool()) {
        option->palette.setColor(QPalette::Text, Qt::red);
        option->palette.setColor(QPalette::HighlightedText, Qt::red);
    }
}
