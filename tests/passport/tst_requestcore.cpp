// SPDX-License-Identifier: MIT
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
    void handsEveryPartToTheCloud()
    {
        const QVariantMap body{{"in", "body"}}, params{{"in", "params"}}, headers{{"in", "heads"}};
        client->requestNubelo(data, "n", Manager::Get, Manager::NoEncrypt, body, params, headers,
                              "s");
        client->requestNubelo(data, "n", "/x", Manager::Get, Manager::NoEncrypt, headers, params,
                              body, "s");
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

    void isInvokableByName()
    {
        for (const char *type :
             {"VelqorPassPort::PassportCommunityError", "PassportCommunityError"}) {
            cloud.play(Script::answering(type));
            Record record{Code::UrlErr, {}, {}, {}};
            QVERIFY2(QMetaObject::invokeMethod(client.get(), "requestNubelo",
                                               QGenericReturnArgument(type, &record),
                                               Q_ARG(QVariant &, data), Q_ARG(QString, "n")),
                     type);
            QCOMPARE(record.errorCode, Code::NoError);
            QCOMPARE(data, QVariant(type));
            // Queued arguments are copied by the name of their type.
            QVERIFY2(QMetaType::type(type) != QMetaType::UnknownType, type);
        }
    }

    // Hosts find operations by name; of each overload the longest form counts, moc makes the
    // others.
    void namesItsParameters()
    {
        QStringList forms;
        const QMetaObject *meta = client->metaObject();
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            const QMetaMethod method = meta->method(i);
            QVERIFY2(method.access() == QMetaMethod::Public, method.methodSignature());
            if (!(method.attributes() & QMetaMethod::Cloned))
                forms << method.name() + '(' + method.parameterNames().join(' ') + ")\n";
        }
        forms.sort();
        QCOMPARE(forms.join(""), textOf(QFINDTESTDATA("invokables.txt")));
    }

    void bringsEveryOutcome_data()
    {
        const auto row =
            columns<Script, int, QString, QVariant>("script", "code", "name", "received");
        const auto finish = [](const char *status, const QVariant &value) {
            return [=](Reply *reply) {
                Q_EMIT reply->finished({{"status", status}, {"result", value}});
            };
        };
        const auto refuse = [](Reply *reply) {
            Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
        };
        const auto doing = [](const auto &...steps) {
            Script script;
            (script.then(steps), ...);
            return script;
        };
        const auto refused = Code::EC_ConnectionRefusedError;
        const QString refusedName = "EC_ConnectionRefusedError";
        row("ok", doing(finish("ok", 7)), Code::NoError, "", 7);
        row("empty map", Script::finishing({}), Code::NoError, "", {});
        row("failed", doing(finish("fail", "pwderr")), Code::AuthErr, "JsonErr", "pwderr");
        row("failed with a number", doing(finish("fail", 3)), Code::JsonErr, "3", 3);
        row("failed without result", doing(finish("fail", {})), Code::NoError, "", {});
        row("failed in capitals", doing(finish("FAIL", "pwderr")), Code::NoError, "", "pwderr");
        row("no reply", Script::withoutReply(), Code::UnknownErr, "unknownErr", "before");
        row("reply in error", Script::erroneous(Nubelo::Error::Gone), Code::EC_ContentGoneError,
            "EC_ContentGoneError", "before");
        row("gone without an answer", doing([](Reply *reply) { reply->deleteLater(); }),
            Code::EC_IsAborted, "EC_IsAborted", "before");
        row("error, then nothing", Script::failing(Nubelo::Error::Refused), refused, refusedName,
            {});
        row("error, then ok", doing(refuse, finish("ok", "late")), refused, refusedName, "late");
        row("error, then failed", doing(refuse, finish("fail", "dberr")), Code::DbErr, "dbErr",
            "dberr");
    }

    void bringsEveryOutcome()
    {
        QFETCH(Script, script);
        cloud.play(script);
        const Record record = request();
        QTEST(int(record.errorCode), "code");
        QTEST(record.errorName, "name");
        QTEST(data, "received");
    }

    void logsEveryStepOnItsThread()
    {
        cloud.play(Script()
                       .then([](Reply *reply) {
                           Q_EMIT reply->sslErrorOccurred(
                               {QSslError(QSslError::CertificateExpired)});
                       })
                       .then([](Reply *reply) {
                           Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
                           Q_EMIT reply->finished({{"result", 1}});
                       }));
        const LogCapture log;
        request();
        QCOMPARE(
            withoutThreads(log.lines()),
            QStringList({"debug replyConnect current thread-1",
                         "debug replyConnect current thread-2.3",
                         "debug ssl error (\"The certificate has expired\")",
                         "debug replyConnect current thread-2.2", "debug erro \"status\" Refused",
                         "debug replyConnect current thread-2.1", "debug request success true"}));
        for (const auto &message : log.messages().mid(1))
            QCOMPARE(message.thread, cloud.lastCall().thread);
    }

    void passesOnWhatTheRequestLibraryThrows()
    {
        Script script;
        script.atCreation = [](Reply *reply) {
            delete reply;
            throw std::bad_alloc();
        };
        cloud.play(script);
        QVERIFY_EXCEPTION_THROWN(request(), std::bad_alloc);
        QCOMPARE(request().errorCode, Code::NoError);
    }

    void ignoresSignalsAfterTheEnd()
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
};

QTEST_GUILESS_MAIN(tst_RequestCore)
#include "tst_requestcore.moc"
