#pragma once

#include "SqlStatementText.h"

#include <QJsonArray>
#include <QList>
#include <QString>
#include <QStringList>

class CVelmarManagerDoc;
class DbConnection;

// What is wrong with a server database, in the terms the console works in:
// ids used twice, partition flags the load has to guess at, groups and
// memberships pointing at nothing, permissions, telephony accounts and
// folder rights of members, groups or folders that are gone, user IDs the
// console would not accept, texts the save would refuse, and member levels
// that disagree with the memberships. Each finding is counted, with a few
// examples.
//
// Repairs: a save of the loaded data rewrites the partitions, which settles
// NULL and stray flags, groups without a parent (written at the top, where
// the console shows them), duplicate memberships, memberships of groups that
// are gone and the levels; repair() adds, as ordinary document edits, what a
// save alone would keep: memberships of members that are gone.
class DataDoctor final
{
public:
    struct Finding
    {
        QString kind; // a stable name ("member-id-shared", ...)
        QString title; // what the console shows
        qint64 count = 0;
        QStringList examples; // at most MaxExamples
        bool repairedBySave = false; // settled by repair() and a save
    };
    static constexpr int MaxExamples = 5;

    // The database's findings (raises DbException), then those of the
    // loaded working copy (user IDs, texts the save would refuse).
    static QList<Finding> examine(DbConnection &connection);
    static QList<Finding> examine(const CVelmarManagerDoc &document, SqlDialect dialect);

    // The edits a save needs besides itself; returns how many were made.
    static int repair(CVelmarManagerDoc &document);

    static qint64 total(const QList<Finding> &findings);
    // One line per finding with a count: "title: count (examples)".
    static QString describe(const QList<Finding> &findings);
    static QJsonArray toJson(const QList<Finding> &findings);
};
