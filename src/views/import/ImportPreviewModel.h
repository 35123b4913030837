#pragma once

#include "EditRefusal.h"
#include "UserInfo.h"

#include <optional>
#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

// What each source row of an import would become, as the mapping page shows
// it before anything changes: the row's number in the source, the outcome,
// "导入" or why the row is refused, and the member's fourteen target fields
// (flags as the member grid shows them, the password masked). Without
// skipping, the rows after the first refused one are not read at all, and
// say so.
class ImportPreviewModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    struct Row
    {
        int sourceRow = 0; // 1-based, the first data row being 1
        UserInfo member;
        std::optional<EditRefusal> refusal;
    };

    // fieldNames: the fourteen target fields' titles, in their order.
    explicit ImportPreviewModel(const QStringList &fieldNames, QObject *parent = nullptr);

    void setRows(QList<Row> rows);
    const Row &rowAt(int row) const { return m_rows.at(row); }
    void setSkipRefused(bool skip);
    bool skipRefused() const { return m_skipRefused; }

    int refusedCount() const { return m_refused; }
    // How many members the import would add as the preview stands.
    int addedCount() const;
    // The row of the first refusal, -1 without.
    int firstRefusedRow() const { return m_firstRefused; }
    // Of the members the import would add, how many come without a password:
    // they are added, but a save refuses them until one is typed in.
    int withoutPasswordCount() const;
    // The row number, then the outcome (the column that matters most, kept
    // in sight), then the fields.
    static constexpr int resultColumn() { return 1; }
    static constexpr int fieldColumn(int field) { return field + 2; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The text of a target field (0..13) of a member as the preview shows it.
    static QString fieldText(const UserInfo &member, int field);

private:
    QString resultText(int row) const;
    // Rows after the one that stops the import: it never reads them.
    bool isNeverRead(int row) const;

    QStringList m_fieldNames;
    QList<Row> m_rows;
    bool m_skipRefused = false;
    int m_refused = 0;
    int m_firstRefused = -1;
};
