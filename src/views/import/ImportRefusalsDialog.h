#pragma once

#include "EditRefusal.h"

#include <QDialog>

class QTableWidget;

// After an import that skipped refused rows: how many members were added
// and, per skipped row, its number in the source, its user ID and why.
class ImportRefusalsDialog final : public QDialog
{
    Q_OBJECT

public:
    struct Entry
    {
        int sourceRow = 0;
        QString loginName;
        QString reason;
    };

    ImportRefusalsDialog(int added, const QList<Entry> &entries, QWidget *parent = nullptr);

    QTableWidget *list() const { return m_list; }

private:
    QTableWidget *m_list;
};
