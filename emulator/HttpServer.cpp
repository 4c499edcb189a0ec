#include "HttpServer.h"

#include <httplib.h>

#include <QtCore/QMetaObject>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t workers = 64; // an open connection occupies one, be it idle
constexpr int keepAliveSeconds = 30;
constexpr int listenBacklog = 128;
constexpr std::size_t maximumBodyBytes = 1024 * 1024;

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
// connection would be taken for the next request. Returns an HTTP code, 200 for a good body.
int readBody(const httplib::Request &raw, const httplib::ContentReader &read, QByteArray &body)
{
    // Without either header there is no body, but the server would wait for one.
    if (!raw.has_header("Content-Length") && !raw.has_header("Transfer-Encoding"))
        return 200;
    std::size_t total = 0;
    const auto append = [&](const char *data, std::size_t size) {
        total += size;
        if (total <= maximumBodyBytes)
            body.append(data, static_cast<int>(size));
        return true;
    };
    const bool complete =
        raw.is_multipart_form_data()
            ? read([](const httplib::MultipartFormData &) { return true; }, append)
            : read(append);
    if (total > maximumBodyBytes)
        return 413;
    return complete ? 200 : 400;
}

QString serverRefusal(int code)
{
    switch (code) {
    case 413:
        return QStringLiteral("the body is longer than 1 MiB");
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

// The numeric address and the port of one end of a socket; port -1 if it has no such end.
std::pair<std::string, int> endOf(int descriptor, decltype(&::getsockname) whichEnd)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (whichEnd(descriptor, generic, &length) != 0)
        return {{}, -1};
    if (address.ss_family != AF_INET && address.ss_family != AF_INET6)
        return {{}, -1};
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "";
    if (::getnameinfo(generic, length, host, sizeof host, port, sizeof port,
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {{}, -1};
    }
    return {host, std::atoi(port)};
}

// cpp-httplib hides its sockets from handlers and has no way to close them early. So they are
// looked up among the descriptors of the process by the port they were accepted on.
template <typename Visitor>
void forEachConnection(int localPort, Visitor &&visit)
{
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/dev/fd", ignored)) {
        const int descriptor = std::atoi(entry.path().filename().c_str());
        if (endOf(descriptor, ::getsockname).second != localPort)
            continue;
        const auto peer = endOf(descriptor, ::getpeername);
        if (peer.second != -1)
            visit(descriptor, peer);
    }
}

// Ends the caller's connection in the middle of the headers. A status line alone would not do:
// there are clients that silently repeat a request whose kept-alive connection closed before the
// first whole header, and clients that take a missing length for an empty answer.
void drop(const httplib::Request &raw, int localPort, const Answer &answer)
{
    const std::string start =
        "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(answer.body.size()) +
        "\r\nContent-Type: appl";
    forEachConnection(localPort, [&](int descriptor, const std::pair<std::string, int> &peer) {
        if (peer == std::make_pair(raw.remote_addr, raw.remote_port)) {
            [[maybe_unused]] const auto sent = ::send(descriptor, start.data(), start.size(), 0);
            ::shutdown(descriptor, SHUT_RDWR);
        }
    });
}

} // namespace

HttpServer::HttpServer(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
    , m_server(std::make_unique<httplib::Server>())
{
    configure();
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
    m_server->set_payload_max_length(maximumBodyBytes);
    m_server->set_socket_options([this](int descriptor) {
        // Not the default, under which a second emulator could listen on the same port.
        const int yes = 1;
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        m_listener = descriptor;
    });

    const auto plain = [this](const httplib::Request &raw, httplib::Response &response) {
        answer(raw, {}, response);
    };
    const auto reading = [this](const httplib::Request &raw, httplib::Response &response,
                                const httplib::ContentReader &reader) {
        QByteArray body;
        const int code = readBody(raw, reader, body);
        if (code == 200)
            answer(raw, body, response);
        else if (response.status < 400) // else the server knows it better
            response.status = code;
    };
    m_server->Get(anyPath, plain).Options(anyPath, plain).Delete(anyPath, plain);
    m_server->Post(anyPath, reading).Put(anyPath, reading).Patch(anyPath, reading);
    m_server->Delete(anyPath, reading);
    m_server->set_exception_handler([](const httplib::Request &, httplib::Response &response,
                                       const std::exception_ptr &) { response.status = 500; });
    // For what the server refuses by itself; our own answers have a content type.
    m_server->set_error_handler([](const httplib::Request &, httplib::Response &response) {
        if (response.has_header("Content-Type"))
            return;
        const QByteArray body = failAnswer(serverRefusal(response.status)).body;
        response.set_content(body.toStdString(), "application/json");
    });
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
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (std::exchange(m_stopping, true))
            return;
    }
    m_changed.notify_all();
    m_server->stop();
    // Wakes the workers that wait for another request; what is being answered can still go out.
    forEachConnection(m_port,
                      [](int descriptor, const auto &) { ::shutdown(descriptor, SHUT_RD); });
}

void HttpServer::answer(const httplib::Request &raw, const QByteArray &body,
                        httplib::Response &response)
{
    deliver(handOverPatiently(decode(raw, body)), raw, response);
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

// Only final answers count as news; else two who wait would wake each other for ever.
Answer HttpServer::handOverPatiently(const Request &request)
{
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        std::unique_lock<std::mutex> lock(m_mutex);
        const quint64 seen = m_finalAnswers;
        lock.unlock();
        Answer answer = handOver(request);
        lock.lock();
        if (answer.patience.count() == 0) {
            ++m_finalAnswers;
            m_changed.notify_all();
            return answer;
        }
        const bool news = m_changed.wait_until(
            lock, start + answer.patience, [&] { return m_stopping || m_finalAnswers != seen; });
        if (!news || m_stopping)
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

void HttpServer::deliver(const Answer &answer, const httplib::Request &raw,
                         httplib::Response &response)
{
    using Manner = Delivery::Manner;
    const Delivery delivery = answer.delivery;
    pause(delivery.delay);
    response.status = answer.code;
    for (const auto &[name, value] : answer.headers)
        response.set_header(name.toStdString(), value.toStdString());
    if (delivery.manner == Manner::Drop)
        drop(raw, m_port, answer);

    const std::string body = answer.body.toStdString();
    const std::string contentType = answer.contentType.toStdString();
    const bool whole = delivery.manner == Manner::Whole || delivery.manner == Manner::Drop;
    if (whole || body.empty()) {
        response.set_content(body, contentType);
        return;
    }
    response.set_content_provider(
        body.size(), contentType,
        [this, body, delivery](std::size_t offset, std::size_t, httplib::DataSink &sink) {
            if (delivery.manner == Manner::HalfBody) {
                sink.write(body.data(), body.size() / 2);
                return false;
            }
            const int pieceBytes = std::max(delivery.bytesPerSecond / 10, 1);
            const auto size = std::min(body.size() - offset, static_cast<std::size_t>(pieceBytes));
            sink.write(body.data() + offset, size);
            return pause(std::chrono::milliseconds(1000 * pieceBytes / delivery.bytesPerSecond));
        });
}

// Returns false when the service ends meanwhile.
bool HttpServer::pause(std::chrono::milliseconds duration)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_for(lock, duration, [this] { return m_stopping; });
}
