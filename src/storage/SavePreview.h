#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class DbConnection;
class SaveJournal;

// What a save is about to do to the database, table by table: the rows it
// will add, remove and change against what the database holds now. It reads
// the statements of the save's journal (so it shows exactly what would be
// sent) and the rows of the partitions those statements replace. A row is
// changed when a removed and an added row share their key (the member id,
// the group id, ...). Texts the save would refuse make the row unreadable;
// the preview is meant for a working copy that passed the pre-flight.
class SavePreview final
{
public:
    struct Table
    {
        QString name;
        QStringList columns;
        // Rows as "column=value, ..." texts; changed rows as "before → after".
        QStringList added;
        QStringList removed;
        QStringList changed;
        bool isEmpty() const { return added.isEmpty() && removed.isEmpty() && changed.isEmpty(); }
    };

    // Reads the database through connection (raises DbException).
    static QList<Table> compute(const SaveJournal &journal, DbConnection &connection);

    // One line per table that changes: "Member: +1 -0 ~2"; "没有更改." when
    // nothing does. With rows, each table's rows follow its line, at most
    // rowLimit of each kind (negative: all).
    static QString describe(const QList<Table> &tables, bool rows = false, int rowLimit = -1);
    static QString buttonText(); // "显示更改"
};
