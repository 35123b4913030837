#include "PermissionEditor.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"

#include <memory>
#include <QSet>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// What an edit of the permissions is about to change, as it stands: the
// records of every member it touches (with the table's modified flag) and the
// holder of every pool account it touches. Undo puts them back; the stack is
// linear, so nothing else has changed them by then.
struct PermissionsBefore
{
    std::vector<std::pair<qint32, AccessTokenTable::MemberRecords>> records;
    std::vector<std::pair<int, qint32>> holders;

    void restore(AccessTokenTable &table, VoipAccountPool &pool) const
    {
        // Every record carries the flag as it was before the edit.
        for (auto it = records.crbegin(); it != records.crend(); ++it)
            table.restoreRecords(it->first, it->second);
        for (const auto &[index, holder] : holders)
            pool.assign(index, holder);
    }
};

bool isFeature(CAccessToken::Feature feature)
{
    return int(feature) >= 0 && int(feature) < CAccessToken::FeatureCount;
}

// The ids of members the directory holds, each once and in the order given;
// skipped counts the unknown ones.
QList<qint32> knownMembersOnce(const Directory &directory, const QList<qint32> &ids, int &skipped)
{
    QList<qint32> known;
    QSet<qint32> seen;
    skipped = 0;
    for (const qint32 id : ids) {
        if (!directory.findMember(id))
            ++skipped;
        else if (!seen.contains(id)) {
            seen.insert(id);
            known.append(id);
        }
    }
    return known;
}

} // namespace

PermissionEditor::PermissionEditor(CVelmarManagerDoc &document)
    : m_document(document)
{ }

EditResult PermissionEditor::setFlag(qint32 memberId, CAccessToken::Feature feature, bool on)
{
    if (!isFeature(feature))
        return EditResult::refusedSilently();
    const UserInfo *member = m_document.m_directory->findMember(memberId);
    if (!member)
        return EditResult::refused(EditRefusal::unknownMember(memberId));
    const AccessTokenTable &table = m_document.m_permissions;
    const CAccessToken *token = table.token(memberId);
    CAccessToken after = token ? *token : CAccessToken::defaults();
    after.applyFlagRule(feature, on);
    if (token && after == *token)
        return EditResult::done(memberId, 0);

    auto before = std::make_shared<PermissionsBefore>();
    before->records.emplace_back(memberId, table.recordsOf(memberId));
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"修改用户 %1 的%2"_s.arg(member->loginName, CAccessToken::title(feature)),
        [doc, memberId, feature, on] { doc->m_permissions.setFlag(memberId, feature, on); },
        [doc, before] { before->restore(doc->m_permissions, doc->m_voipPool); });
    return EditResult::done(memberId);
}

EditResult PermissionEditor::setFlagForMembers(
    const QList<qint32> &memberIds, CAccessToken::Feature feature, bool on)
{
    if (!isFeature(feature))
        return EditResult::refusedSilently();
    const Directory &directory = *m_document.m_directory;
    const AccessTokenTable &table = m_document.m_permissions;
    QList<qint32> changed;
    int skipped = 0;
    auto before = std::make_shared<PermissionsBefore>();
    for (const qint32 id : knownMembersOnce(directory, memberIds, skipped)) {
        const CAccessToken *token = table.token(id);
        CAccessToken after = token ? *token : CAccessToken::defaults();
        after.applyFlagRule(feature, on);
        if (token && after == *token)
            continue;
        changed.append(id);
        before->records.emplace_back(id, table.recordsOf(id));
    }
    if (changed.isEmpty())
        return EditResult::done(-1, 0, skipped);

    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"修改 %1 个用户的%2"_s.arg(changed.size()).arg(CAccessToken::title(feature)),
        [doc, changed, feature, on] { doc->m_permissions.setFlagForMembers(changed, feature, on); },
        [doc, before] { before->restore(doc->m_permissions, doc->m_voipPool); });
    return EditResult::done(-1, int(changed.size()), skipped);
}

EditResult PermissionEditor::setVoipAccount(
    qint32 memberId, AccessTokenTable::VoipField field, const QString &text)
{
    const UserInfo *member = m_document.m_directory->findMember(memberId);
    if (!member)
        return EditResult::refused(EditRefusal::unknownMember(memberId));
    const AccessTokenTable &table = m_document.m_permissions;
    const VoipAccountPool &pool = m_document.m_voipPool;
    const bool isId = field == AccessTokenTable::VoipField::Id;
    const VoipAccount *account = table.voipAccount(memberId);
    // No record reads as the empty account the grid shows for it.
    const QString current = account ? (isId ? account->id : account->password) : QString();
    if (current == text)
        return EditResult::done(memberId, 0);

    auto before = std::make_shared<PermissionsBefore>();
    before->records.emplace_back(memberId, table.recordsOf(memberId));
    for (const int index : pool.accountsOf(memberId))
        before->holders.emplace_back(index, memberId);
    // The account the member's id names may be held by someone else; it moves.
    const QString newId = isId ? text : (account ? account->id : QString());
    if (!newId.isEmpty()) {
        const int index = pool.indexOfVoipId(newId);
        if (index >= 0 && pool.entries().at(index).memberId != memberId)
            before->holders.emplace_back(index, pool.entries().at(index).memberId);
    }
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        (isId ? u"修改用户 %1 的电话号码"_s : u"修改用户 %1 的电话密码"_s).arg(member->loginName),
        [doc, memberId, field, text] {
            doc->m_permissions.editVoipAccount(memberId, field, text, &doc->m_voipPool);
        },
        [doc, before] { before->restore(doc->m_permissions, doc->m_voipPool); });
    return EditResult::done(memberId);
}

EditResult PermissionEditor::assignTelephony()
{
    const Directory &directory = *m_document.m_directory;
    const AccessTokenTable &table = m_document.m_permissions;
    const VoipAccountPool &pool = m_document.m_voipPool;

    // A member id listed twice is one member: served once.
    QList<qint32> waiting;
    QSet<qint32> seen;
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        for (int row = 0; row < rows.count(); ++row) {
            const qint32 id = rows.at(row).id;
            if (seen.contains(id))
                continue;
            seen.insert(id);
            const VoipAccount *account = table.voipAccount(id);
            if (!account || account->id.isEmpty())
                waiting.append(id);
        }
    }
    if (waiting.isEmpty())
        return EditResult::done(-1, 0, 0);

    // A pool row without an id gives no account, and one whose id a member's
    // account already carries (the tables disagree) would give it twice.
    QSet<QString> taken;
    for (const auto &[id, account] : table.voipAccounts()) {
        if (!account.id.isEmpty())
            taken.insert(account.id);
    }
    struct Given
    {
        qint32 memberId;
        int index;
        QString voipId;
        QString voipPassword;
    };
    std::vector<Given> plan;
    const QList<VoipAccountPool::Entry> &entries = pool.entries();
    for (qsizetype i = 0; i < entries.size() && plan.size() < size_t(waiting.size()); ++i) {
        const VoipAccountPool::Entry &entry = entries.at(i);
        if (!entry.isFree() || entry.voipId.isEmpty() || taken.contains(entry.voipId))
            continue;
        taken.insert(entry.voipId);
        plan.push_back(
            { waiting.at(qsizetype(plan.size())), int(i), entry.voipId, entry.voipPassword });
    }
    const int applied = int(plan.size());
    const int skipped = int(waiting.size()) - applied;
    if (plan.empty())
        return EditResult::done(-1, 0, skipped);

    auto before = std::make_shared<PermissionsBefore>();
    for (const Given &given : plan) {
        before->records.emplace_back(given.memberId, table.recordsOf(given.memberId));
        before->holders.emplace_back(given.index, 0);
    }
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"自动分配电话号码"_s,
        [doc, plan = std::move(plan)] {
            for (const Given &given : plan) {
                doc->m_voipPool.assign(given.index, given.memberId);
                doc->m_permissions.giveVoipAccount(
                    given.memberId, given.voipId, given.voipPassword);
            }
        },
        [doc, before] { before->restore(doc->m_permissions, doc->m_voipPool); });
    return EditResult::done(-1, applied, skipped);
}

EditResult PermissionEditor::removePermissions(const QList<qint32> &memberIds)
{
    const Directory &directory = *m_document.m_directory;
    const AccessTokenTable &table = m_document.m_permissions;
    const VoipAccountPool &pool = m_document.m_voipPool;
    int skipped = 0;
    const QList<qint32> removed = knownMembersOnce(directory, memberIds, skipped);
    auto before = std::make_shared<PermissionsBefore>();
    for (const qint32 id : removed) {
        before->records.emplace_back(id, table.recordsOf(id));
        for (const int index : pool.accountsOf(id))
            before->holders.emplace_back(index, id);
    }
    if (removed.isEmpty())
        return EditResult::done(-1, 0, skipped);

    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"删除 %1 个用户的权限"_s.arg(removed.size()),
        [doc, removed] {
            for (const qint32 id : removed) {
                doc->m_permissions.removeMemberPermissions(id);
                doc->m_permissions.removeMemberVoipAccount(id);
                doc->m_voipPool.releaseMember(id);
            }
        },
        [doc, before] { before->restore(doc->m_permissions, doc->m_voipPool); });
    return EditResult::done(-1, int(removed.size()), skipped);
}

void PermissionEditor::ensureRecords(const QList<qint32> &memberIds)
{
    for (const qint32 id : memberIds)
        m_document.m_permissions.ensureRecords(id);
}
