#include "SqlImportCursor.h"

#include "DbError.h"

using namespace Qt::StringLiterals;

namespace {

QString failureText(const DbException &e)
{
    return e.error().formatted().replace(u"\r\n"_s, u"\n"_s);
}

} // namespace

SqlImportCursor::SqlImportCursor(DbConnection connection, Recordset rows)
    : m_connection(std::move(connection))
    , m_rows(std::move(rows))
{
    const int count = m_rows.fieldCount();
    m_columns.reserve(count);
    for (int i = 0; i < count; ++i) {
        QString name = m_rows.fieldName(i);
        // The SQLite ODBC driver gives the length of a column name in bytes
        // of UTF-8 where the wide call wants characters: a Chinese name
        // arrives with its terminating NUL and bytes after it.
        if (const qsizetype nul = name.indexOf(QChar(u'\0')); nul >= 0)
            name.truncate(nul);
        m_columns.append(name);
    }
}

std::unique_ptr<SqlImportCursor> SqlImportCursor::open(
    DbConnection connection, const QString &table, QString *error)
{
    try {
        // The name quoted as the database quotes names, so that a table
        // called "Order" or "员工 名单" reads as well.
        Recordset rows
            = connection.execute(u"SELECT * FROM "_s + connection.quotedTableName(table));
        return std::unique_ptr<SqlImportCursor>(
            new SqlImportCursor(std::move(connection), std::move(rows)));
    } catch (const DbException &e) {
        if (error)
            *error = u"无法读取数据表 %1: %2"_s.arg(table, failureText(e));
        return nullptr;
    }
}

bool SqlImportCursor::atEnd() const
{
    return m_failed || m_rows.isEOF();
}

bool SqlImportCursor::fetch(QList<QStringList> *rows, qsizetype maxRows)
{
    const int count = int(m_columns.size());
    try {
        for (qsizetype n = 0; (maxRows < 0 || n < maxRows) && !atEnd(); ++n) {
            QStringList row;
            row.reserve(count);
            for (int i = 0; i < count; ++i)
                row.append(m_rows.textField(i));
            rows->append(std::move(row));
            m_rows.moveNext();
        }
    } catch (const DbException &e) {
        m_failed = true;
        m_error = failureText(e);
        return false;
    }
    return true;
}
