// The ODBC connection string of the server information file, as the console
// decides where it goes and reads single values out of it.
#include "ConnectionString.h"

#include <cstddef>
#include <cstdint>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const ConnectionTarget target = connectionTargetFor(text);
    if (target.qtDriver != u"QSQLITE"_s && target.qtDriver != u"QODBC"_s)
        __builtin_trap();
    qsizetype total = target.databaseName.size() + target.odbcDriver.size();
    for (const QString &key : { u"DRIVER"_s, u"DBQ"_s, u"UID"_s, u"PWD"_s, u"Server"_s })
        total += connectionStringValue(text, key).size();
    return total == -1 ? 1 : 0;
}
