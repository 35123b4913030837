#pragma once

#include "UserInfo.h"

#include <map>
#include <QHash>
#include <QList>
#include <QVarLengthArray>
#include <vector>

// Finds the row of a member list by id or by login name without walking the
// list, and stays right while rows go: every row keeps the sequence number it
// got when it was listed, and a Fenwick tree over the numbers still listed
// turns a number into its current row in logarithmic time. A removal thus
// costs no renumbering of the rows below it.
class MemberRowIndex final
{
public:
    // Indexes a whole list anew.
    void reset(const MemberList &members);
    // The last row of members was just appended.
    void appended(const MemberList &members);
    // A row's record changes from before to after.
    void replace(int row, const UserInfo &before, const UserInfo &after);
    // Rows row .. row + count - 1 of members are about to be removed.
    void remove(const MemberList &members, int row, int count);

    // The first row carrying the id / exactly this login name, -1 when none.
    int rowOfId(qint32 id) const;
    int rowOfLoginName(const QString &loginName) const;
    bool containsId(qint32 id) const { return m_seqsById.contains(id); }
    bool containsLoginName(const QString &loginName) const
    {
        return m_seqsByLogin.contains(loginName);
    }
    // The largest id listed, 0 when none is above 0.
    qint32 maxId() const;

private:
    void add(const UserInfo &member, int seq);
    void drop(const UserInfo &member, int seq);
    void changeLive(int seq, int delta);
    int listedBefore(int seq) const;

    // Sequence number of each row, in row order.
    std::vector<int> m_seqOfRow;
    // Fenwick tree (1-based) over the sequence numbers: 1 while listed.
    std::vector<int> m_live;
    int m_nextSeq = 0;
    // Sequence numbers per id and per login name, ascending: the first is
    // the first row. Nearly every key has one row: kept inline, no allocation.
    using Seqs = QVarLengthArray<int, 1>;
    QHash<qint32, Seqs> m_seqsById;
    QHash<QString, Seqs> m_seqsByLogin;
    // How many rows carry each id, ordered so that the largest is at hand.
    std::map<qint32, int> m_idCount;
};
