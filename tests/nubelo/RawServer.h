// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMutex>
#include <QtCore/QThread>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslSocket>

#include <atomic>
#include <functional>

/// A server on loopback that does to each request exactly what a test says, on a thread of its own.
class RawServer
{
public:
    /// Runs on the server's thread for each whole HTTP request; writes to the socket or closes it.
    using Handler = std::function<void(QSslSocket &, const QByteArray &request)>;

    explicit RawServer(Handler handler, const QSslConfiguration &tls = QSslConfiguration());
    /// Sends these bytes each time.
    explicit RawServer(const QByteArray &bytes, const QSslConfiguration &tls = QSslConfiguration());
    ~RawServer();
    Q_DISABLE_COPY(RawServer)

    QString url(const QString &path = {}) const;
    int requests() const { return m_requests; }
    int connections() const { return m_connections; }
    QByteArray lastRequest() const; ///< when no request is under way

    /// With the certificate and the key of a PEM file; asks none of the client.
    static QSslConfiguration tls(const QString &path);

    /// A whole HTTP answer.
    static QByteArray answer(const QByteArray &body, int status = 200,
                             const QByteArray &headers = {});

private:
    class Listener;
    void serve(QSslSocket &socket);

    const Handler m_handler;
    const QSslConfiguration m_tls;
    QThread m_thread;
    std::atomic<bool> m_isOver{false};
    quint16 m_port = 0;
    std::atomic<int> m_requests{0};
    std::atomic<int> m_connections{0};
    mutable QMutex m_mutex;
    QByteArray m_lastRequest;
};
