#pragma once

#include <QStyledItemDelegate>

class PositionListModel;

// The drop-down of the position grid's position column: every position name
// in list order, opened on the entry the grid shows; the entry chosen is
// taken at once.
class PositionComboDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit PositionComboDelegate(const PositionListModel &positions, QObject *parent = nullptr);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    // Hands the model the list index chosen.
    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

private:
    const PositionListModel &m_positions;
};
