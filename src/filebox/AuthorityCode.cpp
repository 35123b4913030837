#include "AuthorityCode.h"

using namespace Qt::StringLiterals;

qint32 AuthorityCode::decode(const QString &stored)
{
    if (stored.compare(u"W"_s, Qt::CaseInsensitive) == 0)
        return ReadWrite;
    if (stored.compare(u"R"_s, Qt::CaseInsensitive) == 0)
        return ReadOnly;
    return None;
}

QString AuthorityCode::encode(qint32 authority)
{
    switch (authority) {
    case ReadWrite:
        return u"W"_s;
    case ReadOnly:
        return u"R"_s;
    default:
        return u"X"_s;
    }
}

QString AuthorityCode::displayText(qint32 authority)
{
    switch (authority) {
    case ReadWrite:
        return u"读/写"_s;
    case ReadOnly:
        return u"只读"_s;
    default:
        return {};
    }
}
