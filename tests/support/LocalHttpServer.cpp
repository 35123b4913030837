#include "LocalHttpServer.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

LocalHttpServer::LocalHttpServer()
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    listen(QHostAddress::LocalHost, 0);
}

QUrl LocalHttpServer::url(const QString &path) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(serverPort()).arg(path));
}

void LocalHttpServer::answer(QTcpSocket *socket)
{
    const QByteArray request = socket->readAll();
    const QString path = QString::fromLatin1(request.split(' ').value(1));
    if (!files.contains(path)) {
        socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    const QByteArray body = files.value(path);
    ++answered;
    socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n");
    if (holdSecondHalf) {
        socket->write(body.left(body.size() / 2));
        return;
    }
    socket->write(body);
    socket->disconnectFromHost();
}
