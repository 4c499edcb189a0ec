#include <nubelo/Manager.h>

#include "support/Certificates.h"
#include "support/RawServer.h"
#include "support/ReplyOutcome.h"

#include <QtTest/QtTest>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

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
        m_sockets.push_back(::socket(AF_INET, SOCK_STREAM, 0));
        ::bind(m_sockets[0], any, size);
        ::listen(m_sockets[0], 0);
        ::getsockname(m_sockets[0], any, &size);
        port = ntohs(address.sin_port);
        for (int i = 0; i < 8; ++i) {
            m_sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
            ::connect(m_sockets.back(), any, size);
        }
    }
    ~FullQueue()
    {
        for (const int socket : m_sockets)
            ::close(socket);
    }
    FullQueue(const FullQueue &) = delete;
    FullQueue &operator=(const FullQueue &) = delete;

    int port = 0;

private:
    std::vector<int> m_sockets;
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
    void httpStatuses_data();
    void httpStatuses();
    void malformedAnswers_data();
    void malformedAnswers();
    void tlsFaults_data();
    void tlsFaults();
    void trustsTheConfiguredAuthority();
    void redirects_data();
    void redirects();
    void proxyFaults_data();
    void proxyFaults();
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
    ReplyOutcome post(const QVariantMap &headers = {})
    {
        return ReplyOutcome::of(manager->request(
            "userLogin", Manager::Post, Manager::NoEncrypt,
            {{"source", "cloud"}, {"body", QVariantMap{{"a", "b"}}}, {"headers", headers}},
            Manager::NoAuthentication, {}));
    }
    void expect(const ReplyOutcome &outcome, int code, bool ssl = false)
    {
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.finished, 1);
        QCOMPARE(QString::number(outcome.code, 16), QString::number(code, 16));
        QCOMPARE(outcome.order, ssl ? QStringList({"ssl", "error", "finished"})
                                    : QStringList({"error", "finished"}));
        QVERIFY(outcome.fromLaterTurn);
    }

    std::unique_ptr<Manager> manager;
    std::unique_ptr<Certificates> certificates;
};

void tst_Faults::initTestCase()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    certificates = std::make_unique<Certificates>();
    QVERIFY2(certificates->isValid(), "the openssl command is needed");
}

void tst_Faults::init()
{
    manager = std::make_unique<Manager>();
    configure({{"timeouts", QVariantMap{{"connectMs", 4000}, {"totalMs", 5000}}}});
}

// Whatever happened, the same Manager serves the next request.
void tst_Faults::cleanup()
{
    if (!manager)
        return;
    RawServer server(RawServer::answering(good));
    configure({{"proxy", "none"},
               {"tls", QVariantMap{{"caFile", ""}}},
               {"timeouts", QVariantMap{{"connectMs", 4000}, {"totalMs", 5000}}}});
    useAddress(server.url());
    const auto outcome = post();
    QCOMPARE(outcome.order, QStringList("finished"));
    QCOMPARE(outcome.map.value("result").toInt(), 1);
    manager.reset();
}

void tst_Faults::connectionFaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("code");
    QTest::newRow("refused") << "refused" << network(1);
    QTest::newRow("unknown host") << "host" << network(3);
    QTest::newRow("connect deadline") << "connect" << network(4);
    QTest::newRow("total deadline") << "silent" << network(4);
    QTest::newRow("total deadline outlasts a drip") << "drip" << network(4);
    QTest::newRow("total deadline over redirects") << "redirects" << network(4);
}

void tst_Faults::connectionFaults()
{
    QFETCH(QString, kind);
    QFETCH(int, code);
    FullQueue full;
    RawServer slow([&](QTcpSocket &socket, const QByteArray &) {
        if (kind == "drip") {
            socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
            auto *timer = new QTimer(&socket);
            QObject::connect(timer, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
            timer->start(20);
        } else if (kind == "redirects") {
            QTimer::singleShot(150, &socket, [&socket] { socket.write(redirect("/again", 307)); });
        }
    });
    if (kind == "refused")
        useAddress(QString("http://127.0.0.1:%1").arg(RawServer::closedPort()));
    else if (kind == "host")
        useAddress("http://no-such-host.invalid");
    else if (kind == "connect")
        useAddress(QString("http://127.0.0.1:%1").arg(full.port));
    else
        useAddress(slow.url());
    if (code == network(4))
        configure({{"timeouts",
                    QVariantMap{{"connectMs", 300}, {"totalMs", kind == "connect" ? 5000 : 500}}}});
    expect(post(), code);
}

void tst_Faults::answerFaults_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("closed at once") << QByteArray();
    QTest::newRow("closed in the headers") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le");
    QTest::newRow("closed in the body")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{\"sta");
    QTest::newRow("closed in a chunk")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\n{\"sta");
    QTest::newRow("over the size limit") << RawServer::answer(QByteArray(2000, ' '));
    QTest::newRow("reset") << QByteArray("reset");
}

void tst_Faults::answerFaults()
{
    QFETCH(QByteArray, sent);
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
    expect(post(), network(2));
}

void tst_Faults::httpStatuses_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("code");
    const QList<QPair<int, int>> table{{400, 302}, {401, 204}, {402, 299}, {403, 201}, {404, 203},
                                       {405, 202}, {407, 105}, {409, 206}, {410, 207}, {429, 299},
                                       {500, 401}, {501, 402}, {502, 499}, {503, 403}, {599, 499}};
    for (const auto &[status, e] : table)
        QTest::addRow("%d", status) << status << network(e);
}

void tst_Faults::httpStatuses()
{
    QFETCH(int, status);
    QFETCH(int, code);
    QByteArray body = "<html>";
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        socket.write(RawServer::answer(body, status));
    });
    useAddress(server.url());
    ReplyOutcome outcome = post();
    expect(outcome, code);
    QCOMPARE(outcome.map, QVariantMap());

    // An answer of the service's form is delivered all the same.
    body = R"({"status":"fail","result":"dbErr"})";
    outcome = post();
    expect(outcome, code);
    QCOMPARE(outcome.map, (QVariantMap{{"status", "fail"}, {"result", "dbErr"}}));
}

void tst_Faults::malformedAnswers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << RawServer::answer("");
    QTest::newRow("no JSON") << RawServer::answer("<html>");
    QTest::newRow("array") << RawServer::answer("[1]");
    QTest::newRow("object without status") << RawServer::answer(R"({"result":1})");
    QTest::newRow("status is no text") << RawServer::answer(R"({"status":1,"result":1})");
    QTest::newRow("cut short within its length") << RawServer::answer(R"({"status":"ok","result)");
    QTest::newRow("nested too deep")
        << RawServer::answer(R"({"status":"ok","result":)" + QByteArray(5000, '['));
    QTest::newRow("not HTTP") << QByteArray("SSH-2.0-server\r\n\r\n");
    QTest::newRow("304") << RawServer::answer("", 304);
}

void tst_Faults::malformedAnswers()
{
    QFETCH(QByteArray, bytes);
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        socket.write(bytes);
        socket.disconnectFromHost();
    });
    useAddress(server.url());
    expect(post(), network(399));
}

void tst_Faults::tlsFaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("reason");
    QTest::newRow("self-signed") << "self" << int(QSslError::SelfSignedCertificate);
    QTest::newRow("expired") << "expired" << int(QSslError::CertificateExpired);
    QTest::newRow("wrong host") << "host" << int(QSslError::HostNameMismatch);
    QTest::newRow("unknown issuer")
        << "issuer" << int(QSslError::UnableToGetLocalIssuerCertificate);
    QTest::newRow("version too old") << "version" << int(QSslError::UnspecifiedError);
}

void tst_Faults::tlsFaults()
{
    QFETCH(QString, kind);
    QSslConfiguration tls =
        certificates->server(kind == "host" ? "DNS:other.example" : "IP:127.0.0.1",
                             kind == "expired" ? -1 : 1, kind == "self");
    if (kind == "version")
        tls.setProtocol(QSsl::TlsV1_2);
    RawServer server(RawServer::answering(good), tls);
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", kind == "issuer" ? "" : certificates->authority()},
                                   {"minimumVersion", kind == "version" ? "1.3" : "1.2"}}}});
    const ReplyOutcome outcome = post();
    expect(outcome, network(6), true);
    QCOMPARE(outcome.sslErrors.size(), 1);
    QTEST(int(outcome.sslErrors.first().error()), "reason");
    QCOMPARE(server.requests(), 0);
}

void tst_Faults::trustsTheConfiguredAuthority()
{
    RawServer server(RawServer::answering(good), certificates->server("IP:127.0.0.1"));
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", certificates->authority()}}}});
    QCOMPARE(post().order, QStringList("finished"));
}

void tst_Faults::redirects_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("method"); // that the target saw
    QTest::newRow("same origin keeps all, 307") << "same 307" << 0 << QByteArray("POST");
    QTest::newRow("same origin becomes a GET, 302") << "same 302" << 0 << QByteArray("GET");
    QTest::newRow("same origin becomes a GET, 303") << "same 303" << 0 << QByteArray("GET");
    QTest::newRow("other origin, nothing to give away") << "other 302" << 0 << QByteArray("GET");
    QTest::newRow("other origin, body") << "other 307" << network(11) << QByteArray();
    QTest::newRow("other origin, token") << "other 302 token" << network(11) << QByteArray();
    QTest::newRow("https left") << "leave 302" << network(11) << QByteArray();
    QTest::newRow("another protocol") << "file" << network(301) << QByteArray();
    QTest::newRow("without end") << "loop" << network(10) << QByteArray();
}

void tst_Faults::redirects()
{
    QFETCH(QString, kind);
    QFETCH(int, code);
    QFETCH(QByteArray, method);
    const int status = kind.section(' ', 1, 1).toInt();
    RawServer other(RawServer::answering(good));
    RawServer server(
        [&](QTcpSocket &socket, const QByteArray &request) {
            if (request.contains(" /target "))
                socket.write(good);
            else if (kind.startsWith("same"))
                socket.write(redirect("/target", status));
            else if (kind == "loop")
                socket.write(redirect("/again", 307));
            else if (kind == "file")
                socket.write(redirect("file:///etc/hostname"));
            else
                socket.write(redirect(other.url("/target"), status));
        },
        kind.startsWith("leave") ? certificates->server("IP:127.0.0.1") : QSslConfiguration());
    useAddress(server.url());
    configure({{"tls", QVariantMap{{"caFile", certificates->authority()}}}});

    const ReplyOutcome outcome =
        post(kind.endsWith("token") ? QVariantMap{{"X-Auth-Token", "T"}} : QVariantMap());
    const RawServer &target = kind.startsWith("same") ? server : other;
    if (code == 0) {
        QCOMPARE(outcome.order, QStringList("finished"));
        QCOMPARE(target.lastRequest().startsWith(method + " /target "), true);
        QCOMPARE(target.lastRequest().contains(R"({"a":"b"})"), method == "POST");
    } else {
        expect(outcome, code);
        QCOMPARE(other.connections(), 0);
    }
    if (kind == "loop")
        QCOMPARE(server.requests(), 11);
}

void tst_Faults::proxyFaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("code");
    const QString http = "http://service.invalid", https = "https://service.invalid";
    QTest::newRow("refused") << "refused" << http << network(101);
    QTest::newRow("not found") << "host" << http << network(103);
    QTest::newRow("time-out") << "connect" << http << network(104);
    QTest::newRow("asks for credentials") << "credentials" << http << network(105);
    QTest::newRow("asks for credentials, tunnel") << "credentials" << https << network(105);
}

void tst_Faults::proxyFaults()
{
    QFETCH(QString, kind);
    QFETCH(QString, target);
    QFETCH(int, code);
    FullQueue full;
    RawServer proxy(RawServer::answering(
        RawServer::answer("", 407, "Proxy-Authenticate: Basic realm=\"p\"\r\n")));
    useAddress(target);
    QString address = proxy.url();
    if (kind == "refused")
        address = QString("http://127.0.0.1:%1").arg(RawServer::closedPort());
    else if (kind == "host")
        address = "http://no-such-proxy.invalid:3128";
    else if (kind == "connect")
        address = QString("http://127.0.0.1:%1").arg(full.port);
    configure({{"proxy", address}, {"timeouts", QVariantMap{{"connectMs", 500}}}});
    expect(post(), code);
}

void tst_Faults::refusedBeforeSending_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariantMap>("envelope");
    QTest::addColumn<int>("code");
    const QVariantMap cloud{{"source", "cloud"}};
    QTest::newRow("unknown name") << "noSuchName" << cloud << 0x7000;
    QTest::newRow("empty name") << "" << cloud << 0x7000;
    QTest::newRow("other protocol") << "ftp://127.0.0.1/" << cloud << 0x7000;
    QTest::newRow("unknown source") << "status" << QVariantMap{{"source", "other"}} << 0x7006;
    QTest::newRow("no source") << "status" << QVariantMap{} << 0x7006;
    QTest::newRow("address without host") << "http://" << cloud << 0x7004;
    QTest::newRow("line break in a header")
        << "status"
        << QVariantMap{{"source", "cloud"}, {"headers", QVariantMap{{"X-A", "b\r\nX-C: d"}}}}
        << 0x7004;
    QTest::newRow("space in a header's name")
        << "status" << QVariantMap{{"source", "cloud"}, {"headers", QVariantMap{{"X A", "b"}}}}
        << 0x7004;
}

void tst_Faults::refusedBeforeSending()
{
    QFETCH(QString, name);
    QFETCH(QVariantMap, envelope);
    QFETCH(int, code);
    RawServer server(RawServer::answering(good));
    useAddress(server.url());
    Nubelo::Reply *reply = manager->request(name, envelope, {});
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
