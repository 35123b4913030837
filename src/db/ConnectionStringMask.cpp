#include "ConnectionStringMask.h"

using namespace Qt::StringLiterals;

QString maskConnectionStringPassword(const QString &connectionString)
{
    QString result;
    qsizetype pos = 0;
    const qsizetype size = connectionString.size();
    while (pos < size) {
        // One "key=value" pair up to the next semicolon outside braces.
        qsizetype end = pos;
        bool braced = false;
        while (end < size) {
            const QChar c = connectionString.at(end);
            if (c == u'{')
                braced = true;
            else if (c == u'}')
                braced = false;
            else if (c == u';' && !braced)
                break;
            ++end;
        }
        const QString pair = connectionString.mid(pos, end - pos);
        const qsizetype equals = pair.indexOf(u'=');
        const QString key = equals < 0 ? QString() : pair.left(equals).trimmed();
        if (equals >= 0
            && (key.compare(u"PWD"_s, Qt::CaseInsensitive) == 0
                || key.compare(u"Password"_s, Qt::CaseInsensitive) == 0)
            && !pair.mid(equals + 1).trimmed().isEmpty()) {
            result += pair.left(equals + 1) + u"******"_s;
        } else {
            result += pair;
        }
        if (end < size)
            result += u';';
        pos = end + 1;
    }
    return result;
}
