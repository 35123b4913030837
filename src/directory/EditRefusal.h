#pragma once

#include "MessageService.h"

#include <optional>
#include <QString>

struct MemberRefusal;

// Why an edit of the document was turned down: the designed text and, where
// the console shows it, the balloon title and icon and what it points at
// (the member and grid column). Every refused edit changes nothing.
struct EditRefusal
{
    QString text;
    QString title;
    MessageService::Icon icon = MessageService::Icon::Error;
    // A message box rather than a balloon at a cell.
    bool messageBox = false;
    qint32 memberId = -1;
    int column = -1;

    static EditRefusal message(const QString &text, bool box = false)
    {
        EditRefusal refusal;
        refusal.text = text;
        refusal.messageBox = box;
        return refusal;
    }
    static EditRefusal fromMember(const MemberRefusal &refusal, qint32 memberId = -1);
    // An id that names no member of either list.
    static EditRefusal unknownMember(qint32 memberId)
    {
        EditRefusal refusal = message(QStringLiteral("没有这个用户."));
        refusal.memberId = memberId;
        return refusal;
    }

    friend bool operator==(const EditRefusal &, const EditRefusal &) = default;
};

// What an edit did: refused (nothing changed), or applied, with the id of
// what it made and, for operations over many members, how many were taken
// and how many were skipped.
struct EditResult
{
    std::optional<EditRefusal> refusal;
    qint32 id = -1;
    int applied = 0;
    int skipped = 0;

    bool ok() const { return !refusal; }
    static EditResult refused(EditRefusal refusal)
    {
        EditResult result;
        result.refusal = std::move(refusal);
        return result;
    }
    // Refused with nothing to say, as the console refuses a label edit that
    // makes no sense (an empty name, a node that is not there).
    static EditResult refusedSilently() { return refused(EditRefusal {}); }
    static EditResult done(qint32 id = -1, int applied = 1, int skipped = 0)
    {
        EditResult result;
        result.id = id;
        result.applied = applied;
        result.skipped = skipped;
        return result;
    }
};
