#pragma once

#include "UserInfo.h"

#include <map>
#include <QHash>
#include <QVarLengthArray>
#include <vector>

// One member list (regular or guest): the records in row order, with lookups
// by id and by login name that do not walk the list. Every record keeps the
// sequence number it got when it was listed, for as long as the list lives;
// records are stored by that number, so a row's removal moves four bytes per
// row below it rather than whole records, and a removed record can be put
// back at its old row (undo) by its number. Rows are always in number order,
// and a Fenwick tree over the numbers still listed turns a number into its
// current row in logarithmic time. References to records last until the
// next append.
class MemberRows final
{
public:
    // Replaces the list (taken over as it is, not copied); numbers start
    // again from 0.
    void reset(MemberList members);
    // The rows as a list; shares the records while none has been removed.
    MemberList toList() const;

    int count() const { return int(m_seqOfRow.size()); }
    const UserInfo &at(int row) const { return m_records.at(m_seqOfRow[size_t(row)]); }
    int seqAt(int row) const { return m_seqOfRow[size_t(row)]; }
    // The current row of a listed number, -1 when it is not listed.
    int rowOfSeq(int seq) const;

    // The first row carrying the id / exactly this login name, -1 when none.
    int rowOfId(qint32 id) const;
    int rowOfLoginName(const QString &loginName) const;
    // The record of the last row carrying the id (a later row of a duplicated
    // id stands for the member), nullptr when none.
    const UserInfo *lastWithId(qint32 id) const;
    bool containsId(qint32 id) const { return m_seqsById.contains(id); }
    bool containsLoginName(const QString &loginName) const
    {
        return m_seqsByLogin.contains(loginName);
    }
    // The largest id listed, 0 when none is above 0.
    qint32 maxId() const;

    // Appends a record; returns its number.
    int append(UserInfo member);
    void replace(int row, UserInfo member);
    // Unlists a row; the record stays stored under its number for restore().
    UserInfo remove(int row);
    // Lists a removed number again at the row it had; returns that row.
    int restore(int seq, UserInfo member);
    // The row a number would take if it were listed again.
    int rowForSeq(int seq) const { return listedBefore(seq); }

private:
    void add(const UserInfo &member, int seq);
    void drop(const UserInfo &member, int seq);
    void setLive(int seq, bool live);
    void growTo(size_t seqs);
    int listedBefore(int seq) const;

    // Records by number, removed ones included.
    MemberList m_records;
    std::vector<int> m_seqOfRow;
    std::vector<char> m_isLive;
    // Fenwick tree (1-based) over the numbers: 1 while listed.
    std::vector<int> m_fenwick;
    // Numbers per id and per login name, ascending: the first is the first
    // row. Nearly every key has one row: kept inline, no allocation.
    using Seqs = QVarLengthArray<int, 1>;
    QHash<qint32, Seqs> m_seqsById;
    QHash<QString, Seqs> m_seqsByLogin;
    // How many rows carry each id, ordered so that the largest is at hand.
    std::map<qint32, int> m_idCount;
};
