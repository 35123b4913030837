#include "SqliteStatement.h"

#include <sqlite3.h>
#include <utility>

static_assert(int(SqliteStatement::Type::Integer) == SQLITE_INTEGER
    && int(SqliteStatement::Type::Float) == SQLITE_FLOAT
    && int(SqliteStatement::Type::Text) == SQLITE_TEXT
    && int(SqliteStatement::Type::Blob) == SQLITE_BLOB
    && int(SqliteStatement::Type::Null) == SQLITE_NULL);

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(m_statement);
}

SqliteStatement::SqliteStatement(SqliteStatement &&other) noexcept
    : m_db(std::exchange(other.m_db, nullptr))
    , m_statement(std::exchange(other.m_statement, nullptr))
{ }

SqliteStatement &SqliteStatement::operator=(SqliteStatement &&other) noexcept
{
    if (this != &other) {
        sqlite3_finalize(m_statement);
        m_db = std::exchange(other.m_db, nullptr);
        m_statement = std::exchange(other.m_statement, nullptr);
    }
    return *this;
}

bool SqliteStatement::prepare(sqlite3 *db, const QString &sql)
{
    sqlite3_finalize(m_statement);
    m_statement = nullptr;
    m_db = db;
    const QByteArray text = sql.toUtf8();
    // The length includes the terminating NUL, which saves SQLite a copy.
    return sqlite3_prepare_v2(db, text.constData(), int(text.size()) + 1, &m_statement, nullptr)
        == SQLITE_OK;
}

SqliteStatement::Step SqliteStatement::step()
{
    switch (sqlite3_step(m_statement)) {
    case SQLITE_ROW:
        return Step::Row;
    case SQLITE_DONE:
        return Step::Done;
    default:
        return Step::Error;
    }
}

QString SqliteStatement::errorText() const
{
    return m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : QString();
}

int SqliteStatement::columnCount() const
{
    return m_statement ? sqlite3_column_count(m_statement) : 0;
}

QString SqliteStatement::columnName(int column) const
{
    return QString::fromUtf8(sqlite3_column_name(m_statement, column));
}

SqliteStatement::Type SqliteStatement::type(int column) const
{
    return Type(sqlite3_column_type(m_statement, column));
}

qint64 SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

QString SqliteStatement::text(int column) const
{
    // Text first, then its length: the order SQLite documents as safe.
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    return QString::fromUtf8(bytes, sqlite3_column_bytes(m_statement, column));
}

QVariant SqliteStatement::value(int column) const
{
    switch (sqlite3_column_type(m_statement, column)) {
    case SQLITE_INTEGER:
        return QVariant(qlonglong(sqlite3_column_int64(m_statement, column)));
    case SQLITE_FLOAT:
        return QVariant(sqlite3_column_double(m_statement, column));
    case SQLITE_TEXT:
        return QVariant(text(column));
    case SQLITE_BLOB: {
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(m_statement, column));
        return QVariant(QByteArray(bytes, sqlite3_column_bytes(m_statement, column)));
    }
    default:
        return QVariant(QMetaType::fromType<QString>());
    }
}
