// SPDX-License-Identifier: MIT
#include "nubelo/CloudFixture.h"

#include <QtNetwork/QTcpServer>

#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

/// What the thread of a test sees of the network and the clock.
struct World
{
    bool isHeld = false;  ///< in send(), until the answer to what it sent is there
    int socket = -1;      ///< that was last sent on
    int secondsLater = 0; ///< that its clocks are ahead

    bool hasReceived(int milliseconds) const
    {
        pollfd unread{socket, POLLIN, 0};
        return ::poll(&unread, 1, milliseconds) > 0;
    }
};
static thread_local World world;

// These take the place of the C library's functions for libcurl and Qt too.
#ifdef Q_OS_LINUX
extern "C" Q_DECL_EXPORT ssize_t send(int socket, const void *data, size_t size, int flags)
{
    const ssize_t sent = ::sendto(socket, data, size, flags, nullptr, 0);
    world.socket = socket;
    if (world.isHeld && sent > 0)
        world.hasReceived(5000);
    return sent;
}

extern "C" Q_DECL_EXPORT int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    time->tv_sec += world.secondsLater;
    return int(result);
}
#endif

namespace {

constexpr int network(int e)
{
    return 0x5000 + (e <= 11 ? e - 1 : e);
}

} // namespace

/// Every way in which a request can go wrong: the code, exactly one end, and a next request that
/// works.
class tst_Faults : public CloudFixture
{
    Q_OBJECT

private Q_SLOTS:
    void connections_data()
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
        row("through a tunnel", "tunnel, good", "configured", 0);
        row("through a tunnel, silent", "tunnel, silent", "configured", network(4));
        row("through a tunnel, two lengths", "tunnel, twice", "configured", network(399));
        row("environment's proxy refused", "refused", "environment", network(101));
        row("environment's proxy silent", "silent", "environment", network(104));
    }

    void connections()
    {
        QFETCH(QString, kind);
        QFETCH(QString, proxy);
        QFETCH(int, code);
        // A queue that one connection fills: the next ones get no answer at all.
        QTcpServer full;
        full.listen(QHostAddress::LocalHost);
        full.pauseAccepting();
        ::listen(int(full.socketDescriptor()), 0);
        QTcpSocket first;
        first.connectToHost(QHostAddress::LocalHost, full.serverPort());
        QVERIFY(first.waitForConnected());
        RawServer server([&](QSslSocket &socket, const QByteArray &request) {
            if (kind == "credentials" || kind == "tunnel") {
                socket.write(
                    RawServer::answer("", 407, "Proxy-Authenticate: Basic realm=\"p\"\r\n"));
            } else if (request.startsWith("CONNECT")) {
                socket.write("HTTP/1.1 200 OK\r\n\r\n");
                socket.flush();
                socket.setSslConfiguration(tls());
                socket.startServerEncryption();
            } else if (kind == "tunnel, good") {
                socket.write(good);
            } else if (kind == "tunnel, twice") {
                socket.write(RawServer::answer(R"({"status":"ok"})", 200, "Content-Length: 1\r\n"));
            } else if (kind == "drip") {
                socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
                auto *timer = new QTimer(&socket);
                connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
                timer->start(20);
            } else if (kind == "redirects") {
                const QByteArray again = RawServer::answer({}, 307, "Location: /again\r\n");
                QTimer::singleShot(150, &socket, [&socket, again] { socket.write(again); });
            }
        });
        QString address = server.url();
        if (kind == "refused")
            address = "http://127.0.0.1:1";
        else if (kind == "host")
            address = "http://no-such-host.invalid:3128";
        else if (kind == "connect")
            address = QString("http://127.0.0.1:%1").arg(full.serverPort());
        // What the environment exempts, it exempts from its own proxy.
        qputenv("no_proxy", proxy == "configured" ? "*" : "");
        qputenv("http_proxy", proxy == "environment" ? address.toUtf8() : QByteArray());
        configure({{"proxy", proxy == "configured" ? address : "system"}});
        useAddress(proxy.isEmpty()             ? address
                   : kind.startsWith("tunnel") ? "https://service.invalid"
                                               : "http://service.invalid");
        if (code == network(4) || code == network(104))
            limit(300, kind == "connect" ? 60000 : 500);
        expect(send(), code);
    }

    void answers_data()
    {
        const auto row = columns<QByteArray, int>("sent", "code");
        const QByteArray body = R"({"status":"ok"})", length = "Content-Length: 15\r\n";
        const QByteArray head = "HTTP/1.1 200 OK\r\n", whole = head + length + "\r\n" + body;
        const QByteArray chunks = "Transfer-Encoding: chunked\r\n\r\nf\r\n" + body;
        const QByteArray lines = QByteArray("X-Padding: 0123456789\r\n").repeated(2000);
        const QByteArray early = "HTTP/1.1 100 Continue\r\n\r\n";
        const int closed = network(2), malformed = network(399);
        row("chunked, with trailers", head + chunks + "\r\n0\r\nX-Sum: 1\r\nX-More: 2\r\n\r\n", 0);
        row("after 1xx answers", early + "HTTP/1.1 103 Early\r\nLink: x\r\n\r\n" + whole, 0);
        row("much before, in and behind an answer",
            early.repeated(2000) + head + lines + chunks + "\r\n0\r\n" + lines + "\r\n", 0);
        row("one length twice", head + length + whole.mid(head.size()), 0);
        row("without a length", head + "\r\n" + body, 0);
        row("closed at once", {}, closed);
        row("closed in the headers", head + "Content-Le", closed);
        row("closed in the body", whole.chopped(3), closed);
        row("closed in a chunk", (head + chunks).chopped(3), closed);
        row("closed in the trailers", head + chunks + "\r\n0\r\nX: y", closed);
        row("of the largest size", RawServer::answer(body + QByteArray(985, ' ')), 0);
        row("over the largest size", RawServer::answer(body + QByteArray(986, ' ')), closed);
        row("too many header lines", head + lines + lines + whole.mid(head.size()), closed);
        row("too long a header line",
            head + lines.repeated(4).simplified() + "\r\n" + whole.mid(head.size()), closed);
        row("too many 1xx answers", early.repeated(4000) + whole, closed);
        row("too many trailers", head + chunks + "\r\n0\r\n" + lines + lines + "\r\n", closed);
        row("reset", "reset", closed);
        row("two lengths", head + "Content-Length: 16\r\n" + whole.mid(head.size()) + " ",
            malformed);
        row("list of lengths", QByteArray(whole).replace("15", "15, 16"), malformed);
        row("length with a sign", QByteArray(whole).replace("15", "+15"), malformed);
        row("another protocol", "HTTP/1.1 101 Switching Protocols\r\n\r\n" + body, malformed);
        row("empty", RawServer::answer(""), malformed);
        row("array", RawServer::answer("[1]"), malformed);
        row("object without status", RawServer::answer(R"({"result":1})"), malformed);
        row("status is no text", RawServer::answer(R"({"status":1,"result":1})"), malformed);
        row("not HTTP", "SSH-2.0-server\r\n\r\n", malformed);
        row("304", RawServer::answer("", 304), malformed);
    }

    void answers()
    {
        QFETCH(QByteArray, sent);
        QFETCH(int, code);
        RawServer server([&](QSslSocket &socket, const QByteArray &) {
            const linger now{1, 0};
            if (sent == "reset")
                ::setsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now,
                             sizeof now);
            else
                socket.write(sent);
            socket.disconnectFromHost();
        });
        useAddress(server.url());
        configure({{"limits", QVariantMap{{"answerBytes", 1000}}}});
        expect(send(), code);
    }

    void keptConnections_data()
    {
        const auto row = columns<QByteArray, int, bool, int, int>("left", "type", "isTls",
                                                                  "requests", "connections");
        const QByteArray unasked = RawServer::answer(R"({"status":"ok","result":"unasked"})");
        const QByteArray late = RawServer::answer("", 408) + "close";
        row("kept", "", Manager::Post, false, 2, 1);
        row("kept, TLS", "", Manager::Post, true, 2, 1);
        row("kept for a second", "aged", Manager::Post, false, 2, 2);
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

    void keptConnections()
    {
        QFETCH(QByteArray, left);
        QFETCH(int, type);
        QFETCH(bool, isTls);
        QFETCH(int, requests);
        QFETCH(int, connections);
        const bool isAged = left == "aged", isUnanswered = left == "unanswered";
        if (connections == 2 && !isUnanswered && QSysInfo::kernelType() != "linux")
            QSKIP("functions of the C library are replaced on Linux alone");
        const auto leave = [&](QSslSocket &socket) {
            if (!isAged && !isUnanswered)
                socket.write(QByteArray(left).replace("close", ""));
            if (left.endsWith("close"))
                socket.close();
        };
        RawServer server(
            [&](QSslSocket &socket, const QByteArray &) {
                if (isUnanswered && server.requests() == 2)
                    socket.close();
                else
                    socket.write(good);
                if (server.requests() == 1)
                    QTimer::singleShot(1, &socket, [&] { leave(socket); });
            },
            isTls ? tls() : QSslConfiguration());
        useAddress(server.url());
        expect(send(), 0);
        if (isAged)
            ++world.secondsLater;
        else if (connections == 2 && !isUnanswered)
            QVERIFY(world.hasReceived(5000)); // what is left has come
        const ReplyOutcome outcome = send(Manager::HttpRequestType(type));
        expect(outcome, isUnanswered && requests == 2 ? network(2) : 0);
        QVERIFY(outcome.map.value("result") != "unasked");
        QCOMPARE(server.requests(), requests);
        QTRY_COMPARE(server.connections(), connections);
    }

    // The service's word is never lost to the HTTP status, whenever the answer comes.
    void refusalsOfAnyTiming()
    {
        RawServer server(RawServer::answer(R"({"status":"fail","result":"pwderr"})", 401));
        useAddress(server.url());
        const int calls = qMax(300, qEnvironmentVariableIntValue("NUBELO_TEST_CALLS"));
        for (int i = 0; i < 2 * calls; ++i) {
            world.isHeld = i >= calls;
            Reply *reply = manager->request("userLogin", {{"source", "cloud"}}, {});
            world.isHeld = false;
            QCOMPARE(reply->status(), Error::NoError);
            const ReplyOutcome outcome = end(reply);
            expect(outcome, network(204));
            QCOMPARE(outcome.map.value("result").toString(), "pwderr");
        }
    }

    void certificates_data()
    {
        const auto row = columns<QString, int>("kind", "reason");
        row("self-signed", "self", QSslError::SelfSignedCertificate);
        row("expired", "expired", QSslError::CertificateExpired);
        row("wrong host", "host", QSslError::HostNameMismatch);
        row("unknown issuer", "issuer", QSslError::UnableToGetLocalIssuerCertificate);
        row("version too old", "version", QSslError::UnspecifiedError);
    }

    void certificates()
    {
        QFETCH(QString, kind);
        const bool isOld = kind == "version", isIssuer = kind == "issuer";
        QSslConfiguration own = tls(isOld || isIssuer ? "server" : kind);
        if (isOld)
            own.setProtocol(QSsl::TlsV1_2);
        RawServer server(good, own);
        useAddress(server.url());
        configure({{"tls", QVariantMap{{"caFile", isIssuer ? "" : authority()},
                                       {"minimumVersion", isOld ? "1.3" : "1.2"}}}});
        const ReplyOutcome outcome = send();
        expect(outcome, network(6));
        QCOMPARE(outcome.sslErrors.size(), 1);
        QTEST(int(outcome.sslErrors.first().error()), "reason");
        QCOMPARE(server.requests(), 0);
    }

    void redirects_data()
    {
        // Other kinds are targets. The method is the one that the target saw; a PUT was one before.
        const auto row = columns<QString, int, int, QByteArray>("kind", "status", "code", "method");
        row("same origin keeps all", "/target", 307, 0, "POST");
        row("same origin becomes a GET, 302", "/target", 302, 0, "GET");
        row("same origin becomes a GET, 303", "/target", 303, 0, "GET");
        row("same origin stays a PUT", "/target", 302, 0, "PUT");
        row("other origin, nothing to give away", "other", 302, 0, "GET");
        row("other origin, body", "other", 307, network(11), {});
        row("other port, token", "token", 302, network(11), {});
        row("other host, token", "token, host", 302, network(11), {});
        row("https left", "leave", 302, network(11), {});
        row("another protocol", "file:///etc/hostname", 302, network(301), {});
        row("no host", "http://[", 302, network(399), {});
        row("no port", "http://127.0.0.1:99999/", 302, network(399), {});
        row("no path", "http://127.0.0.1/\x01", 302, network(399), {});
        row("without end", "/again", 307, network(10), {});
    }

    void redirects()
    {
        QFETCH(QString, kind);
        QFETCH(int, status);
        QFETCH(int, code);
        QFETCH(QByteArray, method);
        RawServer other(good);
        const bool isOwn = kind.contains('/') || kind.contains('[');
        QString target = isOwn ? kind : other.url("/target");
        RawServer server(
            [&](QSslSocket &socket, const QByteArray &request) {
                const QByteArray location = "Location: " + target.toUtf8() + "\r\n";
                socket.write(
                    request.contains(" /target ") ? good : RawServer::answer({}, status, location));
            },
            kind == "leave" ? tls() : QSslConfiguration());
        if (kind == "token, host")
            target = server.url("/target").replace("127.0.0.1", "localhost");
        useAddress(server.url());
        const QVariantMap token{{"X-Auth-Token", "T"}};
        expect(send(method == "PUT" ? Manager::Put : Manager::Post,
                    kind.startsWith("token") ? token : QVariantMap()),
               code);
        QCOMPARE(other.connections(), int(code == 0 && !isOwn));
        if (code == 0) {
            const QByteArray seen = (isOwn ? server : other).lastRequest();
            QVERIFY(seen.startsWith(method + " /target "));
            QCOMPARE(seen.contains(R"({"a":"b"})"), method != "GET");
        }
        if (kind == "/again")
            QCOMPARE(server.requests(), 11);
    }

    void managerDestroyed()
    {
        // The first request is answered, and only the others are aborted.
        RawServer server([&](QSslSocket &socket, const QByteArray &) {
            if (server.requests() == 1)
                socket.write(good);
        });
        useAddress(server.url());
        QStringList order;
        for (int i = 0; i < 3; ++i) {
            Reply *reply = manager->request("status", {{"source", "cloud"}}, {});
            connect(reply, &Reply::errorOccurred, this,
                    [&](Error::ErrorCode code) { order << QString::number(code, 16); });
            connect(reply, &Reply::finished, this, [&] { order << "finished"; });
            QTRY_COMPARE(order, QStringList("finished"));
        }
        QTRY_COMPARE(server.requests(), 3);
        manager.reset();
        QCOMPARE(order, QString("finished 700c finished 700c finished").split(' '));
    }

private:
    // An error of this code, or with none the service's answer.
    void expect(const ReplyOutcome &outcome, int code)
    {
        const QString ssl = code == network(6) ? "ssl " : "";
        QCOMPARE(QString::number(outcome.code, 16), QString::number(code, 16));
        QCOMPARE(outcome.order.join(' '), code ? ssl + "error finished" : "finished");
    }
};

QTEST_GUILESS_MAIN(tst_Faults)
#include "tst_faults.moc"
