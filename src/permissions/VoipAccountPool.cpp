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
    m_entries.clear();

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

int VoipAccountPool::firstFree() const
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).isFree())
            return int(i);
    }
    return -1;
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
    m_entries[index].memberId = memberId;
    return true;
}

const VoipAccountPool::Entry *VoipAccountPool::assignFirstFree(qint32 memberId)
{
    const int index = firstFree();
    if (index < 0)
        return nullptr;
    m_entries[index].memberId = memberId;
    return &m_entries.at(index);
}

int VoipAccountPool::releaseMember(qint32 memberId)
{
    int released = 0;
    for (Entry &entry : m_entries) {
        if (entry.memberId == memberId) {
            entry.memberId = 0;
            ++released;
        }
    }
    return released;
}

void VoipAccountPool::reassign(qint32 memberId, const QString &newVoipId)
{
    releaseMember(memberId);
    // An empty id names no account, even if the pool holds a row without one.
    if (newVoipId.isEmpty())
        return;
    assign(indexOfVoipId(newVoipId), memberId);
}
