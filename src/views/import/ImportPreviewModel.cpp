#include "ImportPreviewModel.h"

#include <QBrush>
#include <QColor>

using namespace Qt::StringLiterals;

ImportPreviewModel::ImportPreviewModel(const QStringList &fieldNames, QObject *parent)
    : QAbstractTableModel(parent)
    , m_fieldNames(fieldNames)
{ }

void ImportPreviewModel::setRows(QList<Row> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    m_refused = 0;
    m_firstRefused = -1;
    for (int row = 0; row < m_rows.size(); ++row) {
        if (!m_rows.at(row).refusal)
            continue;
        ++m_refused;
        if (m_firstRefused < 0)
            m_firstRefused = row;
    }
    endResetModel();
}

void ImportPreviewModel::setSkipRefused(bool skip)
{
    if (m_skipRefused == skip)
        return;
    m_skipRefused = skip;
    if (!m_rows.isEmpty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int ImportPreviewModel::addedCount() const
{
    if (m_skipRefused || m_firstRefused < 0)
        return int(m_rows.size()) - m_refused;
    return m_firstRefused;
}

bool ImportPreviewModel::isNeverRead(int row) const
{
    return !m_skipRefused && m_firstRefused >= 0 && row > m_firstRefused;
}

int ImportPreviewModel::withoutPasswordCount() const
{
    int count = 0;
    for (int row = 0; row < m_rows.size(); ++row)
        count += !m_rows.at(row).refusal && !isNeverRead(row)
                && m_rows.at(row).member.password.isEmpty()
            ? 1
            : 0;
    return count;
}

int ImportPreviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int ImportPreviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : fieldColumn(int(m_fieldNames.size()));
}

QString ImportPreviewModel::fieldText(const UserInfo &member, int field)
{
    switch (field) {
    case 0:
        return member.loginName;
    case 1:
        return member.displayName;
    case 2:
        // Masked, and without telling its length.
        return member.password.isEmpty() ? QString() : u"******"_s;
    case 3:
        return member.email;
    case 4:
        return member.mobile;
    case 5:
        return member.homePhone;
    case 6:
        return member.address;
    case 7:
        return member.gender ? u"男生"_s : u"女生"_s;
    case 8:
        return member.bAdmin ? u"是"_s : u"否"_s;
    case 9:
        return member.officePhone;
    case 10:
        return member.birthday;
    case 11:
        return member.description;
    case 12:
        return member.bSolar ? u"阳历"_s : u"阴历"_s;
    case 13:
        return member.bPublic ? u"公开"_s : u"保密"_s;
    default:
        return {};
    }
}

QString ImportPreviewModel::resultText(int row) const
{
    const Row &entry = m_rows.at(row);
    if (isNeverRead(row)) {
        // Never read: the import has stopped before it.
        QString text = u"不导入 (在第 %1 行停止)"_s.arg(m_rows.at(m_firstRefused).sourceRow);
        if (entry.refusal)
            text += u"; "_s + entry.refusal->text;
        return text;
    }
    if (entry.refusal)
        return (m_skipRefused ? u"跳过: "_s : u"停止: "_s) + entry.refusal->text;
    if (entry.member.password.isEmpty())
        return u"导入 (没有密码: 保存前须填写)"_s;
    return u"导入"_s;
}

QVariant ImportPreviewModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &entry = m_rows.at(index.row());
    const bool result = index.column() == resultColumn();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        if (index.column() == 0)
            return entry.sourceRow;
        if (result)
            return resultText(index.row());
        return fieldText(entry.member, index.column() - fieldColumn(0));
    case Qt::ForegroundRole:
        // Greyed: rows the stopped import never reads.
        if (isNeverRead(index.row()))
            return QBrush(QColor(0x80, 0x80, 0x80));
        if (entry.refusal && result)
            return QBrush(QColor(0xb0, 0x00, 0x20));
        if (result && entry.member.password.isEmpty())
            return QBrush(QColor(0x8a, 0x5a, 0x00));
        return {};
    case Qt::BackgroundRole:
        if (!entry.refusal || isNeverRead(index.row()))
            return {};
        return QBrush(QColor(0xfd, 0xe7, 0xe9));
    default:
        return {};
    }
}

QVariant ImportPreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    if (section == 0)
        return u"行"_s;
    if (section == resultColumn())
        return u"结果"_s;
    const int field = section - fieldColumn(0);
    return field >= 0 && field < m_fieldNames.size() ? m_fieldNames.at(field) : QVariant();
}
