#pragma once

#include "EditRefusal.h"

#include <QList>
#include <QString>

class CVelmarManagerDoc;

// The edits of the file box: folders and the rights of groups and members on
// them. Each one refuses (nothing changes; the text says why) or is one step
// of the document's undo stack, whose undo puts the three lists and their
// modified flag back as they were. Made on demand; holds only the document.
class FileBoxEditor final
{
public:
    explicit FileBoxEditor(CVelmarManagerDoc &document);

    // A folder with the next free id (the largest in use plus one); the
    // result carries it. Refused for an empty path, a path already listed
    // and a path with an apostrophe (the save writes paths unquoted, so one
    // would fail it after the old rows were deleted).
    EditResult addFolder(const QString &path);
    // The folder and every right on it.
    EditResult removeFolder(qint32 folderId);
    // authority: AuthorityCode::ReadOnly, AuthorityCode::ReadWrite, or
    // AuthorityCode::None to remove the right. Refused for a folder not
    // listed, a group (member) the directory does not hold (except to remove
    // a right it still has), or another code; applied 0 when the right
    // already reads so.
    EditResult setGroupRight(qint32 groupId, qint32 folderId, qint32 authority);
    EditResult setMemberRight(qint32 memberId, qint32 folderId, qint32 authority);

    // Who a new right is for: a group or a member.
    struct Owner
    {
        bool group = false;
        qint32 id = -1;
    };
    // New rights of several groups and members on one folder (a drop, the
    // picker), as one step. Owners that already have a right there keep it,
    // and owners refused (not in the directory) are skipped; applied and
    // skipped count them. Refused when the folder is not listed or nothing
    // is left to add (with the first owner's refusal, if any).
    EditResult addRights(qint32 folderId, const QList<Owner> &owners, qint32 authority);
    // Removes the rights of these groups and members on the folder as one
    // step, those of groups and members the directory no longer holds
    // included. Refused silently when none of them has a right there.
    EditResult removeRights(qint32 folderId, const QList<Owner> &owners);

private:
    EditResult setRight(bool group, qint32 ownerId, qint32 folderId, qint32 authority);

    CVelmarManagerDoc &m_document;
};
