#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMutex>
#include <QtCore/QThread>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <atomic>
#include <functional>
#include <memory>

/// A server on loopback that does to each request exactly what a test says, on a thread of its own.
class RawServer
{
public:
    /// Runs on the server's thread for each whole HTTP request; writes to the socket or closes it.
    /// May block; close() waits until what it does ends.
    using Handler = std::function<void(QTcpSocket &, const QByteArray &request)>;

    explicit RawServer(Handler handler, const QSslConfiguration &tls = QSslConfiguration());
    ~RawServer();
    RawServer(const RawServer &) = delete;
    RawServer &operator=(const RawServer &) = delete;

    quint16 port() const { return m_port; }
    QString url(const QString &path = {}) const;
    int requests() const { return m_requests; }
    int connections() const { return m_connections; }
    QByteArray lastRequest() const; ///< when no request is under way

    /// A whole HTTP answer.
    static QByteArray answer(const QByteArray &body, int status = 200,
                             const QByteArray &headers = {});
    static Handler answering(const QByteArray &bytes);
    /// A port where nothing listens.
    static quint16 closedPort();

private:
    class Listener;
    void serve(QTcpSocket *socket);

    Handler m_handler;
    QSslConfiguration m_tls;
    QThread m_thread;
    std::unique_ptr<Listener> m_listener;
    quint16 m_port = 0;
    std::atomic<int> m_requests{0};
    std::atomic<int> m_connections{0};
    mutable QMutex m_mutex;
    QByteArray m_lastRequest;
};
