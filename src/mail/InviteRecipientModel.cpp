#include "InviteRecipientModel.h"

using namespace Qt::StringLiterals;

InviteRecipientModel::InviteRecipientModel(QObject *parent)
    : QAbstractTableModel(parent)
{ }

void InviteRecipientModel::clear()
{
    beginResetModel();
    m_list.clear();
    m_states.clear();
    m_results.clear();
    endResetModel();
}

bool InviteRecipientModel::add(const InviteRecipient &recipient)
{
    InviteRecipientList probe = m_list;
    if (!probe.add(recipient))
        return false;
    const int row = int(m_list.size());
    beginInsertRows({}, row, row);
    m_list = std::move(probe);
    m_states.append(State::Idle);
    m_results.append(SmtpResult {});
    endInsertRows();
    return true;
}

void InviteRecipientModel::markPending()
{
    if (m_states.isEmpty())
        return;
    for (qsizetype i = 0; i < m_states.size(); ++i) {
        m_states[i] = State::Pending;
        m_results[i] = {};
    }
    Q_EMIT dataChanged(index(0, ResultColumn), index(rowCount() - 1, ResultColumn));
}

void InviteRecipientModel::setResult(int row, const SmtpResult &result)
{
    if (row < 0 || row >= rowCount())
        return;
    m_states[row] = State::Done;
    m_results[row] = result;
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

std::optional<SmtpResult> InviteRecipientModel::result(int row) const
{
    if (row < 0 || row >= rowCount() || m_states.at(row) != State::Done)
        return std::nullopt;
    return m_results.at(row);
}

int InviteRecipientModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_list.size());
}

int InviteRecipientModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant InviteRecipientModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const InviteRecipient &recipient = m_list.at(index.row());
    const State state = m_states.at(index.row());
    const SmtpResult &result = m_results.at(index.row());
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        switch (index.column()) {
        case UserIdColumn:
            return recipient.userId;
        case NameColumn:
            return recipient.name;
        case EmailColumn:
            return recipient.email;
        case ResultColumn:
            if (state == State::Idle)
                return QString();
            if (state == State::Pending)
                return u"等待发送"_s;
            return result.ok ? u"✓ 已发送"_s : u"✗ 失败: %1"_s.arg(result.text());
        default:
            return {};
        }
    }
    return {};
}

QVariant InviteRecipientModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case UserIdColumn:
        return u"用户ID"_s;
    case NameColumn:
        return u"姓名"_s;
    case EmailColumn:
        return u"邮箱"_s;
    case ResultColumn:
        return u"发送结果"_s;
    default:
        return {};
    }
}
