#pragma once

#include "ImportTable.h"

#include <QAbstractTableModel>

// Rows read from an import source as a grid shows them: one column per
// source column, headed by its name; a short row shows empty cells.
class ImportTableModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit ImportTableModel(QObject *parent = nullptr);

    void setTable(ImportTable table);
    const ImportTable &table() const { return m_table; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    ImportTable m_table;
};
