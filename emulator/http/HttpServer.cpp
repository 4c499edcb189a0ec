// SPDX-License-Identifier: MIT
#include "http/HttpServer.h"

#include "http/Connection.h"
#include "http/FaultDelivery.h"

#include <httplib.h>

#include <QtCore/QMetaObject>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t workers = 64; // an open connection occupies one, be it idle
constexpr int keepAliveSeconds = 30;
constexpr int listenBacklog = 128;
constexpr int usualBodyLimit = 1; // in MiB
constexpr std::size_t bytesOfMebibyte = 1024 * 1024;

// Every path is routed here: the regular expression, unlike ".*", also takes line feeds.
constexpr const char *anyPath = R"([\s\S]*)";

Request decode(const httplib::Request &raw, const QByteArray &body)
{
    Request request;
    request.method = QString::fromStdString(raw.method);
    request.path = QString::fromStdString(raw.path);
    request.body = body;
    request.remoteAddress = QString::fromStdString(raw.remote_addr);
    for (const auto &[key, value] : raw.params)
        request.query.insert(QString::fromStdString(key), QString::fromStdString(value));
    for (const auto &[name, value] : raw.headers) {
        // The server adds the ends of the connection as headers of its own.
        const bool added = name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" ||
                           name == "LOCAL_PORT";
        if (!added) {
            request.headers.append({QString::fromStdString(name), QString::fromStdString(value)});
        }
    }
    return request;
}

// Reads the body wholly, also when it is too long to keep: what is left unread on a kept-alive
// connection would be taken for the next request. Returns an HTTP status, 200 for a good body.
int readBody(const httplib::Request &raw, const httplib::ContentReader &read, int limit,
             QByteArray &body)
{
    const auto maximumBytes = static_cast<std::size_t>(limit) * bytesOfMebibyte;
    // Without either header there is no body, but the server would wait for one.
    if (!raw.has_header("Content-Length") && !raw.has_header("Transfer-Encoding"))
        return 200;
    std::size_t total = 0;
    const auto append = [&](const char *data, std::size_t size) {
        total += size;
        if (total <= maximumBytes)
            body.append(data, static_cast<int>(size));
        return true;
    };
    const bool complete =
        raw.is_multipart_form_data()
            ? read([](const auto &) { return true; }, append) // of a type that goes by two names
            : read(append);
    if (total > maximumBytes)
        return 413;
    return complete ? 200 : 400;
}

QString serverRefusal(int httpStatus, int bodyLimit)
{
    switch (httpStatus) {
    case 413:
        return QStringLiteral("the body is longer than %1 MiB").arg(bodyLimit);
    case 414:
        return QStringLiteral("the URL is too long");
    case 416:
        return QStringLiteral("the answer has no such range");
    case 500:
        return QStringLiteral("the emulator failed");
    default:
        return QStringLiteral("the request is not valid HTTP");
    }
}

} // namespace

HttpServer::HttpServer(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
    , m_server(std::make_unique<httplib::Server>())
{
    configure();
    setBodyLimit(QString(), usualBodyLimit); // the server also reads bodies that have no route
    route();
}

HttpServer::~HttpServer()
{
    if (!m_acceptor.joinable())
        return;
    stop();
    std::deque<std::packaged_task<Answer()>> abandoned;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        abandoned.swap(m_waiting);
    }
    abandoned.clear(); // their workers wake up with an exception
    m_acceptor.join();
}

void HttpServer::configure()
{
    m_server->new_task_queue = [] { return new httplib::ThreadPool(workers); };
    m_server->set_tcp_nodelay(true); // headers and body are two writes
    m_server->set_keep_alive_max_count(std::numeric_limits<int>::max());
    m_server->set_keep_alive_timeout(keepAliveSeconds);
    m_server->set_socket_options([this](int descriptor) {
        // Not the default, under which a second emulator could listen on the same port.
        const int yes = 1;
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        m_listener = descriptor;
    });
    m_server->set_exception_handler([](const httplib::Request &, httplib::Response &response,
                                       const std::exception_ptr &) { response.status = 500; });
    // For what the server refuses by itself; our own answers have a content type.
    m_server->set_error_handler([this](const httplib::Request &raw, httplib::Response &response) {
        if (response.has_header("Content-Type"))
            return;
        const QByteArray body = failAnswer(serverRefusal(response.status, bodyLimit(raw))).body;
        response.set_content(body.toStdString(), "application/json");
    });
}

void HttpServer::route()
{
    const auto plain = [this](const httplib::Request &raw, httplib::Response &response) {
        answer(raw, {}, response);
    };
    const auto reading = [this](const httplib::Request &raw, httplib::Response &response,
                                const httplib::ContentReader &reader) {
        QByteArray body;
        const int httpStatus = readBody(raw, reader, bodyLimit(raw), body);
        if (httpStatus == 200)
            answer(raw, body, response);
        else if (response.status < 400) // else the server knows it better
            response.status = httpStatus;
    };
    m_server->Get(anyPath, plain).Options(anyPath, plain).Delete(anyPath, plain);
    m_server->Post(anyPath, reading).Put(anyPath, reading).Patch(anyPath, reading);
    m_server->Delete(anyPath, reading);
}

void HttpServer::setBodyLimit(const QString &path, int mebibytes)
{
    m_bodyLimits[path.toStdString()] = mebibytes;
    m_largestBody = std::max(m_largestBody, mebibytes);
    m_server->set_payload_max_length(static_cast<std::size_t>(m_largestBody) * bytesOfMebibyte);
}

int HttpServer::bodyLimit(const httplib::Request &raw) const
{
    const auto found = m_bodyLimits.find(raw.path);
    return found == m_bodyLimits.end() ? usualBodyLimit : found->second;
}

int HttpServer::listen(const QHostAddress &address, int port)
{
    const std::string host = address.toString().toStdString();
    if (port == 0)
        m_port = std::max(m_server->bind_to_any_port(host), 0);
    else if (m_server->bind_to_port(host, port))
        m_port = port;
    if (m_port == 0)
        return 0;
    // cpp-httplib asks for a backlog of 5, at which a burst of connections loses some for a second.
    ::listen(m_listener, listenBacklog);
    m_acceptor = std::thread([this] {
        m_server->listen_after_bind(); // returns when all workers have ended
        QMetaObject::invokeMethod(this, "stopped", Qt::QueuedConnection);
    });
    while (!m_server->is_running()) // before that, stop() would do nothing
        std::this_thread::yield();
    return m_port;
}

void HttpServer::stop()
{
    if (!m_wait.stop())
        return;
    m_server->stop();
    // What is being answered can still go out.
    Connection::endInputs(m_port);
}

void HttpServer::answer(const httplib::Request &raw, const QByteArray &body,
                        httplib::Response &response)
{
    const Connection client(raw, m_port);
    deliver(pollHandler(decode(raw, body), client), client, m_wait, response);
}

// Not a blocking queued call: the queue under our own mutex shows the hand-over to the thread
// sanitizer, which does not see into Qt.
Answer HttpServer::handOver(const Request &request)
{
    std::packaged_task<Answer()> task([&] { return m_handler(request); });
    std::future<Answer> result = task.get_future();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closed)
            throw std::runtime_error("the service has ended");
        m_waiting.push_back(std::move(task));
    }
    QMetaObject::invokeMethod(this, "answerWaiting", Qt::QueuedConnection);
    return result.get();
}

// Only final answers count as news; else two long polls would wake each other for ever.
Answer HttpServer::pollHandler(const Request &request, const Connection &client)
{
    const auto start = WorkerWait::Clock::now();
    for (;;) {
        const quint64 seen = m_wait.newsCount();
        Answer answer = handOver(request);
        if (answer.longPoll.count() == 0) {
            m_wait.announceNews();
            return answer;
        }
        if (!m_wait.waitForNews(seen, start + answer.longPoll, client))
            return answer;
    }
}

void HttpServer::answerWaiting()
{
    std::deque<std::packaged_task<Answer()>> waiting;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        waiting.swap(m_waiting);
    }
    for (auto &task : waiting)
        task();
}
