#include "CsvImportSource.h"

#include <cstdio>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

class CsvCursor final : public ImportCursor
{
public:
    CsvCursor(const QString &text, QChar separator)
        : m_reader(text, separator)
    {
        m_columns = m_reader.next();
        for (QString &name : m_columns)
            name = name.trimmed();
    }

    QStringList columns() const override { return m_columns; }
    bool fetch(QList<QStringList> *rows, qsizetype maxRows) override
    {
        for (qsizetype n = 0; (maxRows < 0 || n < maxRows) && !m_reader.atEnd(); ++n) {
            QStringList row = m_reader.next();
            fitToColumns(row, m_columns.size());
            rows->append(std::move(row));
        }
        return true;
    }
    bool atEnd() const override { return m_reader.atEnd(); }
    QString errorString() const override { return {}; }

private:
    CsvReader m_reader;
    QStringList m_columns;
};

} // namespace

CsvImportSource::CsvImportSource(
    ImportSourceAddress address, QString text, CodePage::FileEncoding encoding)
    : ImportSource(std::move(address))
    , m_text(std::move(text))
    , m_encoding(encoding)
    , m_separator(CsvReader::detectSeparator(m_text))
{ }

std::unique_ptr<CsvImportSource> CsvImportSource::open(
    const ImportSourceAddress &address, const CodePage &codePage, QString *error)
{
    // "-" is standard input, so that a script can pipe its rows in.
    QFile file;
    const bool opened = address.location == u"-"_s
        ? file.open(stdin, QIODevice::ReadOnly)
        : (file.setFileName(address.location), file.open(QIODevice::ReadOnly));
    if (!opened) {
        if (error)
            *error = u"无法读取文件 %1: %2"_s.arg(address.location, file.errorString());
        return nullptr;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (error)
            *error = u"无法读取文件 %1: %2"_s.arg(address.location, file.errorString());
        return nullptr;
    }
    CodePage::FileEncoding encoding = CodePage::FileEncoding::CodePage;
    QString text = CsvReader::decode(bytes, codePage, &encoding);
    return std::unique_ptr<CsvImportSource>(
        new CsvImportSource(address, std::move(text), encoding));
}

QStringList CsvImportSource::tables() const
{
    return { QFileInfo(address().location).fileName() };
}

std::unique_ptr<ImportCursor> CsvImportSource::cursor(const QString &table, QString *error)
{
    if (!table.isEmpty() && table != tables().constFirst()) {
        if (error)
            *error = u"%1 只有一个数据表 \"%2\", 没有 \"%3\"."_s.arg(
                address().location, tables().constFirst(), table);
        return nullptr;
    }
    // The cursor copies nothing: QString shares the decoded text.
    return std::make_unique<CsvCursor>(m_text, m_separator);
}
