#include "EditGroupRef.h"

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView GuestPrefix = u"guest:";

} // namespace

bool EditGroupRef::looksLikeGroup(QStringView text)
{
    return text.startsWith(u'/') || text.startsWith(u'#') || text.startsWith(GuestPrefix);
}

bool EditGroupRef::parse(QStringView text, EditGroupRef *ref, QString *error)
{
    EditGroupRef result;
    QStringView rest = text;
    if (rest.startsWith(GuestPrefix)) {
        result.guest = true;
        rest = rest.sliced(GuestPrefix.size());
    }

    if (rest.startsWith(u'#')) {
        const QStringView digits = rest.sliced(1);
        bool ok = !digits.isEmpty();
        for (const QChar c : digits)
            ok = ok && c >= u'0' && c <= u'9';
        const qint32 id = ok ? digits.toInt(&ok) : 0;
        if (!ok) {
            *error = u"bad group id: %1 (expected a decimal number after #)"_s.arg(text);
            return false;
        }
        result.id = id;
        *ref = result;
        return true;
    }

    if (!rest.startsWith(u'/')) {
        *error = u"bad group: %1 (expected /PATH, guest:/PATH, #ID or guest:#ID)"_s.arg(text);
        return false;
    }
    if (rest.size() == 1) {
        *ref = result;
        return true;
    }

    QString name;
    const auto endName = [&] {
        if (name.isEmpty()) {
            *error = u"empty group name in %1 (name such a group by #ID)"_s.arg(text);
            return false;
        }
        result.path.append(name);
        name.clear();
        return true;
    };
    for (qsizetype i = 1; i < rest.size(); ++i) {
        const QChar c = rest[i];
        if (c == u'\\' && i + 1 < rest.size() && (rest[i + 1] == u'/' || rest[i + 1] == u'\\')) {
            name.append(rest[++i]);
        } else if (c == u'/') {
            if (!endName())
                return false;
        } else {
            name.append(c);
        }
    }
    if (!endName())
        return false;
    *ref = result;
    return true;
}

QString EditGroupRef::toText() const
{
    QString text = guest ? GuestPrefix.toString() : QString();
    if (byId())
        return text + u'#' + QString::number(id);
    if (path.isEmpty())
        return text + u'/';
    for (const QString &name : path) {
        text += u'/';
        for (qsizetype i = 0; i < name.size(); ++i) {
            const QChar c = name[i];
            // A backslash needs doubling only where it would otherwise join
            // with the next character into an escape.
            const bool escapes = c == u'\\'
                && (i + 1 == name.size() || name[i + 1] == u'/' || name[i + 1] == u'\\');
            if (c == u'/' || escapes)
                text += u'\\';
            text += c;
        }
    }
    return text;
}
