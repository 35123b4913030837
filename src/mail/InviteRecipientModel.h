#pragma once

#include "InviteRecipientList.h"
#include "SmtpSender.h"

#include <optional>
#include <QAbstractTableModel>

// The composer's recipients with what became of each mail: user ID, name,
// e-mail and the result column, which is the sending's progress list.
class InviteRecipientModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { UserIdColumn, NameColumn, EmailColumn, ResultColumn, ColumnCount };

    explicit InviteRecipientModel(QObject *parent = nullptr);

    const InviteRecipientList &list() const { return m_list; }
    void clear();
    bool add(const InviteRecipient &recipient);
    // Every result back to "waiting", before a sending.
    void markPending();
    void setResult(int row, const SmtpResult &result);
    std::optional<SmtpResult> result(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    enum class State { Idle, Pending, Done };
    InviteRecipientList m_list;
    QList<State> m_states;
    QList<SmtpResult> m_results;
};
