#include "EscapeMarkers.h"

namespace {
const QString semicolonMarker = EscapeMarkers::Semicolon.toString();
const QString quotationMarker = EscapeMarkers::Quotation.toString();
const QString backslashMarker = EscapeMarkers::Backslash.toString();
} // namespace

QString EscapeMarkers::escape(const QString &text)
{
    // Most nicknames hold none of the three characters: no copy for them.
    bool any = false;
    for (QChar c : text) {
        if (c == u';' || c == u'\'' || c == u'\\') {
            any = true;
            break;
        }
    }
    if (!any)
        return text;
    QString result = text;
    result.replace(QChar(u';'), semicolonMarker);
    result.replace(QChar(u'\''), quotationMarker);
    result.replace(QChar(u'\\'), backslashMarker);
    return result;
}

QString EscapeMarkers::unescape(const QString &stored)
{
    if (!stored.contains(QStringView(u"###VELMAR-")))
        return stored;
    QString result = stored;
    result.replace(semicolonMarker, QStringLiteral(";"));
    result.replace(quotationMarker, QStringLiteral("'"));
    result.replace(backslashMarker, QStringLiteral("\\"));
    return result;
}
