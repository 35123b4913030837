#include "LogFileLoader.h"

#include <QFile>

std::optional<QByteArray> LogFileLoader::readAll(const QString &path)
{
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    QByteArray bytes(std::max<qint64>(in.size(), 0), Qt::Uninitialized);
    const qint64 got = in.read(bytes.data(), bytes.size());
    bytes.truncate(std::max<qint64>(got, 0));
    return bytes;
}
