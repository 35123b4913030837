#pragma once

#include "EditRefusal.h"

#include <QList>

class CVelmarManagerDoc;

// The one edit of the notice board: deleting notices from the list. They
// wait in the pending-deletion list until the save deletes them from the
// database, so the step can be undone until then.
class NoticeEditor final
{
public:
    explicit NoticeEditor(CVelmarManagerDoc &document);

    // Removes the rows (any order; duplicates and rows out of range are
    // ignored), bottom-most first, each record going to the end of the
    // pending-deletion list. Refused without a message when no row is left;
    // applied carries how many went.
    EditResult deleteNotices(QList<int> rows);

private:
    CVelmarManagerDoc &m_document;
};
