#include "support/Rows.h"
#include "support/ScriptedClient.h"

using Nubelo::Manager;
using Nubelo::Reply;

Q_DECLARE_METATYPE(Script)

/// requestNubelo: what goes to the cloud, and what every outcome becomes.
class tst_RequestCore : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void handsEveryPartToTheCloud();
    void isInvokableByName();
    void namesItsParameters();
    void bringsEveryOutcome_data();
    void bringsEveryOutcome();
    void ignoresSignalsAfterTheEnd();
    void configuresThroughTheSameWait();
};

void tst_RequestCore::handsEveryPartToTheCloud()
{
    const QVariantMap body{{"in", "body"}}, params{{"in", "params"}}, headers{{"in", "headers"}};
    client->requestNubelo(data, "n", Manager::Get, Manager::NoEncrypt, body, params, headers, "s");
    client->requestNubelo(data, "n", "/x", Manager::Get, Manager::NoEncrypt, headers, params, body,
                          "s");
    client->requestNubelo(data, "n", body, params, headers, "s");
    client->requestNubelo(data, "n", Manager::Get, body, params, headers); // an address

    const auto calls = cloud.calls();
    const char *operations[] = {"request/6", "request/7", "request/3", "request/3"};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto &call = calls[i];
        QCOMPARE(call.operation, operations[i]);
        QCOMPARE(call.name, "n");
        QCOMPARE(call.type, i < 2 ? int(Manager::Get) : -1);
        QCOMPARE(call.encryption, i < 2 ? 0 : -1);
        QCOMPARE(call.authentication, i < 2 ? 0 : -1);
        QCOMPARE(call.appendToUrl, i == 1 ? "/x" : "");
        QCOMPARE(call.extra, QVariantMap());
        QVERIFY(call.thread != QThread::currentThread());
        QVariantMap envelope{{"body", body}, {"params", params}, {"headers", headers}};
        if (i < 3)
            envelope.insert("source", "s");
        QCOMPARE(call.envelope, envelope);
    }
}

void tst_RequestCore::isInvokableByName()
{
    for (const char *type : {"VelqorPassPort::PassportCommunityError", "PassportCommunityError"}) {
        cloud.play(Script::answering(type));
        Record record{Code::UrlErr, {}, {}, {}};
        QVERIFY2(QMetaObject::invokeMethod(client.get(), "requestNubelo",
                                           QGenericReturnArgument(type, &record),
                                           Q_ARG(QVariant &, data), Q_ARG(QString, "n")),
                 type);
        QCOMPARE(record.errorCode, Code::NoError);
        QCOMPARE(data, QVariant(type));
    }
}

// Hosts find operations by name; of each overload the longest form counts, moc makes the others.
void tst_RequestCore::namesItsParameters()
{
    QStringList forms;
    const QMetaObject *meta = client->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        QVERIFY2(method.access() == QMetaMethod::Public, method.methodSignature());
        if (!(method.attributes() & QMetaMethod::Cloned))
            forms << method.name() + '(' + method.parameterNames().join(' ') + ')';
    }
    forms.sort();
    const QStringList expected{
        "configData()",
        "getCurrentPhoneArea(phoneArea)",
        "getNetByStatus()",
        "isUserExisted(source captcha username phoneArea)",
        "linkUuid(prefix identifier)",
        "logIn(username password phoneArea userInfo isRemember)",
        "logOut()",
        "replyConnect(reply name result)",
        "reqCaptcha(data width height expire length source uSource)",
        "reqCodeLogIn(username phoneArea captcha validCode userInfo source)",
        "reqCountries(countries)",
        "reqCurrentCountry(country cCountryInfoMap mode)",
        "reqGetPrivacy(privacy language oemurl source target)",
        "reqGetUserInfo(map sourceStr)",
        "reqResetPassword(username phoneArea captcha validCode password source)",
        "reqValidCode(data captcha username phoneArea lang source uSource)",
        "requestNubelo(result name appendToUrl requestType encryptType headers params body source)",
        "requestNubelo(result name body params headers source)",
        "requestNubelo(result name requestType encryptType body params headers source)",
        "requestNubelo(result url requestType body params headers)",
        "setConfigData(data)",
        "setConfigData(environment)",
        "setConfigPath(path)",
        "setErrorCode(errorCode)",
        "setToken(token)",
        "setUserInfo(info)",
        "token()"};
    QCOMPARE(forms, expected);
}

void tst_RequestCore::bringsEveryOutcome_data()
{
    // The lines are those behind the wait's first.
    const auto row = columns<Script, int, QString, QVariant, QStringList>("script", "code", "name",
                                                                          "received", "lines");
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
    const bool onCloud = lines.size() > 1;
    for (const auto &message : log.messages().mid(1))
        QCOMPARE(message.thread == cloud.lastCall().thread, onCloud);
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
