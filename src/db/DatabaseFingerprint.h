#pragma once

#include <QList>
#include <QString>

// What the working copy was read from, as the database and the server
// information file told it: the organisation version and, per table the save
// rewrites, the number of rows and a checksum the database computed over
// them. The save compares it with the same reading taken again before it
// writes, so that a save by another program in between is noticed instead of
// silently overwritten.
struct DatabaseFingerprint
{
    struct Table
    {
        QString name;
        qint64 rows = 0;
        QString checksum;
        bool operator==(const Table &) const = default;
    };

    QString version; // "GroupInfo" "Version" as it stood ("" when absent)
    QList<Table> tables;

    bool isEmpty() const { return tables.isEmpty(); }
    bool operator==(const DatabaseFingerprint &) const = default;
};
