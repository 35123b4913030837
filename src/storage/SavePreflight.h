#pragma once

#include "SqlStatementText.h"

#include <QList>
#include <QString>
#include <QStringView>

class CVelmarManagerDoc;

// What the save checks before it writes its journal or runs a statement. Most
// texts go into their INSERT statements as they stand, between single quotes,
// so a text the database cannot take inside a quoted literal would break its
// statement after the partition has already been emptied. The editing accepts
// such texts; the save names every one of them and writes nothing, so that
// the administrator can mend them and save again.
class SavePreflight final
{
public:
    struct Problem
    {
        QString item; // "会员 alice 的 姓名", "类别 /销售部/东区", ...
        QString text; // the offending text as it would be inserted
    };

    // Why text cannot stand inside a quoted literal on dialect ("" when it can).
    static QString unsafeReason(QStringView text, SqlDialect dialect);

    // Every text of the working copy that the save inserts unescaped, checked
    // for dialect, in the order the save writes them.
    static QList<Problem> check(const CVelmarManagerDoc &data, SqlDialect dialect);

    // The refusal shown to the administrator; lists at most maxListed items
    // and says how many more there are.
    static QString refusalText(const QList<Problem> &problems, int maxListed = 20);
};
