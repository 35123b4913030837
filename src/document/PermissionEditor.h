#pragma once

#include "AccessTokenTable.h"
#include "CAccessToken.h"
#include "EditRefusal.h"

#include <QList>
#include <QString>

class CVelmarManagerDoc;

// The edits of the feature permissions and the members' VoIP accounts: the
// check boxes and account cells of the permission grid, and the automatic
// assignment of telephone numbers. Each one refuses (nothing changes) or is
// one step of the document's undo stack, whose undo puts back the records,
// the pool's holders and the table's modified flag as they were. Made on
// demand; holds only the document.
class PermissionEditor final
{
public:
    explicit PermissionEditor(CVelmarManagerDoc &document);

    // One check box of a member row: the flag rule (file transfer needs
    // instant messaging), on the member's record, created from the defaults
    // when missing. The table is marked modified. Refused for a member the
    // directory does not hold; applied 0 when the record already reads so.
    EditResult setFlag(qint32 memberId, CAccessToken::Feature feature, bool on);
    // The "Check all" box of a column, over the members given (the members
    // shown), as one step. Ids the directory does not hold are skipped;
    // applied counts the members whose record changed.
    EditResult setFlagForMembers(
        const QList<qint32> &memberIds, CAccessToken::Feature feature, bool on);
    // The in-place edit of a member's VoIP id or password. Then the pool
    // follows the account: what the member holds is released, and the pool
    // account whose id equals the member's (new) id is held by the member.
    EditResult setVoipAccount(
        qint32 memberId, AccessTokenTable::VoipField field, const QString &text);
    // Every member (member list, then guest list, in row order) without a VoIP
    // account (no record, or an empty id) gets the next free pool account:
    // its id and password as the member's account, VoipOn set, the pool entry
    // held by the member. One step; applied counts the members served,
    // skipped those left without an account because the pool ran dry.
    EditResult assignTelephony();
    // "删除 权限": the members' permission and VoIP records are erased and the
    // pool accounts they hold set free, as one step. Shown again, a member
    // gets the default records. Ids the directory does not hold are skipped.
    EditResult removePermissions(const QList<qint32> &memberIds);

    // Showing members in the grid gives each the default records it lacks.
    // Not an edit: no step, and the table's modified flag stays as it is.
    void ensureRecords(const QList<qint32> &memberIds);

private:
    CVelmarManagerDoc &m_document;
};
