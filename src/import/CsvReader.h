#pragma once

#include "CodePage.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>

// Comma- or tab-separated text as spreadsheets export it: fields separated
// by the separator, a field in double quotes may hold separators, line
// breaks and doubled quotes (""), records end at LF or CR LF (a lone CR
// too). Blank lines are skipped. Quotes inside an unquoted field are taken
// as they stand; an opening quote that is never closed takes the rest of the
// text. Never fails: every input gives records.
class CsvReader final
{
public:
    // By byte-order mark (UTF-8, UTF-16 LE/BE), else UTF-8 when the bytes
    // are valid UTF-8, else the code page (the files the server writes are
    // read the same way).
    static QString decode(
        QByteArrayView bytes, const CodePage &codePage, CodePage::FileEncoding *detected = nullptr);
    // Tab when the first record has more tabs than commas outside quotes,
    // else comma.
    static QChar detectSeparator(QStringView text);

    explicit CsvReader(QString text, QChar separator = u',');
    // Decodes bytes and detects the separator.
    static CsvReader fromBytes(QByteArrayView bytes, const CodePage &codePage);

    QChar separator() const { return m_separator; }
    bool atEnd() const;
    // The next record; empty at the end.
    QStringList next();
    // The line (from 1) the next record starts on.
    qsizetype line() const { return m_line; }

private:
    void skipBlankLines();

    QString m_text;
    QChar m_separator;
    qsizetype m_pos = 0;
    qsizetype m_line = 1;
};
