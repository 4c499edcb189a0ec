#include <nubelo/Manager.h>

#include "support/Certificates.h"
#include "support/RawServer.h"
#include "support/ReplyOutcome.h"
#include "support/Rows.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Takes the place of the C library's function for libcurl too: the thread that sets it is held in
// its call until the answer to what it sent is there.
static thread_local bool isSenderHeld = false;

extern "C" Q_DECL_EXPORT ssize_t send(int socket, const void *data, size_t size, int flags)
{
    const ssize_t sent = ::sendto(socket, data, size, flags, nullptr, 0);
    pollfd answer{socket, POLLIN, 0};
    if (isSenderHeld && sent > 0)
        ::poll(&answer, 1, 5000);
    return sent;
}

using Nubelo::Error;
using Nubelo::Manager;

namespace {

constexpr int network(int e)
{
    return 0x5000 + (e <= 11 ? e - 1 : e);
}

const QByteArray good = RawServer::answer(R"({"status":"ok","result":1})");

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
        m_sockets[0] = ::socket(AF_INET, SOCK_STREAM, 0);
        ::bind(m_sockets[0], any, size);
        ::listen(m_sockets[0], 0);
        ::getsockname(m_sockets[0], any, &size);
        port = ntohs(address.sin_port);
        for (int i = 1; i < 9; ++i) {
            m_sockets[i] = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            ::connect(m_sockets[i], any, size);
        }
    }
    ~FullQueue() { std::for_each(std::begin(m_sockets), std::end(m_sockets), ::close); }
    Q_DISABLE_COPY(FullQueue)

    int port = 0;

private:
    int m_sockets[9];
};

QByteArray redirect(const QString &target, int status = 302)
{
    return RawServer::answer({}, status, "Location: " + target.toUtf8() + "\r\n");
}

} // namespace

/// Every way in which a request can go wrong: the code, exactly one end, and a next request that
/// works.
class tst_Faults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void connectionFaults_data();
    void connectionFaults();
    void answerFaults_data();
    void answerFaults();
    void httpStatuses();
    void refusalsOfAnyTiming_data();
    void refusalsOfAnyTiming();
    void tlsFaults_data();
    void tlsFaults();
    void redirects_data();
    void redirects();
    void refusedBeforeSending_data();
    void refusedBeforeSending();
    void managerDestroyed();

private:
    void configure(const QVariantMap &data)
    {
        const auto outcome = ReplyOutcome::of(manager->setConfigData(data, {}));
        QCOMPARE(outcome.order, QStringList("finished"));
    }
    void useAddress(const QString &address)
    {
        configure({{"cloudEnvironment", "test"},
                   {"environments", QVariantMap{{"test", QVariantMap{{"cloud", address}}}}}});
    }
    void limit(int connectMs, int totalMs)
    {
        configure({{"timeouts", QVariantMap{{"connectMs", connectMs}, {"totalMs", totalMs}}}});
    }
    ReplyOutcome post(const QVariantMap &headers = {})
    {
        return ReplyOutcome::of(manager->request(
            "userLogin", Manager::Post, Manager::NoEncrypt,
            {{"source", "cloud"}, {"body", QVariantMap{{"a", "b"}}}, {"headers", headers}},
            Manager::NoAuthentication, {}));
    }
    void expect(const ReplyOutcome &outcome, int code, bool ssl = false)
    {
        QCOMPARE(QString::number(outcome.code, 16), QString::number(code, 16));
        QCOMPARE(outcome.order.join(' '), ssl ? "ssl error finished" : "error finished");
        QVERIFY(outcome.fromLaterTurn);
    }

    std::unique_ptr<Manager> manager;
    Certificates certificates;
};

void tst_Faults::initTestCase()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    QVERIFY2(certificates.isValid(), "the openssl command is needed");
}

void tst_Faults::init()
{
    manager = std::make_unique<Manager>();
    limit(4000, 5000);
}

// Whatever happened, the same Manager serves the next request.
void tst_Faults::cleanup()
{
    if (!manager)
        return;
    RawServer server(RawServer::answering(good));
    configure({{"proxy", "none"}, {"tls", QVariantMap{{"caFile", ""}}}});
    limit(4000, 5000);
    useAddress(server.url());
    QCOMPARE(post().order, QStringList("finished"));
}

void tst_Faults::connectionFaults_data()
{
    const auto row = columns<QString, bool, int>("kind", "proxy", "code");
    row("refused", "refused", false, network(1));
    row("unknown host", "host", false, network(3));
    row("connect deadline", "connect", false, network(4));
    row("total deadline", "silent", false, network(4));
    row("total deadline outlasts a drip", "drip", false, network(4));
    row("total deadline over redirects", "redirects", false, network(4));
    row("proxy refused", "refused", true, network(101));
    row("proxy not found", "host", true, network(103));
    row("proxy time-out", "connect", true, network(104));
    row("proxy asks for credentials", "credentials", true, network(105));
    row("proxy asks for credentials, tunnel", "tunnel", true, network(105));
}

void tst_Faults::connectionFaults()
{
    QFETCH(QString, kind);
    QFETCH(bool, proxy);
    QFETCH(int, code);
    FullQueue full;
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        if (proxy) {
            socket.write(RawServer::answer("", 407, "Proxy-Authenticate: Basic realm=\"p\"\r\n"));
        } else if (kind == "drip") {
            socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
            auto *timer = new QTimer(&socket);
            QObject::connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
            timer->start(20);
        } else if (kind == "redirects") {
            QTimer::singleShot(150, &socket, [&socket] { socket.write(redirect("/again", 307)); });
        }
    });
    QString address = server.url();
    if (kind == "refused")
        address = QString("http://127.0.0.1:%1").arg(RawServer::closedPort());
    else if (kind == "host")
        address = "http://no-such-host.invalid:3128";
    else if (kind == "connect")
        address = QString("http://127.0.0.1:%1").arg(full.port);
    if (proxy)
        configure({{"proxy", address}});
    useAddress(!proxy             ? address
               : kind == "tunnel" ? "https://service.invalid"
                                  : "http://service.invalid");
    if (code == network(4) || code == network(104))
        limit(300, kind == "connect" ? 5000 : 500);
    expect(post(), code);
}

void tst_Faults::answerFaults_data()
{
    const auto row = columns<QByteArray, int>("sent", "code");
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    const int closed = network(2), malformed = network(399);
    row("closed at once", {}, closed);
    row("closed in the headers", head + "Content-Le", closed);
    row("closed in the body", head + "Content-Length: 50\r\n\r\n{\"sta", closed);
    row("closed in a chunk", head + "Transfer-Encoding: chunked\r\n\r\nff\r\n{\"sta", closed);
    row("over the size limit", RawServer::answer(QByteArray(2000, ' ')), closed);
    row("reset", "reset", closed);
    row("empty", RawServer::answer(""), malformed);
    row("array", RawServer::answer("[1]"), malformed);
    row("object without status", RawServer::answer(R"({"result":1})"), malformed);
    row("status is no text", RawServer::answer(R"({"status":1,"result":1})"), malformed);
    row("cut short within its length", RawServer::answer(R"({"status":"ok","result)"), malformed);
    row("not HTTP", "SSH-2.0-server\r\n\r\n", malformed);
    row("304", RawServer::answer("", 304), malformed);
}

void tst_Faults::answerFaults()
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
    expect(post(), code);
}

void tst_Faults::httpStatuses()
{
    const QMap<int, int> table{{400, 302}, {401, 204}, {402, 299}, {403, 201}, {404, 203},
                               {405, 202}, {407, 105}, {409, 206}, {410, 207}, {429, 299},
                               {500, 401}, {501, 402}, {502, 499}, {503, 403}, {599, 499}};
    for (auto it = table.begin(); it != table.end(); ++it) {
        RawServer html(RawServer::answering(RawServer::answer("<html>", it.key())));
        useAddress(html.url());
        ReplyOutcome outcome = post();
        expect(outcome, network(it.value()));
        QCOMPARE(outcome.map, QVariantMap());
        // An answer of the service's form is delivered all the same.
        RawServer json(RawServer::answering(
            RawServer::answer(R"({"status":"fail","result":"dbErr"})", it.key())));
        useAddress(json.url());
        outcome = post();
        expect(outcome, network(it.value()));
        QCOMPARE(outcome.map, (QVariantMap{{"status", "fail"}, {"result", "dbErr"}}));
    }
}

void tst_Faults::refusalsOfAnyTiming_data()
{
    const auto row = columns<bool>("held");
    row("as it comes", false);
    row("answered before the sender returns", true);
}

// The service's word is never lost to the HTTP status, whenever the answer comes.
void tst_Faults::refusalsOfAnyTiming()
{
    QFETCH(bool, held);
    RawServer server(
        RawServer::answering(RawServer::answer(R"({"status":"fail","result":"pwderr"})", 401)));
    useAddress(server.url());
    const int calls = qMax(300, qEnvironmentVariableIntValue("NUBELO_TEST_CALLS"));
    for (int i = 0; i < calls; ++i) {
        isSenderHeld = held;
        auto *reply = manager->request("userLogin", {{"source", "cloud"}}, {});
        isSenderHeld = false;
        QCOMPARE(reply->status(), Error::NoError);
        const ReplyOutcome outcome = ReplyOutcome::of(reply);
        expect(outcome, network(204));
        QCOMPARE(outcome.map.value("result").toString(), "pwderr");
    }
}

void tst_Faults::tlsFaults_data()
{
    const auto row = columns<QString, int>("kind", "reason");
    row("self-signed", "self", QSslError::SelfSignedCertificate);
    row("expired", "expired", QSslError::CertificateExpired);
    row("wrong host", "host", QSslError::HostNameMismatch);
    row("unknown issuer", "issuer", QSslError::UnableToGetLocalIssuerCertificate);
    row("version too old", "version", QSslError::UnspecifiedError);
    row("trusted", "good", QSslError::NoError);
}

void tst_Faults::tlsFaults()
{
    QFETCH(QString, kind);
    QSslConfiguration tls =
        certificates.server(kind == "host" ? "DNS:other.example" : "IP:127.0.0.1",
                            kind == "expired" ? -1 : 1, kind == "self");
    if (kind == "version")
        tls.setProtocol(QSsl::TlsV1_2);
    RawServer server(RawServer::answering(good), tls);
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", kind == "issuer" ? "" : certificates.authority()},
                                   {"minimumVersion", kind == "version" ? "1.3" : "1.2"}}}});
    const ReplyOutcome outcome = post();
    if (kind == "good") {
        QCOMPARE(outcome.order, QStringList("finished"));
        return;
    }
    expect(outcome, network(6), true);
    QCOMPARE(outcome.sslErrors.size(), 1);
    QTEST(int(outcome.sslErrors.first().error()), "reason");
    QCOMPARE(server.requests(), 0);
}

void tst_Faults::redirects_data()
{
    // The method is the one that the target saw.
    const auto row = columns<QString, int, int, QByteArray>("kind", "status", "code", "method");
    row("same origin keeps all", "same", 307, 0, "POST");
    row("same origin becomes a GET, 302", "same", 302, 0, "GET");
    row("same origin becomes a GET, 303", "same", 303, 0, "GET");
    row("other origin, nothing to give away", "other", 302, 0, "GET");
    row("other origin, body", "other", 307, network(11), {});
    row("other origin, token", "token", 302, network(11), {});
    row("https left", "leave", 302, network(11), {});
    row("another protocol", "file", 302, network(301), {});
    row("without end", "loop", 307, network(10), {});
}

void tst_Faults::redirects()
{
    QFETCH(QString, kind);
    QFETCH(int, status);
    QFETCH(int, code);
    QFETCH(QByteArray, method);
    RawServer other(RawServer::answering(good));
    const QMap<QString, QString> targets{
        {"same", "/target"}, {"loop", "/again"}, {"file", "file:///etc/hostname"}};
    RawServer server(
        [&](QTcpSocket &socket, const QByteArray &request) {
            const QString target = targets.value(kind, other.url("/target"));
            socket.write(request.contains(" /target ") ? good : redirect(target, status));
        },
        kind == "leave" ? certificates.server("IP:127.0.0.1") : QSslConfiguration());
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", certificates.authority()}}}});

    const ReplyOutcome outcome =
        post(kind == "token" ? QVariantMap{{"X-Auth-Token", "T"}} : QVariantMap());
    const QByteArray seen = (kind == "same" ? server : other).lastRequest();
    if (code == 0) {
        QCOMPARE(outcome.order, QStringList("finished"));
        QVERIFY(seen.startsWith(method + " /target "));
        QCOMPARE(seen.contains(R"({"a":"b"})"), method == "POST");
    } else {
        expect(outcome, code);
        QCOMPARE(other.connections(), 0);
    }
    if (kind == "loop")
        QCOMPARE(server.requests(), 11);
}

void tst_Faults::refusedBeforeSending_data()
{
    const auto row =
        columns<QString, QString, QVariantMap, int>("name", "source", "headers", "code");
    row("unknown name", "noSuchName", "cloud", {}, 0x7000);
    row("other protocol", "ftp://127.0.0.1/", "cloud", {}, 0x7000);
    row("unknown source", "status", "other", {}, 0x7006);
    row("address without host", "http://", "cloud", {}, 0x7004);
    row("line break in a header", "status", "cloud", {{"X-A", "b\r\nX-C: d"}}, 0x7004);
    row("space in a header's name", "status", "cloud", {{"X A", "b"}}, 0x7004);
}

void tst_Faults::refusedBeforeSending()
{
    QFETCH(QString, name);
    QFETCH(QString, source);
    QFETCH(QVariantMap, headers);
    QFETCH(int, code);
    RawServer server(RawServer::answering(good));
    useAddress(server.url());
    auto *reply = manager->request(name, {{"source", source}, {"headers", headers}}, {});
    QCOMPARE(int(reply->status()), code);
    expect(ReplyOutcome::of(reply), code);
    QCOMPARE(server.connections(), 0);
}

void tst_Faults::managerDestroyed()
{
    RawServer silent([](QTcpSocket &, const QByteArray &) {});
    useAddress(silent.url());
    QStringList order;
    for (int i = 0; i < 3; ++i) {
        auto *reply = manager->request("status", {{"source", "cloud"}}, {});
        connect(reply, &Nubelo::Reply::errorOccurred, this,
                [&](Error::ErrorCode code) { order << QString::number(code, 16); });
        connect(reply, &Nubelo::Reply::finished, this, [&, reply] {
            order << "finished";
            reply->deleteLater();
        });
    }
    QTRY_COMPARE(silent.requests(), 3);
    manager.reset();
    QCOMPARE(order, QStringList({"700c", "finished", "700c", "finished", "700c", "finished"}));
}

QTEST_GUILESS_MAIN(tst_Faults)
#include "tst_faults.moc"
