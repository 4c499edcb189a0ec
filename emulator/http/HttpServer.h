// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "http/WorkerWait.h"

#include <QtCore/QObject>
#include <QtNetwork/QHostAddress>

#include <deque>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class Connection;

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

/// An HTTP server on one address. With Connection and FaultDelivery the one place that knows
/// cpp-httplib.
///
/// Requests are read and answers delivered on worker threads, so that a slow delivery holds up
/// nobody else. The handler that makes the answers runs on the thread of this object, one request
/// after the other, from its event loop; for long polling, see Answer. A handler that throws is
/// answered with HTTP 500. stop() and stopped() end the service; the destructor, too, but without
/// answers to the requests that still wait for the handler.
class HttpServer : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<Answer(const Request &)>;

    explicit HttpServer(Handler handler, QObject *parent = nullptr);
    ~HttpServer() override;

    /// Takes longer or shorter bodies at one path than elsewhere (1 MiB); before listen().
    void setBodyLimit(const QString &path, int mebibytes);

    /// Binds and starts to serve; port 0 takes any free one. Returns the port, 0 if it is not free.
    int listen(const QHostAddress &address, int port);

    /// Ends the service: no new requests, idle connections and pending delays are cut short,
    /// answers in the making are still delivered. stopped() follows.
    void stop();

Q_SIGNALS:
    void stopped();

private:
    void configure();
    void route();
    int bodyLimit(const httplib::Request &raw) const;
    void answer(const httplib::Request &raw, const QByteArray &body, httplib::Response &response);
    Answer handOver(const Request &request);
    Answer pollHandler(const Request &request, const Connection &client);
    Q_INVOKABLE void answerWaiting();

    Handler m_handler;
    std::map<std::string, int> m_bodyLimits; ///< by path, in MiB
    int m_largestBody = 0;                   ///< of them
    std::unique_ptr<httplib::Server> m_server;
    std::thread m_acceptor;
    int m_listener = -1; ///< descriptor of the listening socket
    int m_port = 0;

    WorkerWait m_wait; ///< its news: another final answer has been made

    std::mutex m_mutex;    ///< guards what follows
    bool m_closed = false; ///< no further request may wait for the handler
    std::deque<std::packaged_task<Answer()>> m_waiting;
};
