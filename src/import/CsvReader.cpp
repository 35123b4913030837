#include "CsvReader.h"

QString CsvReader::decode(
    QByteArrayView bytes, const CodePage &codePage, CodePage::FileEncoding *detected)
{
    return codePage.decodeServerFile(bytes, detected);
}

QChar CsvReader::detectSeparator(QStringView text)
{
    qsizetype commas = 0;
    qsizetype tabs = 0;
    bool quoted = false;
    for (const QChar c : text) {
        if (c == u'"') {
            quoted = !quoted;
        } else if (!quoted) {
            if (c == u'\n' || c == u'\r')
                break;
            if (c == u',')
                ++commas;
            else if (c == u'\t')
                ++tabs;
        }
    }
    return tabs > commas ? u'\t' : u',';
}

CsvReader::CsvReader(QString text, QChar separator)
    : m_text(std::move(text))
    , m_separator(separator)
{
    skipBlankLines();
}

CsvReader CsvReader::fromBytes(QByteArrayView bytes, const CodePage &codePage)
{
    QString text = decode(bytes, codePage);
    const QChar separator = detectSeparator(text);
    return CsvReader(std::move(text), separator);
}

bool CsvReader::atEnd() const
{
    return m_pos >= m_text.size();
}

void CsvReader::skipBlankLines()
{
    while (m_pos < m_text.size()) {
        const QChar c = m_text.at(m_pos);
        if (c == u'\n') {
            ++m_line;
        } else if (c != u'\r') {
            break;
        }
        ++m_pos;
    }
}

QStringList CsvReader::next()
{
    QStringList fields;
    if (atEnd())
        return fields;
    const QChar *data = m_text.constData();
    const qsizetype size = m_text.size();
    QString field;
    bool fieldStart = true;
    bool quoted = false;
    // Unquoted runs are copied in one piece rather than character by
    // character: most fields have no quotes at all.
    while (m_pos < size) {
        const QChar c = data[m_pos];
        if (quoted) {
            if (c == u'"') {
                if (m_pos + 1 < size && data[m_pos + 1] == u'"') {
                    field.append(u'"');
                    m_pos += 2;
                    continue;
                }
                quoted = false;
                ++m_pos;
                continue;
            }
            if (c == u'\n')
                ++m_line;
            field.append(c);
            ++m_pos;
            continue;
        }
        if (c == u'"' && fieldStart) {
            quoted = true;
            fieldStart = false;
            ++m_pos;
            continue;
        }
        if (c == m_separator) {
            fields.append(std::move(field));
            field = QString();
            fieldStart = true;
            ++m_pos;
            continue;
        }
        if (c == u'\n' || c == u'\r') {
            // CR LF, LF, or a lone CR end the record.
            ++m_pos;
            if (c == u'\r' && m_pos < size && data[m_pos] == u'\n')
                ++m_pos;
            ++m_line;
            break;
        }
        qsizetype end = m_pos + 1;
        while (end < size && data[end] != m_separator && data[end] != u'\n' && data[end] != u'\r')
            ++end;
        field.append(QStringView(data + m_pos, end - m_pos));
        fieldStart = false;
        m_pos = end;
    }
    fields.append(std::move(field));
    skipBlankLines();
    return fields;
}
