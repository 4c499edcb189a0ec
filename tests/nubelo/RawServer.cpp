// SPDX-License-Identifier: MIT
#include "nubelo/RawServer.h"

#include "support/Rows.h"

#include <QtNetwork/QSslKey>
#include <QtNetwork/QTcpServer>

namespace {

// The size of the first whole request in `bytes`, 0 while it is not all there.
int wholeRequest(const QByteArray &bytes)
{
    const int head = bytes.indexOf("\r\n\r\n") + 4;
    const int length = bytes.left(head).indexOf("Content-Length: ");
    const int size = head + (length < 0 ? 0 : std::atoi(bytes.constData() + length + 16));
    return head >= 4 && bytes.size() >= size ? size : 0;
}

} // namespace

class RawServer::Listener : public QTcpServer
{
public:
    explicit Listener(RawServer *server) : m_server(server) {}

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        m_server->serve(*socket);
    }

private:
    RawServer *m_server;
};

RawServer::RawServer(Handler handler, const QSslConfiguration &tls)
    : m_handler(std::move(handler))
    , m_tls(tls)
{
    auto *listener = new Listener(this);
    listener->listen(QHostAddress::LocalHost);
    m_port = listener->serverPort();
    listener->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, listener, &QObject::deleteLater);
    QObject::connect(&m_thread, &QThread::finished, listener, [this] { m_isOver = true; });
    m_thread.start();
}

RawServer::RawServer(const QByteArray &bytes, const QSslConfiguration &tls)
    : RawServer([bytes](QSslSocket &socket, const QByteArray &) { socket.write(bytes); }, tls)
{
}

RawServer::~RawServer()
{
    m_thread.quit();
    m_thread.wait();
    // Does not loop. The thread sanitizer cannot see wait(), but this: it orders the handlers
    // before what the test does next.
    while (!m_isOver)
        QThread::yieldCurrentThread();
}

void RawServer::serve(QSslSocket &socket)
{
    ++m_connections;
    if (!m_tls.isNull()) {
        socket.setSslConfiguration(m_tls);
        socket.startServerEncryption();
    }
    QObject::connect(&socket, &QSslSocket::readyRead, &socket,
                     [this, &socket, received = QByteArray()]() mutable {
                         received += socket.readAll();
                         while (const int size = wholeRequest(received)) {
                             const QByteArray request = received.left(size);
                             received.remove(0, size);
                             {
                                 const QMutexLocker lock(&m_mutex);
                                 m_lastRequest = request; // NOLINT: "this" is not null
                             }
                             ++m_requests;
                             m_handler(socket, request);
                         }
                     });
}

QString RawServer::url(const QString &path) const
{
    const QString scheme = m_tls.isNull() ? "http" : "https";
    return QString("%1://127.0.0.1:%2%3").arg(scheme).arg(m_port).arg(path);
}

QByteArray RawServer::lastRequest() const
{
    const QMutexLocker lock(&m_mutex);
    return m_lastRequest;
}

QSslConfiguration RawServer::tls(const QString &path)
{
    const QByteArray pem = textOf(path).toLatin1();
    QSslConfiguration configuration;
    configuration.setLocalCertificateChain(QSslCertificate::fromData(pem));
    configuration.setPrivateKey(QSslKey(pem, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

QByteArray RawServer::answer(const QByteArray &body, int status, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}
