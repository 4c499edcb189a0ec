#include "nubelo/CloudFixture.h"
#include "support/Threads.h"

/// The request library's good ways: what goes over the wire, configuration, lifetimes, reuse.
class tst_Nubelo : public CloudFixture
{
    Q_OBJECT

private Q_SLOTS:
    void buildsTheRequest_data()
    {
        // Of the first line what stands around the path; -1 is the call without a type.
        const auto row = columns<int, QString, QByteArray, QVariantMap, QString, QByteArray>(
            "type", "method", "rest", "envelope", "append", "body");
        constexpr int post = 0, get = 1, put = 2, del = 3;
        const QVariantMap odd{{"a b", "1&2=3+4"}, {"t", true}, {"ü", QString::fromUtf8("ß/?")}};
        const QVariantMap kinds{{"b", true},
                                {"l", QVariantList{1, "x"}},
                                {"t", QString::fromUtf8("ä")},
                                {"z", QVariant()}};
        const QByteArray large(3000000, 'x');
        row("post without body", post, "POST", "", {}, "", "{}");
        row("the table's method", -1, "POST", "", {}, "", "{}");
        row("get", get, "GET", "", {}, "", "");
        row("delete", del, "DELETE", "", {}, "", "");
        row("put with body", put, "PUT", "", {{"body", QVariantMap{{"a", 1}}}}, "", R"({"a":1})");
        row("body of all kinds", post, "POST", "", {{"body", kinds}}, "",
            R"({"b":true,"l":[1,"x"],"t":"ä","z":null})");
        row("large body", post, "POST", "", {{"body", QVariantMap{{"a", QString(large)}}}}, "",
            "{\"a\":\"" + large + "\"}");
        row("query is encoded", get, "GET", "?a%20b=1%262%3D3%2B4&t=true&%C3%BC=%C3%9F%2F%3F",
            {{"params", odd}}, "", "");
        row("text as it is", get, "GET", "-a/b.c~%20", {}, "-a/b.c~%20", "");
        row("text encoded where needed", get, "GET", "/%C3%A4%20b/%254%23%0D%0AX:%20y", {},
            QString::fromUtf8("/ä b/%4#\r\nX: y"), "");
        row("text with a query, and params", get, "GET", "?x=1&y=2",
            {{"params", QVariantMap{{"y", 2}}}}, "?x=1", "");
    }

    void buildsTheRequest()
    {
        QFETCH(int, type);
        QFETCH(QString, method);
        QFETCH(QByteArray, rest);
        QFETCH(QVariantMap, envelope);
        QFETCH(QString, append);
        QFETCH(QByteArray, body);
        RawServer server(good);
        useAddress(server.url("/v1/"));
        const QVariantMap headers{
            {"X-Auth-Token", "T"}, {"X-Empty", ""}, {"X-Text", QString::fromUtf8("ä")}};
        envelope.insert("headers", headers);
        envelope.insert("source", "cloud");
        const ReplyOutcome outcome =
            end(type < 0 ? manager->request("userLogin", envelope, {})
                         : manager->request("userLogin", Manager::HttpRequestType(type),
                                            Manager::NoEncrypt, append, envelope,
                                            Manager::NoAuthentication, {}));
        QCOMPARE(outcome.order, QStringList("finished"));
        QCOMPARE(outcome.map.value("result").toMap().value("n").toLongLong(), 12345678901);

        const QByteArray request = server.lastRequest();
        const int head = request.indexOf("\r\n\r\n");
        const QStringList lines = QString::fromUtf8(request.left(head)).split("\r\n");
        QCOMPARE(lines.first(), method + " /v1/user/login" + rest + " HTTP/1.1");
        for (const char *header :
             {"Accept: application/json", "X-Auth-Token: T", "X-Empty:", "X-Text: ä"})
            QVERIFY2(lines.contains(QString::fromUtf8(header)), header);
        QCOMPARE(lines.contains("Content-Type: application/json"), !body.isEmpty());
        QCOMPARE(lines.filter("Expect").size(), 0);
        QVERIFY(request.mid(head + 4) == body);
    }

    void requestsAddresses()
    {
        const QMap<QByteArray, QByteArray> answers{
            {"/form", RawServer::answer(R"({"status":"fail","result":"dbErr"})")},
            {"/gone", RawServer::answer("gone", 410)}};
        RawServer server([&](QTcpSocket &socket, const QByteArray &request) {
            const QByteArray path = request.split(' ').at(1);
            socket.write(answers.value(path, RawServer::answer("plain \xC3\xA4")));
        });
        const auto request = [&](const QString &path, const QVariantMap &envelope = {}) {
            return end(manager->request(server.url(path), envelope, {}));
        };
        const auto outcome = request("/probe?x=1#part");
        QCOMPARE(outcome.order, QStringList("finished"));
        QCOMPARE(outcome.map.value("result").toString(), QString::fromUtf8("plain ä"));
        QVERIFY(server.lastRequest().startsWith("GET /probe?x=1 HTTP/1.1\r\n"));
        // The service's form means nothing at an address: any body is text.
        QCOMPARE(request("/form", {{"body", QVariantMap{{"a", 1}}}}).map.value("status"), "ok");
        QVERIFY(server.lastRequest().startsWith("POST "));
        QCOMPARE(request("/gone").code, Error::ContentGoneError);
        end(manager->request(server.url(), Manager::Put, Manager::NoEncrypt, "?a=b", {},
                             Manager::NoAuthentication, {}));
        QVERIFY(server.lastRequest().startsWith("PUT /?a=b "));
    }

    void runsRequestsSideBySide()
    {
        QList<QTcpSocket *> waiting;
        RawServer server([&](QTcpSocket &socket, const QByteArray &) {
            waiting << &socket;
            for (int i = 0; waiting.size() == 5 && i < 5; ++i)
                waiting[i]->write(good);
        });
        useAddress(server.url());
        int finished = 0;
        for (int i = 0; i < 5; ++i)
            connect(requestStatus(), &Reply::finished, this, [&] { ++finished; });
        QTRY_COMPARE(finished, 5);
    }

    void keepsAnOutcomeForALateReceiver()
    {
        RawServer server(RawServer::answer("", 500));
        useAddress(server.url());
        Reply *reply = requestStatus();
        QTRY_COMPARE(server.requests(), 1);
        QCOMPARE(end(requestStatus()).code,
                 Error::InternalServerError); // the first one's turns too
        QCOMPARE(reply->status(), Error::NoError);
        QCOMPARE(end(reply).order, QStringList({"error", "finished"}));
    }

    void forgetsAReleasedReply()
    {
        RawServer server(good);
        useAddress(server.url());
        for (int i = 0; i < 50; ++i) {
            Reply *reply = requestStatus();
            if (i % 2)
                QCoreApplication::processEvents();
            delete reply;
        }
        // From inside its own signal too.
        Reply *reply = manager->request("noSuchName", {}, {});
        bool finished = false;
        connect(reply, &Reply::finished, this, [&] { finished = true; });
        connect(reply, &Reply::errorOccurred, this, [reply] { delete reply; });
        QCOMPARE(end(requestStatus()).order, QStringList("finished"));
        QVERIFY(!finished);

        // One that was answered takes nothing with it.
        Reply *answered = requestStatus();
        QVERIFY(QSignalSpy(answered, &Reply::finished).wait());
        Reply *next = requestStatus();
        delete answered;
        QCOMPARE(end(next).order, QStringList("finished"));
    }

    void mergesConfigurations()
    {
        manager = std::make_unique<Manager>();
        configure({{"timeouts", QVariantMap{{"connectMs", 10001}}}, {"own", QVariantList{1}}});
        configure({{"timeouts", QVariantMap{{"totalMs", 20002}}}, {"own", "replaced"}});
        QCOMPARE(manager->configData(),
                 (QVariantMap{{"timeouts", QVariantMap{{"connectMs", 10001}, {"totalMs", 20002}}},
                              {"own", "replaced"}}));

        // Another environment is another address, from the next request on.
        RawServer server(good);
        useAddress("http://127.0.0.1:1");
        configure({{"environments", QVariantMap{{"b", QVariantMap{{"cloud", server.url()}}}}}});
        QCOMPARE(send().code, Error::ConnectionRefusedError);
        configure({{"cloudEnvironment", "b"}});
        QCOMPARE(send().code, Error::NoError);
        configure({{"cloudEnvironment", ""}});
        QCOMPARE(send().code, Error::ConfigDataError);
    }

    void refusesAWrongConfigurationAsAWhole()
    {
        const QVariantMap before = manager->configData();
        for (const char *wrong :
             {R"("environments":1)", R"("environments":{"a":"http://x"})",
              R"("environments":{"a":{"cloud":"ftp://x"}})",
              R"("environments":{"a":{"cloud":"http:///v1"}})", R"("cloudEnvironment":1)",
              R"("requests":{"x":{"path":"/x","method":"post it"}})",
              R"("requests":{"x":{"method":"POST"}})", R"("timeouts":{"totalMs":0})",
              R"("timeouts":{"totalMs":86400001})", R"("timeouts":{"totalMs":true})",
              R"("timeouts":{"connectMs":"100"})", R"("tls":{"minimumVersion":"1.0"})",
              R"("proxy":"none of yours")"}) {
            const QByteArray json = QByteArray("{\"other\":\"good\",") + wrong + '}';
            const QVariantMap data = QJsonDocument::fromJson(json).object().toVariantMap();
            Reply *reply = manager->setConfigData(data, {});
            QVERIFY2(reply->status() == Error::ConfigDataError, wrong);
            QCOMPARE(end(reply).order, QStringList({"error", "finished"}));
            QCOMPARE(manager->configData(), before);
        }
    }

    void readsConfigurationFiles_data()
    {
        const auto row = columns<QByteArray, int>("content", "code");
        row("no file", {}, 0x7007);
        row("directory", {}, 0x7008);
        row("empty", "", 0x7006);
        row("cut", R"({"own":1)", 0x7006);
        row("array", "[1]", 0x7006);
        row("wrong member", R"({"proxy":1})", 0x7006);
        row("good", R"({"own":1})", 0);
        row("good, with a byte-order mark", "\xEF\xBB\xBF{\"own\":1}", 0);
    }

    void readsConfigurationFiles()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, code);
        QTemporaryDir directory;
        QFile file(directory.filePath(code == 0x7008 ? "." : "cloud.json"));
        if (!content.isNull())
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const QVariantMap before = manager->configData();
        Reply *reply = manager->setConfigPath(file.fileName(), {});
        QCOMPARE(int(reply->status()), code);
        end(reply);
        QCOMPARE(manager->configData(), (code ? before : QVariantMap{{"own", 1}}));
    }

    void isConfiguredFromAnyThread()
    {
        const int before = manager->configData().size();
        inThreads(4, [&](int thread) {
            for (int i = 0; i < 100; ++i) {
                manager->setConfigData({{QString("%1-%2").arg(thread).arg(i), i}}, {});
                manager->configData();
            }
        });
        QCOMPARE(manager->configData().size(), before + 400);
        // The replies come home.
        QCoreApplication::processEvents();
        const auto replies = manager->findChildren<Reply *>();
        QCOMPARE(replies.size(), 400);
        QCOMPARE(end(replies.last()).order, QStringList("finished"));
    }

private:
    Reply *requestStatus() { return manager->request("status", {{"source", "cloud"}}, {}); }
};

QTEST_GUILESS_MAIN(tst_Nubelo)
#include "tst_nubelo.moc"
