#pragma once

#include "CVelmarManagerDoc.h"
#include "ScriptedMessageService.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <memory>
#include <QStringList>

class QAbstractItemView;
class QMimeData;
class QPoint;

// A drag of data over a view's viewport to pos, as the system delivers it:
// enter, move, then a drop or a leave. Returns whether the hover was taken as
// a move, or whether the drop was accepted.
bool dragTo(QAbstractItemView *view, const QPoint &pos, const QMimeData *data, bool drop);

// An SQLite file database of the server folder, named in its connection
// string and holding these rows; null with the reason in error when it fails.
std::unique_ptr<TestDatabase> serverDatabase(
    TempServerDir &dir, const QStringList &statements, QString *error);

// The bytes of a file of tests/data/views.
QByteArray viewTestData(const QString &name);
// The statements of an .sql file there, one a line ("--" lines are comments).
QStringList sqlFile(const QString &name);

// A server folder with a real SQLite database (the populated fixture plus
// extra statements), loaded into a document by the console's loading worker,
// and saved by the console's save.
struct LoadedServer
{
    // False with the reason in error when the database or the load failed.
    bool start(const QStringList &extraStatements, QString *error);
    // The save command's run (asked already: confirmed); true when it wrote.
    bool save(QString *error);

    TempServerDir dir;
    std::unique_ptr<TestDatabase> db;
    ScriptedMessageService messages;
    CVelmarManagerDoc document;
};
