#include <nubelo/Manager.h>

#include "support/RawServer.h"
#include "support/ReplyOutcome.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

#include <thread>

using Nubelo::Error;
using Nubelo::Manager;

namespace {

const QByteArray good = RawServer::answer(R"({"status":"ok","result":{"n":12345678901,"t":"x"}})");

QVariantMap environment(const QString &address)
{
    return {{"cloudEnvironment", "test"},
            {"environments", QVariantMap{{"test", QVariantMap{{"cloud", address}}}}}};
}

} // namespace

/// The request library's good ways: what goes over the wire, configuration, lifetimes, reuse.
class tst_Nubelo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void buildsTheRequest_data();
    void buildsTheRequest();
    void requestsAddresses();
    void deliversTheAnswer();
    void reusesTheConnection();
    void runsRequestsSideBySide();
    void keepsAnOutcomeForALateReceiver();
    void forgetsAReleasedReply();
    void mergesConfigurations();
    void refusesAWrongConfigurationAsAWhole_data();
    void refusesAWrongConfigurationAsAWhole();
    void readsConfigurationFiles_data();
    void readsConfigurationFiles();
    void isConfiguredFromAnyThread();

private:
    QStringList configure(const QVariantMap &data)
    {
        return ReplyOutcome::of(manager->setConfigData(data, {})).order;
    }

    ReplyOutcome requestStatus()
    {
        return ReplyOutcome::of(manager->request("status", {{"source", "cloud"}}, {}));
    }

    std::unique_ptr<Manager> manager;
};

void tst_Nubelo::init()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    manager = std::make_unique<Manager>();
}

void tst_Nubelo::buildsTheRequest_data()
{
    QTest::addColumn<QString>("append");
    QTest::addColumn<QVariantMap>("envelope");
    QTest::addColumn<int>("type"); // -1: the call without one
    QTest::addColumn<QByteArray>("firstLine");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QByteArray>("body");

    const QVariantMap none;
    const auto envelope = [](const char *key, const QVariantMap &map) {
        return QVariantMap{{key, map}};
    };
    QTest::newRow("post without body")
        << "" << none << 0 << QByteArray("POST /v1/user/login HTTP/1.1")
        << QStringList{"Content-Type: application/json"} << QByteArray("{}");
    QTest::newRow("the table's method")
        << "" << none << -1 << QByteArray("POST /v1/user/login HTTP/1.1") << QStringList{}
        << QByteArray("{}");
    QTest::newRow("get") << "" << none << 1 << QByteArray("GET /v1/user/login HTTP/1.1")
                         << QStringList{} << QByteArray();
    QTest::newRow("delete") << "" << none << 3 << QByteArray("DELETE /v1/user/login HTTP/1.1")
                            << QStringList{} << QByteArray();
    QTest::newRow("put with body")
        << "" << envelope("body", {{"a", 1}}) << 2 << QByteArray("PUT /v1/user/login HTTP/1.1")
        << QStringList{"Content-Type: application/json"} << QByteArray(R"({"a":1})");
    QTest::newRow("body of all kinds")
        << ""
        << envelope("body", {{"b", true},
                             {"l", QVariantList{1, "x"}},
                             {"t", QString::fromUtf8("\"ä")},
                             {"z", QVariant()}})
        << 0 << QByteArray("POST /v1/user/login HTTP/1.1") << QStringList{}
        << QByteArray(R"({"b":true,"l":[1,"x"],"t":"\"ä","z":null})");
    QTest::newRow("query is encoded")
        << ""
        << envelope("params", {{"a b", "1&2=3+4"}, {"t", true}, {"ü", QString::fromUtf8("ß/?")}})
        << 1
        << QByteArray("GET /v1/user/login?a%20b=1%262%3D3%2B4&t=true&%C3%BC=%C3%9F%2F%3F HTTP/1.1")
        << QStringList{} << QByteArray();
    QTest::newRow("text as it is")
        << "/a-b/c.d~%20" << none << 1 << QByteArray("GET /v1/user/login/a-b/c.d~%20 HTTP/1.1")
        << QStringList{} << QByteArray();
    QTest::newRow("text encoded where needed")
        << QString::fromUtf8("/ä b/%4#\r\nX: y") << none << 1
        << QByteArray("GET /v1/user/login/%C3%A4%20b/%254%23%0D%0AX:%20y HTTP/1.1") << QStringList{}
        << QByteArray();
    QTest::newRow("text with a query, and params")
        << "?x=1" << envelope("params", {{"y", 2}}) << 1
        << QByteArray("GET /v1/user/login?x=1&y=2 HTTP/1.1") << QStringList{} << QByteArray();
    QTest::newRow("headers") << ""
                             << envelope("headers", {{"X-Auth-Token", "T"},
                                                     {"X-Empty", ""},
                                                     {"X-Text", QString::fromUtf8("ä")}})
                             << 1 << QByteArray("GET /v1/user/login HTTP/1.1")
                             << QStringList{"X-Auth-Token: T",
                                            "X-Empty:", QString::fromUtf8("X-Text: ä")}
                             << QByteArray();
}

void tst_Nubelo::buildsTheRequest()
{
    QFETCH(QString, append);
    QFETCH(QVariantMap, envelope);
    QFETCH(int, type);
    RawServer server(RawServer::answering(good));
    configure(environment(server.url("/v1/")));
    envelope.insert("source", "cloud");
    Nubelo::Reply *reply =
        type < 0 ? manager->request("userLogin", envelope, {})
                 : manager->request("userLogin", Manager::HttpRequestType(type), Manager::NoEncrypt,
                                    append, envelope, Manager::NoAuthentication, {});
    QCOMPARE(ReplyOutcome::of(reply).order, QStringList("finished"));

    const QByteArray request = server.lastRequest();
    const QStringList lines = QString::fromUtf8(request).section("\r\n\r\n", 0, 0).split("\r\n");
    QFETCH(QByteArray, firstLine);
    QCOMPARE(lines.first().toUtf8(), firstLine);
    QFETCH(QStringList, headers);
    for (const QString &header : headers)
        QVERIFY2(lines.contains(header), qPrintable(lines.join('\n')));
    QTEST(request.mid(request.indexOf("\r\n\r\n") + 4), "body");
}

void tst_Nubelo::requestsAddresses()
{
    RawServer server([](QTcpSocket &socket, const QByteArray &request) {
        if (request.contains(" /form "))
            socket.write(RawServer::answer(R"({"status":"fail","result":"dbErr"})"));
        else if (request.contains(" /nothing "))
            socket.write(RawServer::answer("", 204));
        else if (request.contains(" /gone "))
            socket.write(RawServer::answer("gone", 410));
        else
            socket.write(RawServer::answer("plain \xC3\xA4"));
    });
    const auto request = [&](const QString &path, const QVariantMap &envelope = {}) {
        return ReplyOutcome::of(manager->request(server.url(path), envelope, {}));
    };
    auto outcome = request("/probe?x=1#part");
    QCOMPARE(outcome.order, QStringList("finished"));
    QCOMPARE(outcome.map.value("result").toString(), QString::fromUtf8("plain ä"));
    QVERIFY(server.lastRequest().startsWith("GET /probe?x=1 HTTP/1.1\r\n"));

    // The service's form means nothing at an address: any body is text.
    QCOMPARE(request("/form").map.value("status").toString(), "ok");
    outcome = request("/nothing", {{"body", QVariantMap{{"a", 1}}}});
    QCOMPARE(outcome.map.value("result"), QVariant(""));
    QVERIFY(server.lastRequest().startsWith("POST "));
    QCOMPARE(request("/gone").code, Error::ContentGoneError);
}

void tst_Nubelo::deliversTheAnswer()
{
    RawServer server(RawServer::answering(good));
    configure(environment(server.url()));
    const auto outcome = requestStatus();
    QCOMPARE(outcome.map.value("status").toString(), "ok");
    QCOMPARE(outcome.map.value("result").toMap().value("n").toLongLong(), 12345678901);
    QVERIFY(outcome.fromLaterTurn);
}

void tst_Nubelo::reusesTheConnection()
{
    RawServer server(RawServer::answering(good));
    configure(environment(server.url()));
    for (int i = 0; i < 20; ++i)
        QCOMPARE(ReplyOutcome::of(manager->request("userLogin", {{"source", "cloud"}}, {})).order,
                 QStringList("finished"));
    QCOMPARE(server.requests(), 20);
    QCOMPARE(server.connections(), 1);
}

void tst_Nubelo::runsRequestsSideBySide()
{
    QList<QTcpSocket *> waiting;
    RawServer server([&](QTcpSocket &socket, const QByteArray &) {
        waiting << &socket;
        if (waiting.size() == 5) {
            for (QTcpSocket *one : qAsConst(waiting))
                one->write(good);
        }
    });
    configure(environment(server.url()));
    int finished = 0;
    for (int i = 0; i < 5; ++i) {
        auto *reply = manager->request("status", {{"source", "cloud"}}, {});
        connect(reply, &Nubelo::Reply::finished, this, [&] { ++finished; });
    }
    QTRY_COMPARE(finished, 5);
}

void tst_Nubelo::keepsAnOutcomeForALateReceiver()
{
    RawServer server(RawServer::answering(RawServer::answer("", 500)));
    configure(environment(server.url()));
    auto *reply = manager->request("status", {{"source", "cloud"}}, {});
    QTRY_COMPARE(reply->status(), Error::InternalServerError);
    QCoreApplication::processEvents();
    QCOMPARE(ReplyOutcome::of(reply).order, QStringList({"error", "finished"}));
}

void tst_Nubelo::forgetsAReleasedReply()
{
    RawServer server(RawServer::answering(good));
    configure(environment(server.url()));
    for (int i = 0; i < 50; ++i) {
        auto *reply = manager->request("status", {{"source", "cloud"}}, {});
        if (i % 2)
            QCoreApplication::processEvents();
        delete reply;
    }
    // From inside its own signal too.
    auto *reply = manager->request("noSuchName", {}, {});
    bool finished = false;
    connect(reply, &Nubelo::Reply::finished, this, [&] { finished = true; });
    connect(reply, &Nubelo::Reply::errorOccurred, this, [reply] { delete reply; });
    QCOMPARE(requestStatus().order, QStringList("finished"));
    QVERIFY(!finished);
}

void tst_Nubelo::mergesConfigurations()
{
    QCOMPARE(manager->configData(), QVariantMap());
    configure({{"timeouts", QVariantMap{{"connectMs", 10001}}}, {"own", QVariantList{1}}});
    configure({{"timeouts", QVariantMap{{"totalMs", 20002}}}, {"own", "replaced"}});
    QCOMPARE(manager->configData(),
             (QVariantMap{{"timeouts", QVariantMap{{"connectMs", 10001}, {"totalMs", 20002}}},
                          {"own", "replaced"}}));

    // Another environment is another address, from the next request on.
    RawServer first(RawServer::answering(good)), second(RawServer::answering(good));
    configure({{"environments", QVariantMap{{"a", QVariantMap{{"cloud", first.url()}}},
                                            {"b", QVariantMap{{"cloud", second.url()}}}}}});
    configure({{"cloudEnvironment", "a"}});
    QCOMPARE(requestStatus().code, Error::NoError);
    configure({{"cloudEnvironment", "b"}});
    QCOMPARE(requestStatus().code, Error::NoError);
    QCOMPARE(first.requests(), 1);
    QCOMPARE(second.requests(), 1);
    configure({{"cloudEnvironment", ""}});
    QCOMPARE(requestStatus().code, Error::ConfigDataError);
}

void tst_Nubelo::refusesAWrongConfigurationAsAWhole_data()
{
    QTest::addColumn<QVariantMap>("data");
    const auto in = [](const char *key, const QVariantMap &map) { return QVariantMap{{key, map}}; };
    QTest::newRow("environments") << QVariantMap{{"environments", 1}};
    QTest::newRow("environment") << in("environments", {{"a", "http://x"}});
    QTest::newRow("address") << in("environments", {{"a", QVariantMap{{"cloud", "ftp://x"}}}});
    QTest::newRow("no host") << in("environments", {{"a", QVariantMap{{"cloud", "http:///v1"}}}});
    QTest::newRow("environment's name") << QVariantMap{{"cloudEnvironment", 1}};
    QTest::newRow("method") << in("requests",
                                  {{"x", QVariantMap{{"path", "/x"}, {"method", "post it"}}}});
    QTest::newRow("path") << in("requests", {{"x", QVariantMap{{"method", "POST"}}}});
    QTest::newRow("zero") << in("timeouts", {{"totalMs", 0}});
    QTest::newRow("negative") << in("timeouts", {{"connectMs", -1}});
    QTest::newRow("text for a number") << in("timeouts", {{"connectMs", "100"}});
    QTest::newRow("TLS version") << in("tls", {{"minimumVersion", "1.0"}});
    QTest::newRow("proxy") << QVariantMap{{"proxy", "none of yours"}};
}

void tst_Nubelo::refusesAWrongConfigurationAsAWhole()
{
    QFETCH(QVariantMap, data);
    configure(environment("http://127.0.0.1:1"));
    const QVariantMap before = manager->configData();
    data.insert("other", "good");
    Nubelo::Reply *reply = manager->setConfigData(data, {});
    QCOMPARE(reply->status(), Error::ConfigDataError);
    QCOMPARE(ReplyOutcome::of(reply).order, QStringList({"error", "finished"}));
    QCOMPARE(manager->configData(), before);
}

void tst_Nubelo::readsConfigurationFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("status");
    QTest::newRow("good") << QByteArray(R"({"own":1})") << 0;
    QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBF{\"own\":1}") << 0;
    QTest::newRow("empty") << QByteArray("") << 0x7006;
    QTest::newRow("cut short") << QByteArray(R"({"own":1)") << 0x7006;
    QTest::newRow("array") << QByteArray("[1]") << 0x7006;
    QTest::newRow("wrong form") << QByteArray(R"({"proxy":1})") << 0x7006;
    QTest::newRow("missing") << QByteArray("missing") << 0x7007;
    QTest::newRow("directory") << QByteArray("directory") << 0x7008;
}

void tst_Nubelo::readsConfigurationFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(int, status);
    QTemporaryDir directory;
    QString path = directory.filePath("cloud.json");
    if (content == "directory") {
        path = directory.path();
    } else if (content != "missing") {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    configure({{"before", 1}});
    Nubelo::Reply *reply = manager->setConfigPath(path, {});
    QCOMPARE(int(reply->status()), status);
    ReplyOutcome::of(reply);
    const QVariantMap expected{{status == 0 ? "own" : "before", 1}};
    QCOMPARE(manager->configData(), expected);
}

void tst_Nubelo::isConfiguredFromAnyThread()
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 100; ++i) {
                manager->setConfigData({{QString("%1-%2").arg(thread).arg(i), i}}, {});
                manager->configData();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(manager->configData().size(), 400);
}

QTEST_GUILESS_MAIN(tst_Nubelo)
#include "tst_nubelo.moc"
