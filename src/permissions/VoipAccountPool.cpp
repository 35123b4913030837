#include "VoipAccountPool.h"

#include "DbConnection.h"
#include "Recordset.h"
#include "SqlTemplate.h"

using namespace Qt::StringLiterals;

QString VoipAccountPool::updateStatement(qint32 memberId, const QString &voipId)
{
    static const SqlTemplate update(
        u"UPDATE VoipNumberList SET OMemberID = %d WHERE VOIP_ID = '%s'");
    return update.format({ qint64(memberId), QStringView(voipId) });
}

void VoipAccountPool::load(DbConnection &connection, const std::function<void(int)> &countRead)
{
    clear();

    Recordset count = connection.execute(u"SELECT COUNT(*) FROM VoipNumberList"_s);
    const int rows = count.isEOF() ? 0 : count.intField(0);
    count.close();
    if (countRead)
        countRead(rows);

    Recordset set
        = connection.execute(u"SELECT VOIP_ID, VOIP_PASS, OMemberID FROM VoipNumberList"_s);
    m_entries.reserve(rows);
    if (!set.isEOF()) {
        const int idColumn = set.fieldIndex(u"VOIP_ID");
        const int passColumn = set.fieldIndex(u"VOIP_PASS");
        const int memberColumn = set.fieldIndex(u"OMemberID");
        while (!set.isEOF()) {
            Entry entry;
            entry.voipId = set.textField(idColumn);
            entry.voipPassword = set.textField(passColumn);
            // An account nobody was ever given may carry NULL; it is free.
            entry.memberId = set.intField(memberColumn, 0);
            m_entries.append(entry);
            set.moveNext();
        }
    }
    set.close();
}

void VoipAccountPool::save(DbConnection &connection) const
{
    for (const Entry &entry : m_entries)
        connection.execute(updateStatement(entry.memberId, entry.voipId));
}

void VoipAccountPool::buildIndex() const
{
    m_free.clear();
    m_held.clear();
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        const qint32 memberId = m_entries.at(i).memberId;
        if (memberId == 0)
            m_free.insert(int(i));
        else
            m_held[memberId].append(int(i));
    }
    m_indexed = true;
}

void VoipAccountPool::setHolder(int index, qint32 memberId)
{
    Entry &entry = m_entries[index];
    if (m_indexed && entry.memberId != memberId) {
        if (entry.memberId == 0) {
            m_free.erase(index);
        } else if (auto it = m_held.find(entry.memberId); it != m_held.end()) {
            it->removeOne(index);
            if (it->isEmpty())
                m_held.erase(it);
        }
        if (memberId == 0) {
            m_free.insert(index);
        } else {
            auto &held = m_held[memberId];
            held.insert(std::lower_bound(held.begin(), held.end(), index), index);
        }
    }
    entry.memberId = memberId;
}

int VoipAccountPool::firstFree() const
{
    if (!m_indexed)
        buildIndex();
    return m_free.empty() ? -1 : *m_free.begin();
}

QList<int> VoipAccountPool::accountsOf(qint32 memberId) const
{
    if (!m_indexed)
        buildIndex();
    const auto it = m_held.constFind(memberId);
    return it == m_held.cend() ? QList<int>() : *it;
}

int VoipAccountPool::indexOfVoipId(const QString &voipId) const
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).voipId == voipId)
            return int(i);
    }
    return -1;
}

bool VoipAccountPool::assign(int index, qint32 memberId)
{
    if (index < 0 || index >= m_entries.size())
        return false;
    setHolder(index, memberId);
    return true;
}

const VoipAccountPool::Entry *VoipAccountPool::assignFirstFree(qint32 memberId)
{
    const int index = firstFree();
    if (index < 0)
        return nullptr;
    setHolder(index, memberId);
    return &m_entries.at(index);
}

int VoipAccountPool::releaseMember(qint32 memberId)
{
    const QList<int> held = accountsOf(memberId);
    for (const int index : held)
        setHolder(index, 0);
    return int(held.size());
}

void VoipAccountPool::reassign(qint32 memberId, const QString &newVoipId)
{
    releaseMember(memberId);
    // An empty id names no account, even if the pool holds a row without one.
    if (newVoipId.isEmpty())
        return;
    assign(indexOfVoipId(newVoipId), memberId);
}
