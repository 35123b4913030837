#include "AuthorityDelegate.h"

#include "AuthorityCode.h"
#include "FolderRightsModel.h"

#include <QComboBox>
#include <QEvent>

using namespace Qt::StringLiterals;

QWidget *AuthorityDelegate::createEditor(
    QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(u"authorityCombo"_s);
    combo->setAccessibleName(u"权限"_s);
    for (const qint32 code : { AuthorityCode::ReadOnly, AuthorityCode::ReadWrite })
        combo->addItem(AuthorityCode::displayText(code), code);
    connect(combo, &QComboBox::activated, this, [this, combo] {
        // Written at once; the editor stays open as the row's drop-down.
        Q_EMIT const_cast<AuthorityDelegate *>(this)->commitData(combo);
    });
    return combo;
}

void AuthorityDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *combo = static_cast<QComboBox *>(editor);
    combo->setCurrentIndex(combo->findData(index.data(FolderRightsModel::AuthorityRole).toInt()));
}

void AuthorityDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    auto *combo = static_cast<QComboBox *>(editor);
    if (combo->currentIndex() < 0)
        return;
    model->setData(index, combo->currentData(), Qt::EditRole);
}

bool AuthorityDelegate::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::FocusOut)
        return false;
    return QStyledItemDelegate::eventFilter(object, event);
}
