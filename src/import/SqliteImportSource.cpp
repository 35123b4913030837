#include "SqliteImportSource.h"

#include "DbError.h"
#include "SqlImportCursor.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

SqliteImportSource::SqliteImportSource(ImportSourceAddress address, DbConnection connection)
    : ImportSource(std::move(address))
    , m_connection(std::move(connection))
{ }

std::unique_ptr<SqliteImportSource> SqliteImportSource::open(
    const ImportSourceAddress &address, QString *error)
{
    const QFileInfo file(address.location);
    if (!file.isFile()) {
        if (error)
            *error = u"无法读取文件 %1: 文件不存在."_s.arg(address.location);
        return nullptr;
    }
    try {
        // The console's own way to an SQLite file (the Access driver string),
        // read-only: the file is the administrator's, not the server's.
        DbConnection connection = DbConnection::openForReading(
            u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(file.absoluteFilePath()));
        return std::unique_ptr<SqliteImportSource>(
            new SqliteImportSource(address, std::move(connection)));
    } catch (const DbException &e) {
        if (error)
            *error = u"无法打开数据库 %1: %2"_s.arg(
                address.location, e.error().formatted().replace(u"\r\n"_s, u"\n"_s));
        return nullptr;
    }
}

QStringList SqliteImportSource::tables() const
{
    QStringList names = m_connection.tables();
    // SQLite's own bookkeeping is nobody's data.
    names.removeIf([](const QString &name) { return name.startsWith(u"sqlite_"_s); });
    return names;
}

std::unique_ptr<ImportCursor> SqliteImportSource::cursor(const QString &table, QString *error)
{
    return SqlImportCursor::open(m_connection, table, error);
}
