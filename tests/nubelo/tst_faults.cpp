#include "nubelo/CloudFixture.h"
#include "support/Certificates.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Takes the place of the C library's function for libcurl too: the thread that sets isHeld is held
// in its call until the answer to what it sent is there.
struct Wire
{
    bool isHeld = false;
    int socket = -1; ///< that was last sent on

    bool hasReceived(int milliseconds) const
    {
        pollfd unread{socket, POLLIN, 0};
        return ::poll(&unread, 1, milliseconds) > 0;
    }
};
static thread_local Wire wire;

extern "C" Q_DECL_EXPORT ssize_t send(int socket, const void *data, size_t size, int flags)
{
    const ssize_t sent = ::sendto(socket, data, size, flags, nullptr, 0);
    wire.socket = socket;
    if (wire.isHeld && sent > 0)
        wire.hasReceived(5000);
    return sent;
}

namespace {

constexpr int network(int e)
{
    return 0x5000 + (e <= 11 ? e - 1 : e);
}

// A listening socket whose queue is full: further connections get no answer at all.
class FullQueue
{
public:
    FullQueue()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *any = reinterpret_cast<sockaddr *>(&address);
        for (int &socket : m_sockets)
            socket = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        ::bind(m_sockets[0], any, size);
        ::listen(m_sockets[0], 0);
        ::getsockname(m_sockets[0], any, &size);
        port = ntohs(address.sin_port);
        std::for_each(m_sockets + 1, std::end(m_sockets), [&](int s) { ::connect(s, any, size); });
    }
    ~FullQueue() { std::for_each(std::begin(m_sockets), std::end(m_sockets), ::close); }
    Q_DISABLE_COPY(FullQueue)

    int port = 0;

private:
    int m_sockets[9];
};

} // namespace

/// Every way in which a request can go wrong: the code, exactly one end, and a next request that
/// works.
class tst_Faults : public CloudFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void connections_data();
    void connections();
    void answers_data();
    void answers();
    void keptConnections_data();
    void keptConnections();
    void refusalsOfAnyTiming();
    void certificates_data();
    void certificates();
    void redirects_data();
    void redirects();
    void refusedBeforeSending_data();
    void refusedBeforeSending();
    void managerDestroyed();

private:
    void limit(int connectMs, int totalMs)
    {
        configure({{"timeouts", QVariantMap{{"connectMs", connectMs}, {"totalMs", totalMs}}}});
    }
    // An error of this code, or with none the service's answer.
    void expect(const ReplyOutcome &outcome, int code)
    {
        const QString ssl = code == network(6) ? "ssl " : "";
        QCOMPARE(QString::number(outcome.code, 16), QString::number(code, 16));
        QCOMPARE(outcome.order.join(' '), code ? ssl + "error finished" : "finished");
        QVERIFY(outcome.fromLaterTurn);
    }

    Certificates authority;
};

void tst_Faults::initTestCase()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    QVERIFY2(authority.isValid(), "the openssl command is needed");
}

void tst_Faults::init()
{
    manager = std::make_unique<Manager>();
    limit(4000, 5000);
    configure({{"tls", QVariantMap{{"caFile", authority.authority()}}}});
}

// Whatever happened, the same Manager serves the next request.
void tst_Faults::cleanup()
{
    if (!manager)
        return;
    RawServer server(RawServer::answering(good));
    configure({{"proxy", "none"}});
    limit(4000, 5000);
    useAddress(server.url());
    expect(send(Manager::Post), 0);
}

void tst_Faults::connections_data()
{
    const auto row = columns<QString, QString, int>("kind", "proxy", "code");
    row("refused", "refused", "", network(1));
    row("unknown host", "host", "", network(3));
    row("connect deadline", "connect", "", network(4));
    row("total deadline", "silent", "", network(4));
    row("total deadline outlasts a drip", "drip", "", network(4));
    row("total deadline over redirects", "redirects", "", network(4));
    row("proxy refused", "refused", "configured", network(101));
    row("proxy not found", "host", "configured", network(103));
    row("proxy time-out", "connect", "configured", network(104));
    row("proxy asks for credentials", "credentials", "configured", network(105));
    row("proxy asks for credentials, tunnel", "tunnel", "configured", network(105));
    row("proxy answered, then dripped", "drip", "configured", network(4));
    row("environment's proxy refused", "refused", "environment", network(101));
    row("environment's proxy silent", "silent", "environment", network(104));
}

void tst_Faults::connections()
{
    QFETCH(QString, kind);
    QFETCH(QString, proxy);
    QFETCH(int, code);
    FullQueue full;
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        if (kind == "credentials" || kind == "tunnel") {
            socket.write(RawServer::answer("", 407, "Proxy-Authenticate: Basic realm=\"p\"\r\n"));
        } else if (kind == "drip") {
            socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
            auto *timer = new QTimer(&socket);
            QObject::connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
            timer->start(20);
        } else if (kind == "redirects") {
            const QByteArray again = RawServer::answer({}, 307, "Location: /again\r\n");
            QTimer::singleShot(150, &socket, [&socket, again] { socket.write(again); });
        }
    });
    QString address = server.url();
    if (kind == "refused")
        address = QString("http://127.0.0.1:%1").arg(RawServer::closedPort());
    else if (kind == "host")
        address = "http://no-such-host.invalid:3128";
    else if (kind == "connect")
        address = QString("http://127.0.0.1:%1").arg(full.port);
    configure({{"proxy", proxy == "configured" ? address : "system"}});
    qputenv("http_proxy", proxy == "environment" ? address.toUtf8() : QByteArray());
    useAddress(proxy.isEmpty()    ? address
               : kind == "tunnel" ? "https://service.invalid"
                                  : "http://service.invalid");
    if (code == network(4) || code == network(104))
        limit(300, kind == "connect" ? 5000 : 500);
    expect(send(Manager::Post), code);
}

void tst_Faults::answers_data()
{
    const auto row = columns<QByteArray, int>("sent", "code");
    const QByteArray body = R"({"status":"ok"})", length = "Content-Length: 15\r\n";
    const QByteArray head = "HTTP/1.1 200 OK\r\n", whole = head + length + "\r\n" + body;
    const QByteArray chunked = head + "Transfer-Encoding: chunked\r\n\r\nf\r\n" + body;
    const QByteArray lines = QByteArray("X-Padding: 0123456789\r\n").repeated(4000);
    const QByteArray early = "HTTP/1.1 100 Continue\r\n\r\n";
    const int closed = network(2), malformed = network(399);
    row("chunked, with trailers", chunked + "\r\n0\r\nX-Sum: 1\r\nX-More: 2\r\n\r\n", 0);
    row("after 1xx answers", early + "HTTP/1.1 103 Early\r\nLink: x\r\n\r\n" + whole, 0);
    row("one length twice", head + length + whole.mid(head.size()), 0);
    row("without a length", head + "\r\n" + body, 0);
    row("closed at once", {}, closed);
    row("closed in the headers", head + "Content-Le", closed);
    row("closed in the body", whole.chopped(3), closed);
    row("closed in a chunk", chunked.chopped(3), closed);
    row("closed in the trailers", chunked + "\r\n0\r\nX: y", closed);
    row("over the size limit", RawServer::answer(QByteArray(2000, ' ')), closed);
    row("too many header lines", head + lines + whole.mid(head.size()), closed);
    row("too long a header line",
        head + lines.repeated(2).simplified() + "\r\n" + whole.mid(head.size()), closed);
    row("too many 1xx answers", early.repeated(4000) + whole, closed);
    row("too many trailers", chunked + "\r\n0\r\n" + lines + "\r\n", closed);
    row("reset", "reset", closed);
    row("two lengths", head + "Content-Length: 16\r\n" + whole.mid(head.size()) + " ", malformed);
    row("list of lengths", QByteArray(whole).replace("15", "15, 16"), malformed);
    row("another protocol", "HTTP/1.1 101 Switching Protocols\r\n\r\n" + body, malformed);
    row("empty", RawServer::answer(""), malformed);
    row("array", RawServer::answer("[1]"), malformed);
    row("object without status", RawServer::answer(R"({"result":1})"), malformed);
    row("status is no text", RawServer::answer(R"({"status":1,"result":1})"), malformed);
    row("not HTTP", "SSH-2.0-server\r\n\r\n", malformed);
    row("304", RawServer::answer("", 304), malformed);
}

void tst_Faults::answers()
{
    QFETCH(QByteArray, sent);
    QFETCH(int, code);
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        if (sent == "reset") {
            const linger now{1, 0};
            ::setsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
            socket.abort();
            return;
        }
        socket.write(sent);
        socket.disconnectFromHost();
    });
    useAddress(server.url());
    configure({{"limits", QVariantMap{{"answerBytes", 1000}}}});
    expect(send(Manager::Post), code);
}

void tst_Faults::keptConnections_data()
{
    const auto row =
        columns<QByteArray, int, bool, int, int>("left", "type", "tls", "requests", "connections");
    const QByteArray unasked = RawServer::answer(R"({"status":"ok","result":"unasked"})");
    const QByteArray late = RawServer::answer("", 408) + "close";
    row("kept", "", Manager::Post, false, 2, 1);
    row("kept, TLS", "", Manager::Post, true, 2, 1);
    row("closed", "close", Manager::Post, false, 2, 2);
    row("closed, TLS", "close", Manager::Post, true, 2, 2);
    row("an answer nobody asked for", unasked, Manager::Post, false, 2, 2);
    row("an answer nobody asked for, TLS", unasked, Manager::Post, true, 2, 2);
    row("408 and closed", late, Manager::Post, false, 2, 2);
    // The next request is read and then not answered: sent again only if it may be done twice.
    row("unanswered POST", "unanswered", Manager::Post, false, 2, 2);
    row("unanswered PATCH", "unanswered", Manager::Patch, false, 2, 2);
    row("unanswered GET", "unanswered", Manager::Get, false, 3, 2);
    row("unanswered PUT", "unanswered", Manager::Put, false, 3, 2);
}

void tst_Faults::keptConnections()
{
    QFETCH(QByteArray, left);
    QFETCH(int, type);
    QFETCH(bool, tls);
    QFETCH(int, requests);
    QFETCH(int, connections);
    const bool isUnanswered = left == "unanswered";
    const auto leave = [&](QTcpSocket &socket) {
        socket.write(isUnanswered ? QByteArray() : QByteArray(left).replace("close", ""));
        if (left.endsWith("close"))
            socket.close();
    };
    RawServer server(
        [&](QTcpSocket &socket, const QByteArray &) {
            if (isUnanswered && server.requests() == 2)
                socket.close();
            else
                socket.write(good);
            if (server.requests() == 1)
                QTimer::singleShot(1, &socket, [&] { leave(socket); });
        },
        tls ? authority.server("IP:127.0.0.1") : QSslConfiguration());
    useAddress(server.url());
    expect(send(Manager::Post), 0);
    if (connections == 2 && !isUnanswered)
        QVERIFY(wire.hasReceived(5000)); // what is left has come
    const ReplyOutcome outcome = send(Manager::HttpRequestType(type));
    expect(outcome, isUnanswered && requests == 2 ? network(2) : 0);
    QVERIFY(outcome.map.value("result") != "unasked");
    QCOMPARE(server.requests(), requests);
    QTRY_COMPARE(server.connections(), connections);
}

// The service's word is never lost to the HTTP status, whenever the answer comes.
void tst_Faults::refusalsOfAnyTiming()
{
    RawServer server(
        RawServer::answering(RawServer::answer(R"({"status":"fail","result":"pwderr"})", 401)));
    useAddress(server.url());
    const int calls = qMax(300, qEnvironmentVariableIntValue("NUBELO_TEST_CALLS"));
    for (int i = 0; i < 2 * calls; ++i) {
        wire.isHeld = i >= calls;
        auto *reply = manager->request("userLogin", {{"source", "cloud"}}, {});
        wire.isHeld = false;
        QCOMPARE(reply->status(), Error::NoError);
        const ReplyOutcome outcome = ReplyOutcome::of(reply);
        expect(outcome, network(204));
        QCOMPARE(outcome.map.value("result").toString(), "pwderr");
    }
}

void tst_Faults::certificates_data()
{
    const auto row = columns<QString, int>("kind", "reason");
    row("self-signed", "self", QSslError::SelfSignedCertificate);
    row("expired", "expired", QSslError::CertificateExpired);
    row("wrong host", "host", QSslError::HostNameMismatch);
    row("unknown issuer", "issuer", QSslError::UnableToGetLocalIssuerCertificate);
    row("version too old", "version", QSslError::UnspecifiedError);
}

void tst_Faults::certificates()
{
    QFETCH(QString, kind);
    QSslConfiguration tls = authority.server(kind == "host" ? "DNS:other.example" : "IP:127.0.0.1",
                                             kind == "expired" ? -1 : 1, kind == "self");
    if (kind == "version")
        tls.setProtocol(QSsl::TlsV1_2);
    RawServer server(RawServer::answering(good), tls);
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", kind == "issuer" ? "" : authority.authority()},
                                   {"minimumVersion", kind == "version" ? "1.3" : "1.2"}}}});
    const ReplyOutcome outcome = send(Manager::Post);
    expect(outcome, network(6));
    QCOMPARE(outcome.sslErrors.size(), 1);
    QTEST(int(outcome.sslErrors.first().error()), "reason");
    QCOMPARE(server.requests(), 0);
}

void tst_Faults::redirects_data()
{
    // Other kinds are targets. The method is the one that the target saw.
    const auto row = columns<QString, int, int, QByteArray>("kind", "status", "code", "method");
    row("same origin keeps all", "/target", 307, 0, "POST");
    row("same origin becomes a GET, 302", "/target", 302, 0, "GET");
    row("same origin becomes a GET, 303", "/target", 303, 0, "GET");
    row("other origin, nothing to give away", "other", 302, 0, "GET");
    row("other origin, body", "other", 307, network(11), {});
    row("other origin, token", "token", 302, network(11), {});
    row("https left", "leave", 302, network(11), {});
    row("another protocol", "file:///etc/hostname", 302, network(301), {});
    row("no host", "http://[", 302, network(399), {});
    row("no port", "http://127.0.0.1:99999/", 302, network(399), {});
    row("without end", "/again", 307, network(10), {});
}

void tst_Faults::redirects()
{
    QFETCH(QString, kind);
    QFETCH(int, status);
    QFETCH(int, code);
    QFETCH(QByteArray, method);
    RawServer other(RawServer::answering(good));
    const bool isOwn = kind.contains('/') || kind.contains('[');
    const QString target = isOwn ? kind : other.url("/target");
    const QByteArray answer =
        RawServer::answer({}, status, "Location: " + target.toUtf8() + "\r\n");
    RawServer server(
        [&](QTcpSocket &socket, const QByteArray &request) {
            socket.write(request.contains(" /target ") ? good : answer);
        },
        kind == "leave" ? authority.server("IP:127.0.0.1") : QSslConfiguration());
    useAddress(server.url());
    const QVariantMap token{{"X-Auth-Token", "T"}};
    expect(send(Manager::Post, kind == "token" ? token : QVariantMap()), code);
    QCOMPARE(other.connections(), int(code == 0 && !isOwn));
    if (code == 0) {
        const QByteArray seen = (isOwn ? server : other).lastRequest();
        QVERIFY(seen.startsWith(method + " /target "));
        QCOMPARE(seen.contains(R"({"a":"b"})"), method == "POST");
    }
    if (kind == "/again")
        QCOMPARE(server.requests(), 11);
}

void tst_Faults::refusedBeforeSending_data()
{
    const auto row = columns<QString, QString, QVariantMap, int>("name", "text", "headers", "code");
    row("unknown name", "noSuchName", "", {}, 0x7000);
    row("other protocol", "ftp://127.0.0.1/", "", {}, 0x7000);
    row("address without host", "http://", "", {}, 0x7004);
    row("line break in a header", "status", "", {{"X-A", "b\r\nX-C: d"}}, 0x7004);
    row("space in a header's name", "status", "", {{"X A", "b"}}, 0x7004);
    row("own length", "status", "", {{"content-length", "1"}}, 0x7004);
    row("own transfer coding", "status", "", {{"Transfer-Encoding", "chunked"}}, 0x7004);
    row("text makes another user", "http://a.invalid", "@127.0.0.1/", {}, 0x7004);
    row("text makes another port", "http://127.0.0.1", ":81/", {}, 0x7004);
    row("text makes another host", "http://127.0.0.1", ".evil.example/", {}, 0x7004);
}

void tst_Faults::refusedBeforeSending()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QVariantMap, headers);
    QFETCH(int, code);
    RawServer server(RawServer::answering(good));
    useAddress(server.url());
    auto *reply = manager->request(name, Manager::Get, Manager::NoEncrypt, text,
                                   {{"source", "cloud"}, {"headers", headers}},
                                   Manager::NoAuthentication, {});
    QCOMPARE(int(reply->status()), code);
    expect(ReplyOutcome::of(reply), code);
    QCOMPARE(server.connections(), 0);
}

void tst_Faults::managerDestroyed()
{
    RawServer silent([](QTcpSocket &, const QByteArray &) {});
    useAddress(silent.url());
    QStringList order;
    for (int i = 0; i < 2; ++i) {
        auto *reply = manager->request("status", {{"source", "cloud"}}, {});
        connect(reply, &Nubelo::Reply::errorOccurred, this,
                [&](Error::ErrorCode code) { order << QString::number(code, 16); });
        connect(reply, &Nubelo::Reply::finished, reply, [&, reply] {
            order << "finished";
            reply->deleteLater();
        });
    }
    QTRY_COMPARE(silent.requests(), 2);
    manager.reset();
    QCOMPARE(order, QStringList({"700c", "finished", "700c", "finished"}));
}

QTEST_GUILESS_MAIN(tst_Faults)
#include "tst_faults.moc"
