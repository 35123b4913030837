#pragma once

#include <QString>
#include <QStringList>

// The text forms of notices: escape markers, date forms and the file list.
class NoticeText
{
public:
    // The load's unescaping: "###VELMAR-QUOTATION###" -> "'", then
    // "###VELMAR-SEMICOLON###" -> ";", then "###VELMAR-BACKSLASH###" -> "\".
    static QString unescapeStored(QString text);
    // The notice panel's second unescaping of the contents: semicolon, then
    // quotation, then backslash.
    static QString unescapeForPanel(QString text);
    // WRITEDATE as listed: every "-" becomes "/".
    static QString writtenForm(QString stored);
    // WriteEndDate as listed: a "/" before character 6 and then before
    // character 4, so "20071231" becomes "2007/12/31". A slash only ever goes
    // between two characters: a shorter text gets the slashes that fall inside
    // it ("200712" -> "2007/12", "2007" stays) and an empty one stays empty.
    static QString endDateForm(QString stored);
    // The shown file names of a "|"-separated file list: a leading "|"
    // dropped, empty items skipped, the first two items not shown, then the
    // second item of every group of three (also of a last, short group).
    static QStringList shownFileNames(const QString &fileList);
    // Contents beginning with "{\rtf1" are rich text.
    static bool isRichText(const QString &contents);

    // The markers that stand for "'", ";" and "\" in stored text.
    static QString quotationMarker();
    static QString semicolonMarker();
    static QString backslashMarker();
};
