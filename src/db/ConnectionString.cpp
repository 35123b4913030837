#include "ConnectionString.h"

using namespace Qt::StringLiterals;

namespace {

// The driver names under which administrators know the Access driver.
bool isAccessDriver(const QString &driver)
{
    return driver.compare(u"Microsoft Access Driver (*.mdb)"_s, Qt::CaseInsensitive) == 0
        || driver.compare(u"Microsoft Access Driver (*.mdb, *.accdb)"_s, Qt::CaseInsensitive) == 0;
}

} // namespace

QString connectionStringValue(const QString &connectionString, const QString &key)
{
    // ODBC syntax: pairs separated by ';', a value in braces may hold ';' and
    // '=' and ends at the first '}' (a doubled '}}' is a literal brace).
    const QStringView text(connectionString);
    qsizetype pos = 0;
    while (pos < text.size()) {
        const qsizetype equals = text.indexOf(u'=', pos);
        if (equals < 0)
            break;
        const QStringView name = text.mid(pos, equals - pos).trimmed();
        qsizetype valueStart = equals + 1;
        while (valueStart < text.size() && text.at(valueStart).isSpace())
            ++valueStart;
        QString value;
        qsizetype next;
        if (valueStart < text.size() && text.at(valueStart) == u'{') {
            qsizetype i = valueStart + 1;
            while (i < text.size()) {
                if (text.at(i) == u'}') {
                    if (i + 1 < text.size() && text.at(i + 1) == u'}') {
                        value.append(u'}');
                        i += 2;
                        continue;
                    }
                    break;
                }
                value.append(text.at(i));
                ++i;
            }
            next = text.indexOf(u';', i);
        } else {
            next = text.indexOf(u';', valueStart);
            value = text.mid(valueStart, next < 0 ? -1 : next - valueStart).trimmed().toString();
        }
        if (name.compare(key, Qt::CaseInsensitive) == 0)
            return value.trimmed();
        if (next < 0)
            break;
        pos = next + 1;
    }
    return {};
}

ConnectionTarget connectionTargetFor(const QString &connectionString)
{
    ConnectionTarget target;
    target.odbcDriver = connectionStringValue(connectionString, u"DRIVER"_s);
    if (isAccessDriver(target.odbcDriver)) {
        // The server's local database is an SQLite 3 file on this platform.
        target.qtDriver = u"QSQLITE"_s;
        target.databaseName = connectionStringValue(connectionString, u"DBQ"_s);
    } else {
        target.qtDriver = u"QODBC"_s;
        target.databaseName = connectionString;
    }
    return target;
}
