#include "SqlTrace.h"

#include "LineEscape.h"

#include <QMutexLocker>
#include <QStringTokenizer>

using namespace Qt::StringLiterals;

SqlTrace::SqlTrace(const QString &path)
    : m_file(path)
{
    // A trace covers one run of the console; an old one would only mislead.
    m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

bool SqlTrace::isOpen() const
{
    QMutexLocker lock(&m_mutex);
    return m_file.isOpen();
}

QString SqlTrace::errorString() const
{
    QMutexLocker lock(&m_mutex);
    return m_file.errorString();
}

void SqlTrace::record(const QString &statement)
{
    // Backslashes are doubled: file-box paths are full of them, and a folder
    // named "\new" must not read back as a line break.
    const QByteArray bytes = (LineEscape::escape(statement) + u'\n').toUtf8();

    QMutexLocker lock(&m_mutex);
    if (!m_file.isOpen())
        return;
    m_file.write(bytes);
    // Flushed per statement: the trace is read when something went wrong,
    // and then the last statements matter most.
    m_file.flush();
}

QString SqlTrace::decode(QStringView line)
{
    return LineEscape::unescape(line);
}

QStringList SqlTrace::readStatements(const QString &path, QString *errorString)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (errorString)
            *errorString = file.errorString();
        return {};
    }
    QStringList statements;
    const QString text = QString::fromUtf8(file.readAll());
    for (const QStringView line : QStringTokenizer(text, u'\n', Qt::SkipEmptyParts))
        statements.append(decode(line));
    return statements;
}
