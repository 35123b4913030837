#include "MemberRowIndex.h"

#include <algorithm>

namespace {

template<typename Key, typename Seqs>
void insertSeq(QHash<Key, Seqs> &index, const Key &key, int seq)
{
    Seqs &seqs = index[key];
    // Appended rows carry the largest number so far: almost always the end.
    if (seqs.isEmpty() || seqs.last() < seq)
        seqs.append(seq);
    else
        seqs.insert(std::lower_bound(seqs.cbegin(), seqs.cend(), seq), seq);
}

template<typename Key, typename Seqs>
void removeSeq(QHash<Key, Seqs> &index, const Key &key, int seq)
{
    auto it = index.find(key);
    if (it == index.end())
        return;
    Seqs &seqs = it.value();
    const auto at = std::lower_bound(seqs.cbegin(), seqs.cend(), seq);
    if (at != seqs.end() && *at == seq)
        seqs.erase(at);
    if (seqs.isEmpty())
        index.erase(it);
}

} // namespace

void MemberRowIndex::reset(const MemberList &members)
{
    const size_t count = size_t(members.size());
    m_seqOfRow.resize(count);
    m_seqsById.clear();
    m_seqsByLogin.clear();
    m_idCount.clear();
    m_seqsById.reserve(qsizetype(count));
    m_seqsByLogin.reserve(qsizetype(count));
    // Room for as many appends again before the next renumbering.
    m_live.assign(std::max<size_t>(16, 2 * count) + 1, 0);
    for (size_t row = 0; row < count; ++row) {
        m_seqOfRow[row] = int(row);
        add(members.at(qsizetype(row)), int(row));
        m_live[row + 1] = 1;
    }
    // Linear Fenwick build: each node passes its sum on to its parent.
    for (size_t i = 1; i < m_live.size(); ++i) {
        const size_t parent = i + (i & (~i + 1));
        if (parent < m_live.size())
            m_live[parent] += m_live[i];
    }
    m_nextSeq = int(count);
}

void MemberRowIndex::appended(const MemberList &members)
{
    if (size_t(m_nextSeq) + 1 >= m_live.size()) {
        reset(members);
        return;
    }
    const int seq = m_nextSeq++;
    m_seqOfRow.push_back(seq);
    add(members.last(), seq);
    changeLive(seq, 1);
}

void MemberRowIndex::replace(int row, const UserInfo &before, const UserInfo &after)
{
    if (before.id == after.id && before.loginName == after.loginName)
        return;
    const int seq = m_seqOfRow[size_t(row)];
    drop(before, seq);
    add(after, seq);
}

void MemberRowIndex::remove(const MemberList &members, int row, int count)
{
    for (int i = row; i < row + count; ++i) {
        const int seq = m_seqOfRow[size_t(i)];
        drop(members.at(i), seq);
        changeLive(seq, -1);
    }
    m_seqOfRow.erase(m_seqOfRow.begin() + row, m_seqOfRow.begin() + row + count);
}

int MemberRowIndex::rowOfId(qint32 id) const
{
    auto it = m_seqsById.constFind(id);
    return it == m_seqsById.cend() ? -1 : listedBefore(it.value().first());
}

int MemberRowIndex::rowOfLoginName(const QString &loginName) const
{
    auto it = m_seqsByLogin.constFind(loginName);
    return it == m_seqsByLogin.cend() ? -1 : listedBefore(it.value().first());
}

qint32 MemberRowIndex::maxId() const
{
    return m_idCount.empty() ? 0 : std::max(qint32(0), m_idCount.rbegin()->first);
}

void MemberRowIndex::add(const UserInfo &member, int seq)
{
    insertSeq(m_seqsById, member.id, seq);
    insertSeq(m_seqsByLogin, member.loginName, seq);
    ++m_idCount[member.id];
}

void MemberRowIndex::drop(const UserInfo &member, int seq)
{
    removeSeq(m_seqsById, member.id, seq);
    removeSeq(m_seqsByLogin, member.loginName, seq);
    if (auto it = m_idCount.find(member.id); it != m_idCount.end() && --it->second == 0)
        m_idCount.erase(it);
}

void MemberRowIndex::changeLive(int seq, int delta)
{
    for (size_t i = size_t(seq) + 1; i < m_live.size(); i += i & (~i + 1))
        m_live[i] += delta;
}

int MemberRowIndex::listedBefore(int seq) const
{
    int count = 0;
    for (size_t i = size_t(seq); i > 0; i -= i & (~i + 1))
        count += m_live[i];
    return count;
}
