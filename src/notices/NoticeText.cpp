#include "NoticeText.h"

using namespace Qt::StringLiterals;

QString NoticeText::quotationMarker()
{
    return u"###VELMAR-QUOTATION###"_s;
}

QString NoticeText::semicolonMarker()
{
    return u"###VELMAR-SEMICOLON###"_s;
}

QString NoticeText::backslashMarker()
{
    return u"###VELMAR-BACKSLASH###"_s;
}

QString NoticeText::unescapeStored(QString text)
{
    text.replace(quotationMarker(), u"'"_s);
    text.replace(semicolonMarker(), u";"_s);
    text.replace(backslashMarker(), u"\\"_s);
    return text;
}

QString NoticeText::unescapeForPanel(QString text)
{
    text.replace(semicolonMarker(), u";"_s);
    text.replace(quotationMarker(), u"'"_s);
    text.replace(backslashMarker(), u"\\"_s);
    return text;
}

QString NoticeText::writtenForm(QString stored)
{
    return stored.replace(u'-', u'/');
}

QString NoticeText::endDateForm(QString stored)
{
    // Positions counted in the text as it stands before each insertion, as the
    // eight-digit form needs; a position at or past the end gets no slash, so
    // a short or odd date is shown as it is rather than padded or cut.
    for (qsizetype position : { 6, 4 }) {
        if (position < stored.size())
            stored.insert(position, u'/');
    }
    return stored;
}

QStringList NoticeText::shownFileNames(const QString &fileList)
{
    QStringView list(fileList);
    if (list.startsWith(u'|'))
        list = list.sliced(1);
    QStringList names;
    int index = 0;
    for (QStringView item : list.tokenize(u'|', Qt::SkipEmptyParts)) {
        // Items 0 and 1 describe the upload as a whole; then every file takes
        // three items of which the second is its name.
        if (index >= 2 && (index - 2) % 3 == 1)
            names.append(item.toString());
        ++index;
    }
    return names;
}

bool NoticeText::isRichText(const QString &contents)
{
    return contents.startsWith(u"{\\rtf1"_s);
}
