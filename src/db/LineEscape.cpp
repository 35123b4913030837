#include "LineEscape.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace LineEscape {

namespace {
bool special(QChar c)
{
    const char16_t u = c.unicode();
    return u == u'\\' || u == u'\t' || u == u'\n' || u == u'\r';
}
} // namespace

bool needsEscape(QStringView text)
{
    return std::any_of(text.begin(), text.end(), special);
}

QString escape(QStringView text)
{
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (!special(c)) {
            out += c;
            continue;
        }
        out += u'\\';
        switch (c.unicode()) {
        case u'\t':
            out += u't';
            break;
        case u'\n':
            out += u'n';
            break;
        case u'\r':
            out += u'r';
            break;
        default:
            out += u'\\';
        }
    }
    return out;
}

QString unescape(QStringView line)
{
    QString out;
    out.reserve(line.size());
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == u'\\' && i + 1 < line.size()) {
            const char16_t next = line.at(i + 1).unicode();
            const char16_t decoded = next == u'\\' ? u'\\'
                : next == u't'                     ? u'\t'
                : next == u'n'                     ? u'\n'
                : next == u'r'                     ? u'\r'
                                                   : char16_t(0);
            if (decoded) {
                out += QChar(decoded);
                ++i;
                continue;
            }
        }
        out += c;
    }
    return out;
}

} // namespace LineEscape
