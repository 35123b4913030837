#pragma once

#include "DirectoryData.h"
#include "LoadProgress.h"

#include <QStringList>

// A directory as comparable lines: every member (list, fields in order, the
// level left out: the save derives it; each list sorted), every group (tree, depth, parent,
// id, name) parents first, every membership (tree, group, member, rank) in
// tree order. Stored order values are left out too: the save derives them
// from the order, which the lines keep.
QStringList dumpDirectory(const DirectoryData &data);

// The members' fields of one list as a line each.
QStringList dumpMembers(const MemberList &members, const QString &list);

// The statements an SqlTrace file holds, one per line, with PostgreSQL's
// "Group" written back as [Group] so that every backend reads alike.
QStringList readTrace(const QString &path);

class RecordingProgress : public LoadProgress
{
public:
    void setText(const QString &text) override { calls << QStringLiteral("text ") + text; }
    void setRange(int maximum) override
    {
        calls << QStringLiteral("range ") + QString::number(maximum);
    }
    void setPosition(int position) override
    {
        positions << position;
        if (calls.isEmpty() || !calls.last().startsWith(QStringLiteral("position")))
            calls << QStringLiteral("position");
    }

    QStringList calls; // consecutive positions appear once as "position"
    QList<int> positions;
};
