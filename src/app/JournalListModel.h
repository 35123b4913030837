#pragma once

#include <QAbstractListModel>
#include <QIcon>

class DocumentUndoStack;

// The journal as the dock lists it: the saved state first, then one row per
// step, the clean state marked with an icon.
class JournalListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit JournalListModel(DocumentUndoStack *stack, QObject *parent = nullptr);

    DocumentUndoStack *stack() const { return m_stack; }
    void setEmptyLabel(const QString &label);
    void setCleanIcon(const QIcon &icon);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    void restack();

    DocumentUndoStack *m_stack;
    QString m_emptyLabel;
    QIcon m_cleanIcon;
};
