#include "SqlTemplate.h"

#include <algorithm>
#include <QtGlobal>

namespace {

// QString::number would allocate a string per value; statements are built
// hundreds of thousands of times per save.
void appendNumber(QString &out, qint64 value)
{
    char16_t digits[24];
    int n = 0;
    const bool negative = value < 0;
    quint64 magnitude = negative ? 0 - quint64(value) : quint64(value);
    do {
        digits[n++] = char16_t(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (negative)
        digits[n++] = u'-';
    std::reverse(digits, digits + n);
    out.append(QStringView(digits, n));
}

} // namespace

SqlTemplate::SqlTemplate(QStringView text)
    : m_text(text.toString())
{
    qsizetype start = 0;
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == u'%' && (text[i + 1] == u'd' || text[i + 1] == u's')) {
            m_pieces.append(text.mid(start, i - start).toString());
            start = i + 2;
            ++i;
        }
    }
    m_pieces.append(text.mid(start).toString());
    for (const QString &piece : std::as_const(m_pieces))
        m_literalLength += piece.size();
}

QString SqlTemplate::format(std::initializer_list<Value> values) const
{
    if (qsizetype(values.size()) != m_pieces.size() - 1)
        qFatal("SqlTemplate: %d values for %d placeholders", int(values.size()),
            int(m_pieces.size() - 1));
    qsizetype length = m_literalLength;
    for (const Value &value : values)
        length += std::holds_alternative<QStringView>(value) ? std::get<QStringView>(value).size()
                                                             : 11;
    QString result;
    result.reserve(length);
    auto piece = m_pieces.cbegin();
    for (const Value &value : values) {
        result += *piece++;
        if (const auto *text = std::get_if<QStringView>(&value))
            result += *text;
        else
            appendNumber(result, std::get<qint64>(value));
    }
    result += *piece;
    return result;
}
