#include "nubelo/CloudFixture.h"

#include <thread>

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

} // namespace

/// The request library's good ways: what goes over the wire, configuration, lifetimes, reuse.
class tst_Nubelo : public CloudFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void buildsTheRequest_data();
    void buildsTheRequest();
    void requestsAddresses();
    void runsRequestsSideBySide();
    void keepsAnOutcomeForALateReceiver();
    void forgetsAReleasedReply();
    void mergesConfigurations();
    void refusesAWrongConfigurationAsAWhole();
    void readsConfigurationFiles();
    void isConfiguredFromAnyThread();

private:
    ReplyOutcome requestStatus()
    {
        return ReplyOutcome::of(manager->request("status", {{"source", "cloud"}}, {}));
    }
};

void tst_Nubelo::init()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    manager = std::make_unique<Manager>();
}

void tst_Nubelo::buildsTheRequest_data()
{
    // Of the first line what stands around the path; -1 is the call without a type.
    const auto row = columns<int, QString, QByteArray, QVariantMap, QString, QByteArray>(
        "type", "method", "rest", "envelope", "append", "body");
    constexpr int post = 0, get = 1, put = 2, del = 3;
    const QVariantMap odd{{"a b", "1&2=3+4"}, {"t", true}, {"ü", QString::fromUtf8("ß/?")}};
    const QVariantMap kinds{{"b", true},
                            {"l", QVariantList{1, "x"}},
                            {"t", QString::fromUtf8("\"ä")},
                            {"z", QVariant()}};
    row("post without body", post, "POST", "", {}, "", "{}");
    row("the table's method", -1, "POST", "", {}, "", "{}");
    row("get", get, "GET", "", {}, "", "");
    row("delete", del, "DELETE", "", {}, "", "");
    row("put with body", put, "PUT", "", {{"body", QVariantMap{{"a", 1}}}}, "", R"({"a":1})");
    row("body of all kinds", post, "POST", "", {{"body", kinds}}, "",
        R"({"b":true,"l":[1,"x"],"t":"\"ä","z":null})");
    row("query is encoded", get, "GET", "?a%20b=1%262%3D3%2B4&t=true&%C3%BC=%C3%9F%2F%3F",
        {{"params", odd}}, "", "");
    row("text as it is", get, "GET", "/a-b/c.d~%20", {}, "/a-b/c.d~%20", "");
    row("text encoded where needed", get, "GET", "/%C3%A4%20b/%254%23%0D%0AX:%20y", {},
        QString::fromUtf8("/ä b/%4#\r\nX: y"), "");
    row("text with a query, and params", get, "GET", "?x=1&y=2",
        {{"params", QVariantMap{{"y", 2}}}}, "?x=1", "");
}

void tst_Nubelo::buildsTheRequest()
{
    QFETCH(int, type);
    QFETCH(QString, method);
    QFETCH(QByteArray, rest);
    QFETCH(QVariantMap, envelope);
    QFETCH(QString, append);
    QFETCH(QByteArray, body);
    RawServer server(RawServer::answering(good));
    useAddress(server.url("/v1/"));
    const QVariantMap headers{
        {"X-Auth-Token", "T"}, {"X-Empty", ""}, {"X-Text", QString::fromUtf8("ä")}};
    envelope.insert("headers", headers);
    envelope.insert("source", "cloud");
    Nubelo::Reply *reply =
        type < 0 ? manager->request("userLogin", envelope, {})
                 : manager->request("userLogin", Manager::HttpRequestType(type), Manager::NoEncrypt,
                                    append, envelope, Manager::NoAuthentication, {});
    const ReplyOutcome outcome = ReplyOutcome::of(reply);
    QCOMPARE(outcome.order, QStringList("finished"));
    QCOMPARE(outcome.map.value("result").toMap().value("n").toLongLong(), 12345678901);

    const QByteArray request = server.lastRequest();
    const int end = request.indexOf("\r\n\r\n");
    const QStringList lines = QString::fromUtf8(request.left(end)).split("\r\n");
    QCOMPARE(lines.first(), method + " /v1/user/login" + rest + " HTTP/1.1");
    for (const QString &header :
         {QString("X-Auth-Token: T"), QString("X-Empty:"), QString::fromUtf8("X-Text: ä")})
        QVERIFY2(lines.contains(header), qPrintable(header));
    QCOMPARE(lines.contains("Content-Type: application/json"), !body.isEmpty());
    QCOMPARE(request.mid(end + 4), body);
}

void tst_Nubelo::requestsAddresses()
{
    const QMap<QByteArray, QByteArray> answers{
        {"/form", RawServer::answer(R"({"status":"fail","result":"dbErr"})")},
        {"/gone", RawServer::answer("gone", 410)}};
    RawServer server([&](QTcpSocket &socket, const QByteArray &request) {
        const QByteArray path = request.split(' ').at(1);
        socket.write(answers.value(path, RawServer::answer("plain \xC3\xA4")));
    });
    const auto request = [&](const QString &path, const QVariantMap &envelope = {}) {
        return ReplyOutcome::of(manager->request(server.url(path), envelope, {}));
    };
    const auto outcome = request("/probe?x=1#part");
    QCOMPARE(outcome.order, QStringList("finished"));
    QCOMPARE(outcome.map.value("result").toString(), QString::fromUtf8("plain ä"));
    QVERIFY(server.lastRequest().startsWith("GET /probe?x=1 HTTP/1.1\r\n"));
    // The service's form means nothing at an address: any body is text.
    QCOMPARE(request("/form", {{"body", QVariantMap{{"a", 1}}}}).map.value("status"), "ok");
    QVERIFY(server.lastRequest().startsWith("POST "));
    QCOMPARE(request("/gone").code, Error::ContentGoneError);
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
    useAddress(server.url());
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
    useAddress(server.url());
    auto *reply = manager->request("status", {{"source", "cloud"}}, {});
    QTRY_COMPARE(server.requests(), 1);
    QCOMPARE(requestStatus().code, Error::InternalServerError); // and the first one's turns too
    QCOMPARE(reply->status(), Error::NoError);
    QCOMPARE(ReplyOutcome::of(reply).order, QStringList({"error", "finished"}));
}

void tst_Nubelo::forgetsAReleasedReply()
{
    RawServer server(RawServer::answering(good));
    useAddress(server.url());
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
    configure({{"timeouts", QVariantMap{{"connectMs", 10001}}}, {"own", QVariantList{1}}});
    configure({{"timeouts", QVariantMap{{"totalMs", 20002}}}, {"own", "replaced"}});
    QCOMPARE(manager->configData(),
             (QVariantMap{{"timeouts", QVariantMap{{"connectMs", 10001}, {"totalMs", 20002}}},
                          {"own", "replaced"}}));

    // Another environment is another address, from the next request on.
    RawServer server(RawServer::answering(good));
    useAddress("http://127.0.0.1:1");
    configure({{"environments", QVariantMap{{"b", QVariantMap{{"cloud", server.url()}}}}}});
    QCOMPARE(requestStatus().code, Error::ConnectionRefusedError);
    configure({{"cloudEnvironment", "b"}});
    QCOMPARE(requestStatus().code, Error::NoError);
    configure({{"cloudEnvironment", ""}});
    QCOMPARE(requestStatus().code, Error::ConfigDataError);
}

void tst_Nubelo::refusesAWrongConfigurationAsAWhole()
{
    useAddress("http://127.0.0.1:1");
    const QVariantMap before = manager->configData();
    for (const char *wrong :
         {R"("environments":1)", R"("environments":{"a":"http://x"})",
          R"("environments":{"a":{"cloud":"ftp://x"}})",
          R"("environments":{"a":{"cloud":"http:///v1"}})", R"("cloudEnvironment":1)",
          R"("requests":{"x":{"path":"/x","method":"post it"}})",
          R"("requests":{"x":{"method":"POST"}})", R"("timeouts":{"totalMs":0})",
          R"("timeouts":{"connectMs":"100"})", R"("tls":{"minimumVersion":"1.0"})",
          R"("proxy":"none of yours")"}) {
        const QByteArray json = QByteArray("{\"other\":\"good\",") + wrong + '}';
        const QVariantMap data = QJsonDocument::fromJson(json).object().toVariantMap();
        Nubelo::Reply *reply = manager->setConfigData(data, {});
        QVERIFY2(reply->status() == Error::ConfigDataError, wrong);
        QCOMPARE(ReplyOutcome::of(reply).order, QStringList({"error", "finished"}));
        QCOMPARE(manager->configData(), before);
    }
}

void tst_Nubelo::readsConfigurationFiles()
{
    QTemporaryDir directory;
    const QString path = directory.filePath("cloud.json");
    const auto statusOf = [&](const QString &tried) {
        configure({{"before", 1}});
        Nubelo::Reply *reply = manager->setConfigPath(tried, {});
        const int status = reply->status();
        ReplyOutcome::of(reply);
        return status;
    };
    QCOMPARE(statusOf(path), 0x7007);
    QCOMPARE(statusOf(directory.path()), 0x7008);
    for (const QByteArray content : {"", R"({"own":1)", "[1]", R"({"proxy":1})"}) {
        writeFile(path, content);
        QCOMPARE(statusOf(path), 0x7006);
        QCOMPARE(manager->configData(), (QVariantMap{{"before", 1}}));
    }
    for (const QByteArray content : {R"({"own":1})", "\xEF\xBB\xBF{\"own\":1}"}) {
        writeFile(path, content);
        QCOMPARE(statusOf(path), 0);
        QCOMPARE(manager->configData(), (QVariantMap{{"own", 1}}));
    }
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
