#pragma once

#include "CAccessToken.h"
#include "VoipAccount.h"

#include <map>
#include <optional>
#include <QList>
#include <QString>

class DbConnection;
class VoipAccountPool;

// The feature permissions and telephony accounts of all members, as the
// AccessToken and VoipInfo tables hold them. Plain data: the loading worker
// fills one and the user-interface thread adopts it by moving it into its
// owner; saving happens on the user-interface thread. Both maps are ordered by
// member id, so the save writes rows in ascending id order.
class AccessTokenTable
{
public:
    using TokenMap = std::map<qint32, CAccessToken>;
    using AccountMap = std::map<qint32, VoipAccount>;
    enum class VoipField { Id, Password };

    // Replaces the contents with both tables' rows (a later row for the same
    // member replaces an earlier one; a NULL flag reads as off, a row with a
    // NULL member id is left out) and clears the modified flag. Raises
    // DbException; on failure the table keeps what was read so far.
    void load(DbConnection &connection);

    // Rewrites AccessToken and VoipInfo whole when the modified flag is set;
    // issues no statement at all otherwise. Raises DbException at the first
    // failing statement. The flag is the whole save's to clear (the save
    // records its statements before it runs them), so saving again after a
    // failure rewrites everything.
    void save(DbConnection &connection) const;

    void clear();
    bool isModified() const { return m_modified; }
    void setModified(bool modified) { m_modified = modified; }

    const TokenMap &tokens() const { return m_tokens; }
    const AccountMap &voipAccounts() const { return m_accounts; }
    const CAccessToken *token(qint32 memberId) const;
    const VoipAccount *voipAccount(qint32 memberId) const;

    // What showing a member in the grid does: creates the default records the
    // member lacks (see CAccessToken::defaults, and an empty account). They are
    // written by the next save that writes the tables but do not by themselves
    // mark the table modified. Returns the member's records.
    CAccessToken &ensureToken(qint32 memberId);
    VoipAccount &ensureVoipAccount(qint32 memberId);
    void ensureRecords(qint32 memberId);

    // A member was created: all features but VoIP on, VoIP on exactly when
    // voipId is not empty, and the account as given. Replaces existing records
    // and marks the table modified so that the new rows reach the database.
    void addMember(qint32 memberId, const QString &voipId, const QString &voipPassword);
    // A member was deleted. Each marks the table modified, record or not.
    void removeMemberPermissions(qint32 memberId);
    void removeMemberVoipAccount(qint32 memberId);

    // A check box of a member row changed: the flag rule of CAccessToken, on
    // the member's record (created from the defaults when missing), and the
    // table is marked modified.
    void setFlag(qint32 memberId, CAccessToken::Feature feature, bool on);
    // The "Check all" box of a column: the same for every member given (the
    // members shown). Marks the table modified when any member was given, so
    // that the change is not lost on save.
    void setFlagForMembers(const QList<qint32> &memberIds, CAccessToken::Feature feature, bool on);

    // The in-place edit of the VoIP id or password of a member: stores the
    // text, marks the table modified and, when a pool is given, moves the pool
    // account held by the member to the account whose id equals the member's
    // (new) id (VoipAccountPool::reassign).
    void editVoipAccount(
        qint32 memberId, VoipField field, const QString &text, VoipAccountPool *pool = nullptr);

    // A pool account was given to a member without one: it becomes the
    // member's VoIP account and VoipOn is set (a member without a permission
    // record gets one with every feature on). Marks the table modified.
    void giveVoipAccount(qint32 memberId, const QString &voipId, const QString &voipPassword);

    // A member's two records as they stand (either may be missing), for an
    // edit to put back when it is undone; restoring also puts back the
    // table's modified flag as it was.
    struct MemberRecords
    {
        std::optional<CAccessToken> token;
        std::optional<VoipAccount> account;
        bool tableModified = false;
    };
    MemberRecords recordsOf(qint32 memberId) const;
    void restoreRecords(qint32 memberId, const MemberRecords &records);

    // Statement texts, exactly as sent.
    static QString selectTokensStatement();
    static QString selectAccountsStatement();
    static QString insertTokenStatement(qint32 memberId, const CAccessToken &token);
    static QString insertAccountStatement(qint32 memberId, const VoipAccount &account);

private:
    TokenMap m_tokens;
    AccountMap m_accounts;
    bool m_modified = false;
};
