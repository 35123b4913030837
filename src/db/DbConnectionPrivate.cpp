#include "DbConnectionPrivate.h"

#include <QAtomicInteger>

using namespace Qt::StringLiterals;

namespace {
QAtomicInteger<quint64> connectionCounter;
}

DbConnectionPrivate::DbConnectionPrivate()
    : name(u"velmar-db-%1"_s.arg(connectionCounter.fetchAndAddRelaxed(1) + 1))
{ }

DbConnectionPrivate::~DbConnectionPrivate()
{
    // Queries first: removeDatabase() complains about a connection still in use.
    command.reset();
    if (db.isValid())
        db.close();
    db = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QSqlQuery &DbConnectionPrivate::commandQuery()
{
    if (!command) {
        command.emplace(db);
        command->setForwardOnly(true);
    }
    return *command;
}
