#include "SqlTrace.h"

#include <QMutexLocker>

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
    QString line = statement;
    line.replace(u'\r', u"\\r"_s);
    line.replace(u'\n', u"\\n"_s);
    line.append(u'\n');
    const QByteArray bytes = line.toUtf8();

    QMutexLocker lock(&m_mutex);
    if (!m_file.isOpen())
        return;
    m_file.write(bytes);
    // Flushed per statement: the trace is read when something went wrong,
    // and then the last statements matter most.
    m_file.flush();
}
