#include "RtfDocument.h"

using namespace Qt::StringLiterals;

namespace {

QString colorName(quint32 rgb)
{
    return u"#%1"_s.arg(uint(rgb & 0xFFFFFFu), 6, 16, QChar(u'0'));
}

QString escaped(const QString &text)
{
    QString html = text.toHtmlEscaped();
    html.replace(u'\n', u"<br/>"_s);
    return html;
}

QString runStyle(const RtfCharFormat &format)
{
    QStringList style;
    if (format.bold)
        style << u"font-weight:700"_s;
    if (format.italic)
        style << u"font-style:italic"_s;
    if (format.underline && format.strikeOut)
        style << u"text-decoration:underline line-through"_s;
    else if (format.underline)
        style << u"text-decoration:underline"_s;
    else if (format.strikeOut)
        style << u"text-decoration:line-through"_s;
    if (format.halfPoints > 0) {
        // Half points: an odd value is a half-point size.
        style << (format.halfPoints % 2 ? u"font-size:%1.5pt"_s.arg(format.halfPoints / 2)
                                        : u"font-size:%1pt"_s.arg(format.halfPoints / 2));
    }
    if (format.color)
        style << u"color:"_s + colorName(*format.color);
    if (format.background)
        style << u"background-color:"_s + colorName(*format.background);
    if (!format.fontFamily.isEmpty()) {
        QString family = format.fontFamily;
        family.remove(u'\'').remove(u'"').remove(u';').remove(u'<').remove(u'>');
        style << u"font-family:'%1'"_s.arg(family.toHtmlEscaped());
    }
    return style.join(u';');
}

QString alignmentAttribute(RtfParagraph::Alignment alignment)
{
    switch (alignment) {
    case RtfParagraph::Alignment::Center:
        return u" align=\"center\""_s;
    case RtfParagraph::Alignment::Right:
        return u" align=\"right\""_s;
    case RtfParagraph::Alignment::Justify:
        return u" align=\"justify\""_s;
    case RtfParagraph::Alignment::Left:
        break;
    }
    return {};
}

} // namespace

QString RtfParagraph::plainText() const
{
    QString text;
    for (const RtfRun &run : runs)
        text += run.text;
    return text;
}

QString RtfDocument::plainText() const
{
    QStringList lines;
    lines.reserve(paragraphs.size());
    for (const RtfParagraph &paragraph : paragraphs)
        lines << paragraph.plainText();
    return lines.join(u'\n');
}

QString RtfDocument::toHtml() const
{
    QString html = u"<html><body>"_s;
    for (const RtfParagraph &paragraph : paragraphs) {
        // pre-wrap keeps the tabs and runs of spaces the sender typed.
        html += u"<p style=\"margin:0;white-space:pre-wrap\""_s
            + alignmentAttribute(paragraph.alignment) + u'>';
        bool empty = true;
        for (const RtfRun &run : paragraph.runs) {
            if (run.text.isEmpty())
                continue;
            empty = false;
            const QString style = runStyle(run.format);
            if (style.isEmpty())
                html += escaped(run.text);
            else
                html += u"<span style=\"%1\">%2</span>"_s.arg(style, escaped(run.text));
        }
        // An empty paragraph still takes its line, as in the sender's window.
        if (empty)
            html += u"<br/>"_s;
        html += u"</p>\n"_s;
    }
    html += u"</body></html>"_s;
    return html;
}

QString RtfDocument::plainTextToHtml(const QString &text)
{
    QString normalised = text;
    normalised.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    return u"<html><body><p style=\"margin:0;white-space:pre-wrap\">"_s + escaped(normalised)
        + u"</p></body></html>"_s;
}
