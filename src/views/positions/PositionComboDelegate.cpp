#include "PositionComboDelegate.h"

#include "MembershipPositionModel.h"
#include "PositionListModel.h"

#include <QComboBox>

using namespace Qt::StringLiterals;

PositionComboDelegate::PositionComboDelegate(const PositionListModel &positions, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_positions(positions)
{ }

QWidget *PositionComboDelegate::createEditor(
    QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(u"positionCombo"_s);
    combo->setAccessibleName(u"等级"_s);
    for (const Position &position : m_positions.list().positions)
        combo->addItem(position.name, position.id);
    connect(combo, &QComboBox::activated, this, [this, combo] {
        auto *self = const_cast<PositionComboDelegate *>(this);
        Q_EMIT self->commitData(combo);
        Q_EMIT self->closeEditor(combo);
    });
    return combo;
}

void PositionComboDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *combo = qobject_cast<QComboBox *>(editor))
        combo->setCurrentIndex(index.data(MembershipPositionModel::PositionIndexRole).toInt());
}

void PositionComboDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    auto *combo = qobject_cast<QComboBox *>(editor);
    if (!combo || combo->currentIndex() < 0)
        return;
    model->setData(index, combo->currentIndex(), Qt::EditRole);
}
