#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

// A group as an edit script names it: the tree (organisation or guest) and
// either the path of group names from the tree's root or the group id.
//
//   /Sales/East      guest:/Forum      #12      guest:#7      /   guest:/
//
// A lone "/" is the tree's root. Within a path, "\/" is a '/' that belongs
// to a name and "\\" a backslash; a backslash before anything else is kept,
// so "R\D" needs no escaping. Empty names ("/a//b", "/a/") are refused:
// such a group is named by its id.
struct EditGroupRef
{
    static constexpr qint32 NoId = -1;

    bool guest = false;
    qint32 id = NoId; // set for "#ID"; the path is then empty
    QStringList path; // names from the root; empty with no id: the root

    bool byId() const { return id != NoId; }
    bool isRoot() const { return !byId() && path.isEmpty(); }

    // Parses a GROUP word; on failure returns false and sets error.
    static bool parse(QStringView text, EditGroupRef *ref, QString *error);
    // The word that parses back into this reference.
    QString toText() const;
    // Whether a word is meant as a GROUP rather than a user ID: it starts
    // with '/', '#' or "guest:".
    static bool looksLikeGroup(QStringView text);

    friend bool operator==(const EditGroupRef &, const EditGroupRef &) = default;
};
