// SPDX-License-Identifier: MIT
#pragma once

#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <functional>

/// An answer with a page that has the title "t".
inline QByteArray html(const QByteArray &body)
{
    const QByteArray page = "<!DOCTYPE html><title>t</title>" + body;
    return "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nConnection: close\r\nContent-Length: " +
           QByteArray::number(page.size()) + "\r\n\r\n" + page;
}

inline QByteArray redirect(const QByteArray &address)
{
    return "HTTP/1.1 302 Found\r\nLocation: " + address + "\r\nContent-Length: 0\r\n\r\n";
}

/// A web server for the pages of one test; it has its address from the beginning.
class PageServer : public QTcpServer
{
public:
    /// Gives each request its answer; an empty one ends the connection.
    explicit PageServer(std::function<QByteArray(const QByteArray &target)> answers)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this, answers = std::move(answers)] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, socket, [socket, answers] {
                const QByteArray request = socket->readAll();
                socket->write(answers(request.split(' ').value(1)));
                socket->disconnectFromHost();
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }
    QString page(const QString &path = "/") const
    {
        return QString("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }
};
