#pragma once

#include <functional>
#include <QHash>
#include <QList>
#include <QString>
#include <set>

class DbConnection;

// The server's pool of telephony accounts (VoipNumberList), each free
// (member id 0) or held by one member. Kept in load order. Plain data: the
// loading worker fills one, the user-interface thread adopts it by moving it.
class VoipAccountPool
{
public:
    struct Entry
    {
        QString voipId;
        QString voipPassword;
        qint32 memberId = 0; // 0: free

        bool isFree() const { return memberId == 0; }
        bool operator==(const Entry &) const = default;
    };

    // Replaces the contents: "SELECT COUNT(*) FROM VoipNumberList" (the count
    // is handed to countRead, for a progress range), then every row of the
    // pool in result order. A NULL OMemberID reads as 0 (free). Raises
    // DbException; on failure the pool keeps what was read so far.
    void load(DbConnection &connection, const std::function<void(int)> &countRead = {});

    // One "UPDATE VoipNumberList SET OMemberID = %d WHERE VOIP_ID = '%s'" per
    // entry, in pool order; rows are only updated, never inserted, and the id
    // is written as it stands. Raises DbException at the first failure.
    void save(DbConnection &connection) const;

    const QList<Entry> &entries() const { return m_entries; }
    int size() const { return int(m_entries.size()); }
    bool isEmpty() const { return m_entries.isEmpty(); }
    void clear()
    {
        m_entries.clear();
        m_indexed = false;
    }
    void append(const Entry &entry)
    {
        m_entries.append(entry);
        m_indexed = false;
    }

    // Index of the first free account, or -1.
    int firstFree() const;
    // Indexes of the accounts the member holds, ascending.
    QList<int> accountsOf(qint32 memberId) const;
    // Index of the first account with that id (exact comparison), or -1.
    int indexOfVoipId(const QString &voipId) const;
    // Marks the account at index as held by memberId; false for a bad index.
    bool assign(int index, qint32 memberId);
    // Takes the first free account for memberId; the account taken, or nullptr
    // when none is free.
    const Entry *assignFirstFree(qint32 memberId);
    // Frees every account held by memberId; returns how many were freed.
    int releaseMember(qint32 memberId);
    // The VoIP id of a member was edited: whatever the member holds is freed,
    // then the account whose id equals newVoipId, if any, is held by the member.
    void reassign(qint32 memberId, const QString &newVoipId);

    static QString updateStatement(qint32 memberId, const QString &voipId);

private:
    void buildIndex() const;
    void setHolder(int index, qint32 memberId);

    QList<Entry> m_entries;
    // Free accounts and accounts per member, built on first use: a pool of
    // 100,000 accounts is not walked for every member created or deleted.
    mutable bool m_indexed = false;
    mutable std::set<int> m_free;
    mutable QHash<qint32, QList<int>> m_held;
};
