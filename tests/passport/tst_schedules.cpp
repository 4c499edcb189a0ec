// SPDX-License-Identifier: MIT
#include "common/RunOnThread_p.h"
#include "support/Rows.h"
#include "support/ScriptedClient.h"
#include "support/Threads.h"

#include <QtCore/QTimer>

#include <thread>

using Nubelo::Manager;
using Nubelo::Reply;
using VelqorPassPort::PassportNubelo;

Q_DECLARE_METATYPE(Script)

/// The wait of a request on every schedule of the two threads that can be forced.
class tst_Schedules : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void survivesEveryOrderOfTheThreads_data()
    {
        const auto row = columns<QString>("order");
        row("outcome emitted while its receiver connects", "at once");
        row("cloud held with the reply made, the caller still in the invocation", "creation held");
        row("cloud held before the emission until the caller waits", "emission held");
        row("emitted inside the caller's own wait of a slot, which takes the end", "slot");
    }

    void survivesEveryOrderOfTheThreads()
    {
        QFETCH(QString, order);
        Gate gate, emitted;
        const auto emitOutcome = [&](Reply *reply) {
            if (order == "emission held" || order == "slot")
                gate.hold();
            Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
            Q_EMIT reply->finished({{"result", order}});
            emitted.open();
        };
        Script script;
        script.then(emitOutcome);
        if (order == "at once")
            script.atReceiver = emitOutcome;
        if (order == "creation held")
            script.atCreation = [&](Reply *) { gate.hold(); };
        cloud.play(script);

        const LogCapture log;
        bool delivered = false;
        postToThreadOf(client.get(), [&] {
            delivered = true;
            if (order == "emission held" || order == "slot") {
                gate.awaitArrival();
                gate.open();
            }
            if (order == "slot") {
                emitted.hold();
                QCoreApplication::processEvents();
            }
        });
        std::thread opener([&] {
            if (order == "creation held") {
                gate.awaitArrival();
                gate.open();
            }
        });
        QCOMPARE(request().errorCode, Code::EC_ConnectionRefusedError);
        opener.join();
        QCOMPARE(data, QVariant(order));
        QVERIFY(delivered); // what was queued before a call is delivered during it, in any case
        QCOMPARE(withoutThreads(log.lines()).mid(0, 2),
                 QStringList({"debug replyConnect current thread-1",
                              "debug replyConnect current thread-2.2"}));
    }

    void neverMissesAnImmediateOutcome_data()
    {
        const auto row = columns<Script, QVariant>("script", "received");
        row("finished", Script::answering(1), 1);
        const auto finishes = [](Reply *reply) {
            Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
            Q_EMIT reply->finished({{"result", 1}});
        };
        row("error in the same turn", Script().then(finishes), 1);
        row("reply in error", Script::erroneous(Nubelo::Error::Refused), "before");
    }

    void neverMissesAnImmediateOutcome()
    {
        QFETCH(Script, script);
        QFETCH(QVariant, received);
        const LogCapture quiet;
        QLoggingCategory::setFilterRules("velqor.passport.lib.debug=false");
        constexpr int times = 10000;
        int good = 0;
        for (int i = 0; i < times; ++i) {
            cloud.play(script);
            data = "before";
            request();
            good += data == received;
        }
        QLoggingCategory::setFilterRules({});
        QCOMPARE(good, times);
    }

    void servesCallersOnOtherThreads()
    {
        const LogCapture quiet;
        std::atomic<int> good{0};
        constexpr int callers = 4, each = 500;
        inThreads(callers, [&](int) {
            PassportNubelo own;
            for (int i = 0; i < each; ++i) {
                QVariant received = "before";
                own.requestNubelo(received, "status", Manager::Get, Manager::NoEncrypt);
                good += received.isNull();
            }
        });
        QCOMPARE(good.load(), callers * each);

        // One client, its callers taking turns.
        for (int turn = 0; turn < callers; ++turn) {
            cloud.play(Script::answering(turn));
            std::thread([&] { request(); }).join();
            QCOMPARE(data, QVariant(turn));
        }
    }

    void letsSlotsCallAgain()
    {
        constexpr int depth = 20;
        QVector<int> ended;
        const LogCapture quiet;
        // Each wait lets its own outcome come and then calls again: every outer outcome is there
        // before the inner call is made, and still the innermost wait ends first.
        std::function<void(int)> nested = [&](int level) {
            Gate gate;
            cloud.play(Script().then([&gate, level](Reply *reply) {
                gate.hold();
                Q_EMIT reply->finished({{"result", level}});
            }));
            QTimer::singleShot(0, client.get(), [&, level] {
                gate.awaitArrival();
                gate.open();
                if (level < depth)
                    nested(level + 1);
            });
            request();
            QCOMPARE(data, QVariant(level));
            ended.prepend(level);
        };
        nested(1);
        for (int level = 1; level <= depth; ++level)
            QCOMPARE(ended.value(level - 1), level);
    }

    void isCancelledFromAnywhere_data()
    {
        const auto row = columns<QString>("when");
        row("before the wait", "creation");
        row("by another thread", "wait");
        row("by a slot of the caller", "slot");
    }

    void isCancelledFromAnywhere()
    {
        QFETCH(QString, when);
        const auto cancel = [&](Reply *) { client->cancel(); };
        Script script;
        if (when == "creation")
            script.atCreation = cancel;
        else if (when == "wait")
            script.then(cancel).then([](Reply *) {});
        else
            QTimer::singleShot(0, client.get(), [&] { client->cancel(); });
        cloud.play(script);
        QCOMPARE(request().errorCode, Code::EC_OperationCanceledError);
        QCOMPARE(data, QVariant("before"));
        QTRY_COMPARE(Reply::alive.load(), 0); // the request is dropped while the client lives on
        QCOMPARE(request().errorCode, Code::NoError);
    }

    void endsWithTheApplicationsQuit()
    {
        Gate release, called;
        Record first, second, elsewhere;
        Script silent = Script::silent();
        silent.atCreation = [&](Reply *) { called.open(); };
        cloud.play(silent);
        std::thread other([&] { elsewhere = PassportNubelo().getNetByStatus(); });
        called.hold();
        cloud.play(Script().then([&](Reply *reply) {
            release.hold();
            Q_EMIT reply->finished({{"result", "too late"}});
        }));
        QTimer::singleShot(0, client.get(), [&] {
            QTimer::singleShot(0, client.get(), [] { QCoreApplication::exit(3); });
            first = request();
            release.open();
            // A call made while the application is going down ends the same way, every time, also
            // when its outcome is there before it waits.
            Script immediate;
            immediate.atReceiver = [](Reply *reply) {
                Q_EMIT reply->finished({{"result", "at once"}});
            };
            cloud.play(immediate);
            second = request();
        });
        QCOMPARE(QCoreApplication::exec(), 3);
        other.join();
        QCOMPARE(elsewhere.errorCode, Code::EC_OperationCanceledError);
        QCOMPARE(first.errorCode, Code::EC_OperationCanceledError);
        QCOMPARE(second.errorCode, Code::EC_OperationCanceledError);
        QCOMPARE(data, QVariant("before"));

        // The library is as good as new for an application that goes on.
        cloud.play(Script::answering("again"));
        QCOMPARE(request().errorCode, Code::NoError);
        QCOMPARE(data, QVariant("again"));
    }

    void endsWithItsOwnDestruction()
    {
        cloud.play(Script::silent());
        QTimer::singleShot(0, qApp, [this] { client.reset(); });
        QCOMPARE(request().errorCode, Code::EC_IsAborted);
    }

    void refusesTheCloudThread()
    {
        Record inner;
        cloud.play(Script().then([&](Reply *reply) {
            inner = client->getNetByStatus();
            client->setConfigData(QString("whose reply is released all the same"));
            Q_EMIT reply->finished({});
        }));
        const LogCapture quiet;
        QCOMPARE(request().errorCode, Code::NoError);
        QCOMPARE(inner.errorCode, Code::EC_ProtocolInvalidOperationError);
    }
};

QTEST_GUILESS_MAIN(tst_Schedules)
#include "tst_schedules.moc"
