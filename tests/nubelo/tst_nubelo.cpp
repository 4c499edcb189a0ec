// SPDX-License-Identifier: MIT
#include "nubelo/CloudFixture.h"
#include "support/Threads.h"

/// The request library's good ways: what goes over the wire, configuration, lifetimes, reuse.
class tst_Nubelo : public CloudFixture
{
    Q_OBJECT

private Q_SLOTS:
    void buildsTheRequest_data()
    {
        QTest::addColumn<QJsonObject>("row");
        const QString rows = textOf(QFINDTESTDATA("requests.json"));
        for (const QJsonValue row : QJsonDocument::fromJson(rows.toUtf8()).array())
            QTest::newRow(qPrintable(row["name"].toString())) << row.toObject();
    }

    void buildsTheRequest()
    {
        QFETCH(const QJsonObject, row);
        const auto text = [&](const char *member) { return row[member].toString(); };
        RawServer server(good);
        useAddress(server.url("/v1/"));
        QVariantMap envelope = row["envelope"].toObject().toVariantMap();
        envelope.insert("source", "cloud");
        const QString name = row["request"].toString("userLogin").replace("SERVER", server.url());
        const auto type = Manager::HttpRequestType(row["type"].toInt());
        Reply *reply = row.contains("type")
                           ? manager->request(name, type, Manager::NoEncrypt, text("append"),
                                              envelope, Manager::NoAuthentication, {})
                           : manager->request(name, envelope, {});
        const bool isRefused = row.contains("error");
        if (isRefused)
            QCOMPARE(QString::number(reply->status(), 16), text("error"));
        QCOMPARE(end(reply).order.join(' '), isRefused ? "error finished" : "finished");
        QCOMPARE(server.requests(), int(!isRefused));

        const QString request = QString::fromUtf8(server.lastRequest());
        const QStringList head = request.section("\r\n\r\n", 0, 0).split("\r\n");
        QCOMPARE(head.first(), isRefused ? "" : text("sent") + " HTTP/1.1");
        for (const QJsonValue header : row["headers"].toArray())
            QVERIFY2(head.contains(header.toString()), qPrintable(header.toString()));
        QCOMPARE(head.contains("Accept: application/json"), !isRefused && !row.contains("request"));
        QCOMPARE(head.contains("Content-Type: application/json"), row.contains("body"));
        QCOMPARE(request.section("\r\n\r\n", 1), text("body"));
    }

    void sendsALargeBody()
    {
        RawServer server(good);
        useAddress(server.url());
        const QString large(3000000, 'x');
        QCOMPARE(send(Manager::Post, {}, {{"large", large}}).order, QStringList("finished"));
        const QByteArray request = server.lastRequest();
        QVERIFY(request.endsWith("\r\n\r\n{\"large\":\"" + large.toLatin1() + "\"}"));
        QVERIFY(!request.contains("\r\nExpect:"));
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
    }

    // What was answered takes nothing with it of what reuses its memory.
    void forgetsAnAnsweredReply()
    {
        QSemaphore mayAnswer(20);
        RawServer server([&](QSslSocket &socket, const QByteArray &) {
            mayAnswer.acquire();
            socket.write(good);
        });
        useAddress(server.url());
        QVector<Reply *> replies;
        int finished = 0;
        for (int i = 0; i < 40; ++i) {
            if (i == 20)
                QTRY_COMPARE(finished, 20);
            replies << requestStatus();
            connect(replies.last(), &Reply::finished, this, [&] { ++finished; });
        }
        qDeleteAll(replies.mid(0, 20));
        mayAnswer.release(20);
        QTRY_COMPARE(finished, 40);
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
        const ReplyOutcome outcome = send();
        QCOMPARE(outcome.code, Error::NoError);
        QCOMPARE(outcome.map.value("result").toMap().value("n").toLongLong(), 12345678901);
        configure({{"cloudEnvironment", ""}});
        QCOMPARE(send().code, Error::ConfigDataError);
    }

    void refusesAWrongConfigurationAsAWhole()
    {
        const QVariantMap before = manager->configData();
        const QString lines = textOf(QFINDTESTDATA("wrong-configurations.txt"));
        for (const QString &wrong : lines.split('\n', Qt::SkipEmptyParts)) {
            const QString json = "{\"other\":\"good\"," + wrong + '}';
            const QJsonObject data = QJsonDocument::fromJson(json.toUtf8()).object();
            Reply *reply = manager->setConfigData(data.toVariantMap(), {});
            QVERIFY2(reply->status() == Error::ConfigDataError, qPrintable(wrong));
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
