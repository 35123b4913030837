#pragma once

#include <QString>
#include <QStringList>

// Splits a text at a delimiter. Consecutive delimiters yield empty tokens; an
// empty text yields none; asking for a token past the last one fails.
class CBStringTokenizer final
{
public:
    CBStringTokenizer(const QString &text, const QString &delimiter);

    bool hasMoreTokens() const;
    // False (token unchanged) past the last token.
    bool nextToken(QString &token);
    int countTokens() const;

private:
    QString m_text;
    QString m_delimiter;
    qsizetype m_position = 0;
    bool m_done;
};
