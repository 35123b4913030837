#pragma once

#include "CsvReader.h"
#include "ImportSource.h"

// A CSV or TSV file, read whole when opened: its one table is the file
// (named by its file name), its first record the column names.
class CsvImportSource final : public ImportSource
{
public:
    // Nothing and why in error when the file cannot be read.
    static std::unique_ptr<CsvImportSource> open(
        const ImportSourceAddress &address, const CodePage &codePage, QString *error);

    QStringList tables() const override;
    std::unique_ptr<ImportCursor> cursor(const QString &table, QString *error) override;

    CodePage::FileEncoding encoding() const { return m_encoding; }
    QChar separator() const { return m_separator; }

private:
    CsvImportSource(ImportSourceAddress address, QString text, CodePage::FileEncoding encoding);

    QString m_text;
    CodePage::FileEncoding m_encoding;
    QChar m_separator;
};
