#pragma once

#include <QString>
#include <QStringView>

// The markers under which ";", "'" and "\" of a nickname are stored, because
// the save writes text values unquoted into its statements.
class EscapeMarkers
{
public:
    static constexpr QStringView Semicolon = u"###VELMAR-SEMICOLON###";
    static constexpr QStringView Quotation = u"###VELMAR-QUOTATION###";
    static constexpr QStringView Backslash = u"###VELMAR-BACKSLASH###";

    // ";" first, then "'", then "\".
    static QString escape(const QString &text);
    static QString unescape(const QString &stored);
};
