#include "ConsoleMessageService.h"

#include <cstdio>

using namespace Qt::StringLiterals;

void ConsoleMessageService::print(const QString &text)
{
    m_shown << text;
    // Box texts carry the session's "\r\n" line breaks.
    QString line = text;
    line.replace(u"\r\n"_s, u"\n"_s);
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

int ConsoleMessageService::showMessage(const Box &box)
{
    print(box.title.isEmpty() ? box.text : box.title + u": "_s + box.text);
    return affirmative(box.buttons);
}

void ConsoleMessageService::showBalloon(const Balloon &balloon)
{
    print(balloon.title.isEmpty() ? balloon.text : balloon.title + u": "_s + balloon.text);
}
