#include "support/Rows.h"
#include "support/ScriptedClient.h"

#include <QtCore/QMetaMethod>

using Nubelo::Manager;
using Nubelo::Reply;

Q_DECLARE_METATYPE(Script)

/// requestNubelo: what goes to the cloud, and what every outcome becomes.
class tst_RequestCore : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void handsEveryPartToTheCloud_data();
    void handsEveryPartToTheCloud();
    void isInvokableByName();
    void bringsEveryOutcome_data();
    void bringsEveryOutcome();
    void runsHandlersOnTheCloudThread();
    void ignoresSignalsAfterTheEnd();
    void configuresThroughTheSameWait();
};

void tst_RequestCore::handsEveryPartToTheCloud_data()
{
    const auto row = columns<int, QString>("overload", "operation");
    row("name and types", 1, "request/6");
    row("name alone", 2, "request/3");
    row("name and text for the URL", 3, "request/7");
    row("address drops its type", 4, "request/3");
}

void tst_RequestCore::handsEveryPartToTheCloud()
{
    QFETCH(int, overload);
    const QVariantMap body{{"in", "body"}}, params{{"in", "params"}}, headers{{"in", "headers"}};
    if (overload == 1)
        client->requestNubelo(data, "n", Manager::Get, Manager::NoEncrypt, body, params, headers,
                              "s");
    else if (overload == 2)
        client->requestNubelo(data, "n", body, params, headers, "s");
    else if (overload == 3)
        client->requestNubelo(data, "n", "/x", Manager::Get, Manager::NoEncrypt, headers, params,
                              body, "s");
    else
        client->requestNubelo(data, "n", Manager::Get, body, params, headers);

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
    QVariantMap envelope{{"body", body}, {"params", params}, {"headers", headers}};
    if (overload != 4)
        envelope.insert("source", "s");
    QCOMPARE(call.envelope, envelope);
}

// The longest form of each method with its parameter names; the shorter ones are moc's.
void tst_RequestCore::isInvokableByName()
{
    QStringList forms;
    const QMetaObject *meta = client->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (!(method.attributes() & QMetaMethod::Cloned))
            forms << method.name() + ' ' + method.parameterNames().join(' ');
        QVERIFY2(method.access() == QMetaMethod::Public, method.methodSignature().constData());
    }
    forms.sort();
    QCOMPARE(forms, QStringList({
                        "configData ",
                        "getCurrentPhoneArea phoneArea",
                        "getNetByStatus ",
                        "isUserExisted source captcha username phoneArea",
                        "linkUuid prefix identifier",
                        "logIn username password phoneArea userInfo isRemember",
                        "logOut ",
                        "replyConnect reply name result",
                        "reqCaptcha data width height expire length source uSource",
                        "reqCodeLogIn username phoneArea captcha validCode userInfo source",
                        "reqCountries countries",
                        "reqCurrentCountry country cCountryInfoMap mode",
                        "reqGetPrivacy privacy language oemurl source target",
                        "reqGetUserInfo map sourceStr",
                        "reqResetPassword username phoneArea captcha validCode password source",
                        "reqValidCode data captcha username phoneArea lang source uSource",
                        "requestNubelo result name appendToUrl requestType encryptType headers "
                        "params body source",
                        "requestNubelo result name body params headers source",
                        "requestNubelo result name requestType encryptType body params headers "
                        "source",
                        "requestNubelo result url requestType body params headers",
                        "setConfigData data",
                        "setConfigData environment",
                        "setConfigPath path",
                        "setErrorCode errorCode",
                        "setToken token",
                        "setUserInfo info",
                        "token ",
                    }));

    cloud.play(Script::answering("by name"));
    Record record{Code::UrlErr, {}, {}, {}};
    QVERIFY(QMetaObject::invokeMethod(client.get(), "requestNubelo",
                                      Q_RETURN_ARG(VelqorPassPort::PassportCommunityError, record),
                                      Q_ARG(QVariant &, data), Q_ARG(QString, "n")));
    QCOMPARE(record.errorCode, Code::NoError);
    QCOMPARE(data, QVariant("by name"));
}

void tst_RequestCore::bringsEveryOutcome_data()
{
    QTest::addColumn<Script>("script");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("received");
    QTest::addColumn<QStringList>("lines"); // behind the wait's first
    const auto row = [](const char *tag, const Script &script, Code::ErrorCode code,
                        const QString &name, const QVariant &received, const QStringList &lines) {
        QTest::newRow(tag) << script << int(code) << name << received << lines;
    };
    const auto finish = [](const char *status, const QVariant &value) {
        return [=](Reply *reply) {
            Q_EMIT reply->finished({{"status", status}, {"result", value}});
        };
    };
    const auto refuse = [](Reply *reply) { Q_EMIT reply->errorOccurred(Nubelo::Error::Refused); };
    const auto complain = [](Reply *reply) {
        Q_EMIT reply->sslErrorOccurred({QSslError(QSslError::CertificateExpired)});
    };
    const auto doing = [](const auto &...steps) {
        Script script;
        (script.then(steps), ...);
        return script;
    };
    const QString finished = "debug replyConnect current thread-2.1";
    const QStringList yes{finished, "debug request success true"};
    const QStringList no{finished, "debug request success false"};
    const QStringList error{"debug replyConnect current thread-2.2",
                            "debug erro \"status\" Refused"};
    const QStringList tls{"debug replyConnect current thread-2.3",
                          "debug ssl error (\"The certificate has expired\")"};
    const auto refused = Code::EC_ConnectionRefusedError;
    const QString refusedName = "EC_ConnectionRefusedError";

    row("ok", doing(finish("ok", 7)), Code::NoError, "", 7, yes);
    row("empty map", Script::finishing({}), Code::NoError, "", {}, no);
    row("failed", doing(finish("fail", "pwderr")), Code::AuthErr, "JsonErr", "pwderr", yes);
    row("failed with a number", doing(finish("fail", 3)), Code::JsonErr, "3", 3, yes);
    row("failed without result", doing(finish("fail", {})), Code::NoError, "", {}, no);
    row("failed with a null text", doing(finish("fail", QString())), Code::NoError, "", QString(),
        no);
    row("failed in capitals", doing(finish("FAIL", "pwderr")), Code::NoError, "", "pwderr", yes);
    row("no reply", Script::withoutReply(), Code::UnknownErr, "unknownErr", "before",
        {"debug reply is nullptr"});
    row("reply in error", Script::erroneous(Nubelo::Error::Gone), Code::EC_ContentGoneError,
        "EC_ContentGoneError", "before", {"debug request error Gone"});
    row("error, then nothing", Script::failing(Nubelo::Error::Refused), refused, refusedName, {},
        error + no);
    row("error, then ok", doing(refuse, finish("ok", "late")), refused, refusedName, "late",
        error + yes);
    row("error, then failed", doing(refuse, finish("fail", "dberr")), Code::DbErr, "dbErr", "dberr",
        error + yes);
    row("TLS errors change nothing", doing(complain, finish("ok", 1)), Code::NoError, "", 1,
        tls + yes);
}

void tst_RequestCore::bringsEveryOutcome()
{
    QFETCH(Script, script);
    QFETCH(QStringList, lines);
    cloud.play(script);
    const LogCapture log;
    const Record record = request();
    QTEST(int(record.errorCode), "code");
    QTEST(record.errorName, "name");
    QTEST(data, "received");
    QCOMPARE(withoutThreads(log.lines()),
             QStringList("debug replyConnect current thread-1") + lines);
}

void tst_RequestCore::runsHandlersOnTheCloudThread()
{
    cloud.play(Script::failing(Nubelo::Error::TimedOut));
    const LogCapture log;
    QCOMPARE(request().errorCode, Code::NetErr);
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
    QCOMPARE(request().errorCode, Code::NoError);
    QCOMPARE(data, QVariant("first"));
    late.hold();
    QCOMPARE(log.lines().size(), 3);
}

void tst_RequestCore::configuresThroughTheSameWait()
{
    for (int i = 0; i < 3; ++i)
        cloud.play(Script::refusing("illegalerr"));
    QCOMPARE(client->setConfigPath("/p").errorCode, Code::IllegalErr);
    QCOMPARE(client->setConfigData(QVariantMap{{"a", 1}}).errorCode, Code::IllegalErr);
    QCOMPARE(client->setConfigData(QString("e")).errorCode, Code::IllegalErr);

    const auto calls = cloud.calls();
    QCOMPARE(calls[0].operation, "setConfigPath");
    QCOMPARE(calls[0].name, "/p");
    QCOMPARE(calls[1].envelope, (QVariantMap{{"a", 1}}));
    QCOMPARE(calls[2].envelope, (QVariantMap{{"cloudEnvironment", "e"}}));
    for (const auto &call : calls)
        QCOMPARE(call.thread, QThread::currentThread());
}

QTEST_GUILESS_MAIN(tst_RequestCore)
#include "tst_requestcore.moc"
