#include "support/RawServer.h"

#include "common/RunOnThread_p.h"

#include <QtCore/QMutexLocker>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QSslSocket>

namespace {

// The size of the first whole request in `bytes`, 0 while it is not all there.
int wholeRequest(const QByteArray &bytes)
{
    const int head = bytes.indexOf("\r\n\r\n");
    if (head < 0)
        return 0;
    const int field = bytes.left(head).toLower().indexOf("content-length:");
    const int length =
        field < 0
            ? 0
            : bytes.mid(field + 15, bytes.indexOf('\r', field) - field - 15).trimmed().toInt();
    return bytes.size() >= head + 4 + length ? head + 4 + length : 0;
}

} // namespace

class RawServer::Listener : public QTcpServer
{
public:
    explicit Listener(RawServer *server) : m_server(server) {}

protected:
    void incomingConnection(qintptr descriptor) override
    {
        ++m_server->m_connections;
        auto *socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        if (!m_server->m_tls.isNull()) {
            socket->setSslConfiguration(m_server->m_tls);
            socket->startServerEncryption();
        }
        m_server->serve(socket);
    }

private:
    RawServer *m_server;
};

RawServer::RawServer(Handler handler, const QSslConfiguration &tls)
    : m_handler(std::move(handler))
    , m_tls(tls)
    , m_listener(std::make_unique<Listener>(this))
{
    m_listener->listen(QHostAddress::LocalHost);
    m_port = m_listener->serverPort();
    m_listener->moveToThread(&m_thread);
    m_thread.start();
}

RawServer::~RawServer()
{
    runOnThreadOf(m_listener.get(), [this] { m_listener.reset(); });
    m_thread.quit();
    m_thread.wait();
}

void RawServer::serve(QTcpSocket *socket)
{
    auto received = std::make_shared<QByteArray>();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, received] {
        received->append(socket->readAll());
        while (const int size = wholeRequest(*received)) {
            const QByteArray request = received->left(size);
            received->remove(0, size);
            {
                const QMutexLocker lock(&m_mutex);
                m_lastRequest = request;
            }
            ++m_requests;
            m_handler(*socket, request);
        }
    });
}

QString RawServer::url(const QString &path) const
{
    return QString("%1://127.0.0.1:%2%3")
        .arg(m_tls.isNull() ? "http" : "https")
        .arg(m_port)
        .arg(path);
}

QByteArray RawServer::lastRequest() const
{
    const QMutexLocker lock(&m_mutex);
    return m_lastRequest;
}

QByteArray RawServer::answer(const QByteArray &body, int status, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

RawServer::Handler RawServer::answering(const QByteArray &bytes)
{
    return [bytes](QTcpSocket &socket, const QByteArray &) { socket.write(bytes); };
}

quint16 RawServer::closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}
