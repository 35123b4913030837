#include "CBStringTokenizer.h"

CBStringTokenizer::CBStringTokenizer(const QString &text, const QString &delimiter)
    : m_text(text)
    , m_delimiter(delimiter)
    , m_done(text.isEmpty())
{ }

bool CBStringTokenizer::hasMoreTokens() const
{
    return !m_done;
}

bool CBStringTokenizer::nextToken(QString &token)
{
    if (m_done)
        return false;
    const qsizetype found = m_delimiter.isEmpty() ? -1 : m_text.indexOf(m_delimiter, m_position);
    if (found < 0) {
        token = m_text.mid(m_position);
        m_done = true;
    } else {
        token = m_text.mid(m_position, found - m_position);
        m_position = found + m_delimiter.size();
    }
    return true;
}

int CBStringTokenizer::countTokens() const
{
    if (m_done)
        return 0;
    if (m_delimiter.isEmpty())
        return 1;
    return int(QStringView(m_text).mid(m_position).count(m_delimiter)) + 1;
}
