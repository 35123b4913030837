#include "ConsoleOutput.h"

#include <QByteArray>

void printTo(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

void printLine(FILE *stream, const QString &text)
{
    printTo(stream, text + u'\n');
}
