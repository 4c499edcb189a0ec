#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

#include <QtCore/QMetaMethod>
#include <QtTest/QtTest>

#include <thread>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;
using Nubelo::Manager;
using Nubelo::Reply;

Q_DECLARE_METATYPE(Script)

namespace {

// The lines of one wait, without the thread that ends some of them.
QStringList withoutThreads(QStringList lines)
{
    for (QString &line : lines)
        line = line.section(" QThread(", 0, 0).trimmed();
    return lines;
}

} // namespace

/// requestNubelo: what goes to the cloud, and what every outcome becomes.
class tst_RequestCore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void handsEveryPartToTheCloud_data();
    void handsEveryPartToTheCloud();
    void isInvokableByName();
    void bringsEveryOutcome_data();
    void bringsEveryOutcome();
    void runsHandlersOnTheCloudThread();
    void ignoresSignalsAfterTheEnd();
    void waitsThroughAnError();
    void configuresThroughTheSameWait_data();
    void configuresThroughTheSameWait();

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportNubelo> client;
    QVariant result;

    PassportCommunityError request(QVariant &into)
    {
        return client->requestNubelo(into, "status", Manager::Get, Manager::NoEncrypt);
    }
};

void tst_RequestCore::init()
{
    cloud.reset();
    client = std::make_unique<PassportNubelo>();
    result = "before";
}

void tst_RequestCore::cleanup()
{
    client.reset();
    QCOMPARE(Reply::alive.load(), 0);
}

void tst_RequestCore::handsEveryPartToTheCloud_data()
{
    QTest::addColumn<int>("overload");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QStringList>("keys");
    const QStringList four{"body", "headers", "params", "source"};
    QTest::newRow("name and types") << 1 << "request/6" << four;
    QTest::newRow("name alone") << 2 << "request/3" << four;
    QTest::newRow("name and text for the URL") << 3 << "request/7" << four;
    QTest::newRow("address drops its type")
        << 4 << "request/3" << QStringList{"body", "headers", "params"};
}

void tst_RequestCore::handsEveryPartToTheCloud()
{
    QFETCH(int, overload);
    QFETCH(QStringList, keys);
    const QVariantMap body{{"in", "body"}}, params{{"in", "params"}}, headers{{"in", "headers"}};
    if (overload == 1)
        client->requestNubelo(result, "n", Manager::Get, Manager::NoEncrypt, body, params, headers,
                              "s");
    else if (overload == 2)
        client->requestNubelo(result, "n", body, params, headers, "s");
    else if (overload == 3)
        client->requestNubelo(result, "n", "/x", Manager::Get, Manager::NoEncrypt, headers, params,
                              body, "s");
    else
        client->requestNubelo(result, "n", Manager::Get, body, params, headers);

    const auto call = cloud.lastCall();
    const bool typed = overload == 1 || overload == 3;
    QTEST(call.operation, "operation");
    QCOMPARE(call.name, "n");
    QCOMPARE(call.type, typed ? int(Manager::Get) : -1);
    QCOMPARE(call.encryption, typed ? 0 : -1);
    QCOMPARE(call.authentication, typed ? 0 : -1);
    QCOMPARE(call.appendToUrl, overload == 3 ? "/x" : "");
    QCOMPARE(call.extra, QVariantMap());
    QVERIFY(call.thread != QThread::currentThread());
    QCOMPARE(QStringList(call.envelope.keys()), keys);
    for (const QString key : {"body", "params", "headers"})
        QCOMPARE(call.envelope.value(key), QVariant(QVariantMap{{"in", key}}));
    QCOMPARE(call.envelope.value("source"), overload == 4 ? QVariant() : QVariant("s"));
}

void tst_RequestCore::isInvokableByName()
{
    cloud.play(Script::answering("by name"));
    PassportCommunityError record{Code::UrlErr, {}, {}, {}};
    QVERIFY(QMetaObject::invokeMethod(client.get(), "requestNubelo",
                                      Q_RETURN_ARG(VelqorPassPort::PassportCommunityError, record),
                                      Q_ARG(QVariant &, result), Q_ARG(QString, "n")));
    QCOMPARE(record.errorCode, Code::NoError);
    QCOMPARE(result, QVariant("by name"));
    QCOMPARE(cloud.lastCall().operation, "request/3");

    // The longest form of each overload with its parameter names; the shorter ones are moc's.
    QStringList forms;
    const QMetaObject *meta = client->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.name() == "requestNubelo" && !(method.attributes() & QMetaMethod::Cloned))
            forms << method.parameterNames().join(' ');
        QVERIFY2(method.access() == QMetaMethod::Public, method.methodSignature().constData());
    }
    QCOMPARE(
        forms,
        QStringList({"result name requestType encryptType body params headers source",
                     "result name body params headers source",
                     "result name appendToUrl requestType encryptType headers params body source",
                     "result url requestType body params headers"}));
}

void tst_RequestCore::bringsEveryOutcome_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("received");
    QTest::addColumn<QStringList>("lines");

    const QString one = "debug replyConnect current thread-1",
                  finished = "debug replyConnect current thread-2.1";
    const QString yes = "debug request success true", no = "debug request success false";
    const auto status = [](const char *text, const QVariant &value) {
        return Script::finishing({{"status", text}, {"result", value}});
    };

    QTest::newRow("ok") << status("ok", 7) << int(Code::NoError) << "" << QVariant(7)
                        << QStringList{one, finished, yes};
    QTest::newRow("empty map") << Script::finishing({}) << int(Code::NoError) << "" << QVariant()
                               << QStringList{one, finished, no};
    QTest::newRow("failed") << status("fail", "pwderr") << int(Code::AuthErr) << "JsonErr"
                            << QVariant("pwderr") << QStringList{one, finished, yes};
    QTest::newRow("failed with a number") << status("fail", 3) << int(Code::JsonErr) << "3"
                                          << QVariant(3) << QStringList{one, finished, yes};
    QTest::newRow("failed without result") << status("fail", QVariant()) << int(Code::NoError) << ""
                                           << QVariant() << QStringList{one, finished, no};
    QTest::newRow("failed with a null text")
        << status("fail", QString()) << int(Code::NoError) << "" << QVariant(QString())
        << QStringList{one, finished, no};
    QTest::newRow("failed in capitals") << status("FAIL", "pwderr") << int(Code::NoError) << ""
                                        << QVariant("pwderr") << QStringList{one, finished, yes};
    QTest::newRow("no reply") << Script::withoutReply() << int(Code::UnknownErr) << "unknownErr"
                              << QVariant("before") << QStringList{one, "debug reply is nullptr"};
    QTest::newRow("reply in error")
        << Script::erroneous(Nubelo::Error::Gone) << int(Code::EC_ContentGoneError)
        << "EC_ContentGoneError" << QVariant("before")
        << QStringList{one, "debug request error Gone"};
    const QStringList error{one, "debug replyConnect current thread-2.2",
                            "debug erro \"status\" Refused"};
    QTest::newRow("error, then nothing")
        << Script::failing(Nubelo::Error::Refused) << int(Code::EC_ConnectionRefusedError)
        << "EC_ConnectionRefusedError" << QVariant() << error + QStringList{finished, no};
    Script then =
        Script().then([](Reply *reply) { Q_EMIT reply->errorOccurred(Nubelo::Error::Refused); });
    Script thenOk = then, thenFailed = then;
    thenOk.then([](Reply *reply) {
        Q_EMIT reply->finished({{"status", "ok"}, {"result", "late"}});
    });
    thenFailed.then([](Reply *reply) {
        Q_EMIT reply->finished({{"status", "fail"}, {"result", "dberr"}});
    });
    QTest::newRow("error, then ok")
        << thenOk << int(Code::EC_ConnectionRefusedError) << "EC_ConnectionRefusedError"
        << QVariant("late") << error + QStringList{finished, yes};
    QTest::newRow("error, then failed") << thenFailed << int(Code::DbErr) << "dbErr"
                                        << QVariant("dberr") << error + QStringList{finished, yes};
    Script ssl = Script().then([](Reply *reply) {
        Q_EMIT reply->sslErrorOccurred({QSslError(QSslError::CertificateExpired)});
        Q_EMIT reply->finished({{"status", "ok"}, {"result", 1}});
    });
    QTest::newRow("TLS errors change nothing")
        << ssl << int(Code::NoError) << "" << QVariant(1)
        << QStringList{one, "debug replyConnect current thread-2.3",
                       "debug ssl error (\"The certificate has expired\")", finished, yes};
}

void tst_RequestCore::bringsEveryOutcome()
{
    QFETCH(Script, script);
    cloud.play(script);
    const LogCapture log;
    const PassportCommunityError record = request(result);
    QTEST(int(record.errorCode), "code");
    QTEST(record.errorName, "name");
    QTEST(result, "received");
    QTEST(withoutThreads(log.lines()), "lines");
}

void tst_RequestCore::runsHandlersOnTheCloudThread()
{
    cloud.play(Script::failing(Nubelo::Error::TimedOut));
    const LogCapture log;
    QCOMPARE(request(result).errorCode, Code::NetErr);
    const QThread *cloudThread = cloud.lastCall().thread;
    for (const auto &message : log.messages())
        QCOMPARE(message.thread == cloudThread, !message.text.contains("thread-1"));
}

void tst_RequestCore::ignoresSignalsAfterTheEnd()
{
    Gate late;
    cloud.play(Script().then([&](Reply *reply) {
        // In the same emission, behind the client's own handler.
        QObject::connect(reply, &Reply::finished, reply, [reply] {
            Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
            Q_EMIT reply->sslErrorOccurred({});
        });
        Q_EMIT reply->finished({{"result", "first"}});
        Q_EMIT reply->finished({{"status", "fail"}, {"result", "dberr"}});
        late.open();
    }));
    const LogCapture log;
    const PassportCommunityError record = request(result);
    QCOMPARE(record.errorCode, Code::NoError);
    QCOMPARE(result, QVariant("first"));
    late.hold();
    QCOMPARE(log.lines().size(), 3);
}

void tst_RequestCore::waitsThroughAnError()
{
    Gate beforeEnd;
    cloud.play(Script()
                   .then([](Reply *reply) { Q_EMIT reply->errorOccurred(Nubelo::Error::Refused); })
                   .then([&](Reply *reply) {
                       beforeEnd.hold();
                       Q_EMIT reply->finished({});
                   }));
    bool waiting = false;
    std::thread opener([&] {
        beforeEnd.awaitArrival();
        // Only a caller that still waits can run this.
        QMetaObject::invokeMethod(
            client.get(),
            [&] {
                waiting = true;
                beforeEnd.open();
            },
            Qt::QueuedConnection);
    });
    QCOMPARE(request(result).errorCode, Code::EC_ConnectionRefusedError);
    opener.join();
    QVERIFY(waiting);
}

void tst_RequestCore::configuresThroughTheSameWait_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<int>("code");
    QTest::newRow("accepted") << Script::answering(1) << int(Code::NoError);
    QTest::newRow("refused") << Script::refusing("illegalerr") << int(Code::IllegalErr);
    QTest::newRow("already in error")
        << Script::erroneous(Nubelo::Error::Unknown) << int(Code::NetErr);
    QTest::newRow("no reply") << Script::withoutReply() << int(Code::UnknownErr);
}

void tst_RequestCore::configuresThroughTheSameWait()
{
    QFETCH(Script, script);
    QFETCH(int, code);
    const QVariantMap data{{"a", 1}};
    for (int i = 0; i < 3; ++i)
        cloud.play(script);
    QCOMPARE(int(client->setConfigPath("/p").errorCode), code);
    QCOMPARE(int(client->setConfigData(data).errorCode), code);
    QCOMPARE(int(client->setConfigData(QString()).errorCode), code);

    const auto calls = cloud.calls();
    QCOMPARE(calls[0].operation, "setConfigPath");
    QCOMPARE(calls[0].name, "/p");
    QCOMPARE(calls[1].envelope, data);
    QCOMPARE(calls[2].envelope, (QVariantMap{{"cloudEnvironment", ""}}));
    for (const auto &call : calls) {
        QCOMPARE(call.thread, QThread::currentThread());
        QCOMPARE(call.extra, QVariantMap());
    }
}

QTEST_GUILESS_MAIN(tst_RequestCore)
#include "tst_requestcore.moc"
