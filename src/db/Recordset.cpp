#include "Recordset.h"

#include "DbConnectionPrivate.h"
#include "DbError.h"
#include "SqliteStatement.h"

#include <cmath>
#include <limits>
#include <optional>
#include <QSqlError>
#include <QSqlRecord>

using namespace Qt::StringLiterals;

struct RecordsetPrivate
{
    // Declared first so that it is released last: the query needs the connection.
    std::shared_ptr<DbConnectionPrivate> connection;
    // Rows come either from a Qt query or, on an SQLite file, straight from
    // the statement on the driver's handle.
    QSqlQuery query;
    SqliteStatement native;
    bool isNative = false;
    // Copied out of the record once: QSqlRecord::fieldName copies a whole
    // QSqlField on every call, and the loads look fields up by name per row.
    QStringList names;
    bool eof = true;
};

namespace {

[[noreturn]] void raise(const QString &source, const QString &description)
{
    throw DbException(DbError { DbError::Unspecified, source, description });
}

void raiseFetchError(const RecordsetPrivate &p)
{
    if (p.isNative)
        raise(p.connection->source, p.native.errorText());
    const QSqlError error = p.query.lastError();
    if (error.type() == QSqlError::NoError)
        return;
    QString text = error.databaseText().trimmed();
    if (text.isEmpty())
        text = error.driverText().trimmed();
    raise(p.connection->source, text);
}

std::optional<qint32> fromWide(qint64 value)
{
    if (value < std::numeric_limits<qint32>::min() || value > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return qint32(value);
}

std::optional<qint32> fromDouble(double value)
{
    if (!std::isfinite(value))
        return std::nullopt;
    // Halves go to the even neighbour, as the variant conversion does.
    const double rounded = std::nearbyint(value);
    if (rounded < double(std::numeric_limits<qint32>::min())
        || rounded > double(std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return qint32(rounded);
}

std::optional<qint32> toInt32(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? 1 : 0;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::UShort:
        return value.toInt();
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return fromWide(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong wide = value.toULongLong();
        if (wide > qulonglong(std::numeric_limits<qint32>::max()))
            return std::nullopt;
        return qint32(wide);
    }
    case QMetaType::Float:
    case QMetaType::Double:
        return fromDouble(value.toDouble());
    default:
        break;
    }
    const QString text = value.toString().trimmed();
    bool ok = false;
    const qlonglong wide = text.toLongLong(&ok);
    if (ok)
        return fromWide(wide);
    const double real = text.toDouble(&ok);
    if (ok)
        return fromDouble(real);
    return std::nullopt;
}

} // namespace

Recordset::Recordset() = default;
Recordset::~Recordset() = default;
Recordset::Recordset(Recordset &&) noexcept = default;
Recordset &Recordset::operator=(Recordset &&) noexcept = default;

Recordset::Recordset(std::shared_ptr<DbConnectionPrivate> connection, QSqlQuery &&query)
    : d(std::make_unique<RecordsetPrivate>())
{
    d->connection = std::move(connection);
    d->query = std::move(query);
    const QSqlRecord record = d->query.record();
    d->names.reserve(record.count());
    for (int i = 0; i < record.count(); ++i)
        d->names.append(record.fieldName(i));
    fetch();
}

Recordset::Recordset(std::shared_ptr<DbConnectionPrivate> connection, SqliteStatement &&statement)
    : d(std::make_unique<RecordsetPrivate>())
{
    d->connection = std::move(connection);
    d->native = std::move(statement);
    d->isNative = true;
    const int columns = d->native.columnCount();
    d->names.reserve(columns);
    for (int i = 0; i < columns; ++i)
        d->names.append(d->native.columnName(i));
    fetch();
}

void Recordset::fetch()
{
    if (d->isNative) {
        const SqliteStatement::Step result = d->native.step();
        d->eof = result != SqliteStatement::Step::Row;
        if (result == SqliteStatement::Step::Error)
            raiseFetchError(*d);
        return;
    }
    d->eof = !d->query.next();
    if (d->eof)
        raiseFetchError(*d);
}

void Recordset::checkReadable(int index) const
{
    if (!d)
        raise(QString(), u"Operation is not allowed when the object is closed."_s);
    if (d->eof)
        raise(d->connection->source,
            u"Either BOF or EOF is True, or the current record has been deleted."_s);
    if (index < 0 || index >= d->names.size())
        raise(d->connection->source,
            u"Item cannot be found in the collection corresponding to the requested name or ordinal (%1)."_s
                .arg(index));
}

bool Recordset::isEOF() const
{
    return !d || d->eof;
}

void Recordset::moveNext()
{
    if (!d)
        raise(QString(), u"Operation is not allowed when the object is closed."_s);
    if (d->eof)
        raise(d->connection->source,
            u"Either BOF or EOF is True, or the current record has been deleted."_s);
    fetch();
}

int Recordset::state() const
{
    return d ? Open : Closed;
}

void Recordset::close()
{
    d.reset();
}

int Recordset::fieldCount() const
{
    return d ? int(d->names.size()) : 0;
}

QString Recordset::fieldName(int index) const
{
    return d ? d->names.value(index) : QString();
}

int Recordset::fieldIndex(QStringView name) const
{
    if (!d)
        raise(QString(), u"Operation is not allowed when the object is closed."_s);
    // The first column of that name wins (the member load names HomePhone twice).
    for (qsizetype i = 0; i < d->names.size(); ++i) {
        if (d->names.at(i).compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    }
    raise(d->connection->source,
        u"Item cannot be found in the collection corresponding to the requested name or ordinal (%1)."_s
            .arg(name));
}

QVariant Recordset::value(int index) const
{
    checkReadable(index);
    if (d->isNative)
        return d->native.value(index);
    QVariant result = d->query.value(index);
    // A failed read comes back invalid; NULL comes back valid but null.
    if (!result.isValid())
        raiseFetchError(*d);
    return result;
}

QVariant Recordset::value(const QString &name) const
{
    return value(fieldIndex(name));
}

qint32 Recordset::intField(int index) const
{
    return toNumber(index, nullptr, nullptr);
}

qint32 Recordset::intField(const QString &name) const
{
    return toNumber(fieldIndex(name), &name, nullptr);
}

qint32 Recordset::intField(int index, qint32 valueForNull) const
{
    return toNumber(index, nullptr, &valueForNull);
}

qint32 Recordset::toNumber(int index, const QString *columnName, const qint32 *valueForNull) const
{
    checkReadable(index);
    if (d->isNative) {
        // One look at the storage class serves the usual cases.
        switch (d->native.type(index)) {
        case SqliteStatement::Type::Integer:
            if (const std::optional<qint32> number = fromWide(d->native.integer(index)))
                return *number;
            break;
        case SqliteStatement::Type::Null:
            if (valueForNull)
                return *valueForNull;
            break;
        default:
            break;
        }
    }
    // The name is looked up for the message only: copying it per row cost
    // more than reading the value.
    const auto name = [&] { return columnName ? *columnName : d->names.value(index); };
    const QVariant v = value(index);
    if (v.isNull()) {
        if (valueForNull)
            return *valueForNull;
        raise(d->connection->source,
            u"Type mismatch: column %1 is NULL, not a number."_s.arg(name()));
    }
    const std::optional<qint32> number = toInt32(v);
    if (!number)
        raise(d->connection->source,
            u"Type mismatch: column %1 holds '%2', not a 32-bit number."_s.arg(
                name(), v.toString()));
    return *number;
}

QString Recordset::textField(const QString &name) const
{
    return textField(fieldIndex(name));
}

QString Recordset::textField(int index) const
{
    checkReadable(index);
    if (d->isNative) {
        switch (d->native.type(index)) {
        case SqliteStatement::Type::Text:
            return d->native.text(index);
        case SqliteStatement::Type::Null:
            return QString();
        default:
            break;
        }
    }
    const QVariant v = value(index);
    return v.isNull() ? QString() : v.toString();
}

bool Recordset::isNull(const QString &name) const
{
    return isNull(fieldIndex(name));
}

bool Recordset::isNull(int index) const
{
    checkReadable(index);
    if (d->isNative)
        return d->native.type(index) == SqliteStatement::Type::Null;
    return value(index).isNull();
}
