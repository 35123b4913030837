#include "UserLogDetail.h"

using namespace Qt::StringLiterals;

namespace {

// The text after tag up to the next CR LF (or the end of the block).
QString taggedLine(const QString &block, const QString &tag)
{
    const qsizetype at = block.indexOf(tag);
    if (at < 0)
        return {};
    const qsizetype from = at + tag.size();
    const qsizetype end = block.indexOf(u"\r\n"_s, from);
    return block.mid(from, end < 0 ? -1 : end - from);
}

} // namespace

UserLogDetail UserLogDetail::fromFields(const QStringList &fields)
{
    UserLogDetail detail;
    const QString data = fields.isEmpty() ? QString() : fields.last();
    // The header fields are those before the data block.
    auto field = [&](qsizetype k) { return k < fields.size() - 1 ? fields.at(k) : QString(); };
    detail.header = u"%1\t: %2\r\n%3\t: %4\r\n%5\t: %6\r\n%7\t: %8\r\n%9\t: %10\r\n"_s.arg(
        u"Date"_s, field(0), u"Time"_s, field(1), u"Event"_s, field(5), u"Type"_s, field(6),
        u"Sender"_s, field(7));
    detail.header += u"%1\t: %2\r\n%3\t: %4\r\n\r\n%5\t:\r\n%6\r\n"_s.arg(
        u"Sender IP"_s, field(9), u"Receiver"_s, field(8), u"Data"_s, data);
    if (data.isEmpty())
        return detail;

    const QString files = taggedLine(data, u"FILES:"_s).trimmed();
    if (!files.isEmpty()) {
        detail.files = parseFiles(files);
        QString session = taggedLine(data, u"SESSIONID:"_s).trimmed();
        const qsizetype at = session.indexOf(QChar(64));
        if (at >= 0)
            session.truncate(at);
        detail.sessionId = session;
    }

    const qsizetype message = data.indexOf(u"MESSAGE: "_s);
    if (message >= 0) {
        QString text = data.mid(message + 9);
        const qsizetype end = text.indexOf(u".END_OF_DATA\r\n"_s);
        if (end >= 0)
            text.truncate(end);
        detail.message = text;
    }
    detail.richText = detail.message.startsWith(u"{\\rtf1"_s);
    return detail;
}

QList<UserLogDetail::File> UserLogDetail::parseFiles(const QString &list)
{
    QString text = list;
    if (text.startsWith(u'|'))
        text.remove(0, 1);
    const QStringList items = text.split(u'|', Qt::SkipEmptyParts);
    QList<File> files;
    // Two leading items, then three per file of which the second is its name.
    for (qsizetype i = 2; i + 1 < items.size(); i += 3) {
        const QString &name = items.at(i + 1);
        files.append({ name, name.contains(u'\\') });
    }
    return files;
}
