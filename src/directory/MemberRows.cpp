#include "MemberRows.h"

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

constexpr size_t lowBit(size_t i)
{
    return i & (~i + 1);
}

} // namespace

void MemberRows::reset(MemberList members)
{
    const size_t count = size_t(members.size());
    m_records = std::move(members);
    m_seqOfRow.resize(count);
    m_seqsById.clear();
    m_seqsByLogin.clear();
    m_idCount.clear();
    m_seqsById.reserve(qsizetype(count));
    m_seqsByLogin.reserve(qsizetype(count));
    m_isLive.assign(count, 1);
    for (size_t row = 0; row < count; ++row) {
        m_seqOfRow[row] = int(row);
        add(m_records.at(qsizetype(row)), int(row));
    }
    m_fenwick.clear();
    // Room for as many appends again before the tree is rebuilt.
    growTo(std::max<size_t>(16, 2 * count));
}

MemberList MemberRows::toList() const
{
    if (m_seqOfRow.size() == size_t(m_records.size()))
        return m_records;
    MemberList list;
    list.reserve(count());
    for (const int seq : m_seqOfRow)
        list.append(m_records.at(seq));
    return list;
}

int MemberRows::rowOfSeq(int seq) const
{
    if (seq < 0 || size_t(seq) >= m_isLive.size() || !m_isLive[size_t(seq)])
        return -1;
    return listedBefore(seq);
}

int MemberRows::rowOfId(qint32 id) const
{
    auto it = m_seqsById.constFind(id);
    return it == m_seqsById.cend() ? -1 : listedBefore(it.value().first());
}

int MemberRows::rowOfLoginName(const QString &loginName) const
{
    auto it = m_seqsByLogin.constFind(loginName);
    return it == m_seqsByLogin.cend() ? -1 : listedBefore(it.value().first());
}

const UserInfo *MemberRows::lastWithId(qint32 id) const
{
    auto it = m_seqsById.constFind(id);
    return it == m_seqsById.cend() ? nullptr : &m_records.at(it.value().last());
}

qint32 MemberRows::maxId() const
{
    return m_idCount.empty() ? 0 : std::max(qint32(0), m_idCount.rbegin()->first);
}

int MemberRows::append(UserInfo member)
{
    const int seq = int(m_records.size());
    add(member, seq);
    m_records.append(std::move(member));
    m_isLive.push_back(0);
    m_seqOfRow.push_back(seq);
    setLive(seq, true);
    return seq;
}

void MemberRows::replace(int row, UserInfo member)
{
    const int seq = m_seqOfRow[size_t(row)];
    UserInfo &stored = m_records[seq];
    if (stored.id != member.id || stored.loginName != member.loginName) {
        drop(stored, seq);
        add(member, seq);
    }
    stored = std::move(member);
}

UserInfo MemberRows::remove(int row)
{
    const int seq = m_seqOfRow[size_t(row)];
    drop(m_records.at(seq), seq);
    setLive(seq, false);
    m_seqOfRow.erase(m_seqOfRow.begin() + row);
    // Kept stored: a restore gives it back, and nothing else reads it.
    return m_records.at(seq);
}

int MemberRows::restore(int seq, UserInfo member)
{
    const int row = listedBefore(seq);
    add(member, seq);
    m_records[seq] = std::move(member);
    setLive(seq, true);
    m_seqOfRow.insert(m_seqOfRow.begin() + row, seq);
    return row;
}

void MemberRows::add(const UserInfo &member, int seq)
{
    insertSeq(m_seqsById, member.id, seq);
    insertSeq(m_seqsByLogin, member.loginName, seq);
    // Ids mostly come in ascending order: the end is the place to look first.
    auto at = m_idCount.empty() || m_idCount.rbegin()->first < member.id
        ? m_idCount.end()
        : m_idCount.lower_bound(member.id);
    if (at != m_idCount.end() && at->first == member.id)
        ++at->second;
    else
        m_idCount.emplace_hint(at, member.id, 1);
}

void MemberRows::drop(const UserInfo &member, int seq)
{
    removeSeq(m_seqsById, member.id, seq);
    removeSeq(m_seqsByLogin, member.loginName, seq);
    if (auto it = m_idCount.find(member.id); it != m_idCount.end() && --it->second == 0)
        m_idCount.erase(it);
}

void MemberRows::growTo(size_t seqs)
{
    // Rebuilt in linear time from the live flags: each node passes its sum
    // on to its parent. Numbers never change, so a rebuild keeps every row.
    m_fenwick.assign(seqs + 1, 0);
    for (size_t seq = 0; seq < m_isLive.size(); ++seq)
        m_fenwick[seq + 1] = m_isLive[seq];
    for (size_t i = 1; i < m_fenwick.size(); ++i) {
        const size_t parent = i + lowBit(i);
        if (parent < m_fenwick.size())
            m_fenwick[parent] += m_fenwick[i];
    }
}

void MemberRows::setLive(int seq, bool live)
{
    if (size_t(seq) + 1 >= m_fenwick.size()) {
        m_isLive[size_t(seq)] = live ? 1 : 0;
        growTo(2 * m_isLive.size() + 16);
        return;
    }
    if (bool(m_isLive[size_t(seq)]) == live)
        return;
    m_isLive[size_t(seq)] = live ? 1 : 0;
    const int delta = live ? 1 : -1;
    for (size_t i = size_t(seq) + 1; i < m_fenwick.size(); i += lowBit(i))
        m_fenwick[i] += delta;
}

int MemberRows::listedBefore(int seq) const
{
    int count = 0;
    for (size_t i = std::min(size_t(seq), m_fenwick.size() - 1); i > 0; i -= lowBit(i))
        count += m_fenwick[i];
    return count;
}
