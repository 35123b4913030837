#pragma once

#include <QHash>
#include <QTcpServer>
#include <QUrl>

// A plain HTTP server on a free local port for the tests of what the console
// downloads: answers every GET for a known path with its body, anything else
// with 404. A body can be held back after its first half, to cancel a
// download on the way.
class LocalHttpServer final : public QTcpServer
{
    Q_OBJECT

public:
    LocalHttpServer();

    QUrl url(const QString &path) const;

    QHash<QString, QByteArray> files;
    bool holdSecondHalf = false;
    int answered = 0; // requests answered with a body

private:
    void answer(QTcpSocket *socket);
};
