#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <thread>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;
using Nubelo::Manager;
using Nubelo::Reply;

Q_DECLARE_METATYPE(Script)

namespace {

// Runs a function on the logging thread whenever a library line starts with a text.
class LineHook
{
public:
    LineHook(const QString &start, std::function<void()> run)
    {
        s_start = start;
        s_run = std::move(run);
        s_previous = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
                s_previous(type, context, text);
                if (s_run && text.startsWith(s_start))
                    s_run();
            });
    }
    ~LineHook()
    {
        qInstallMessageHandler(s_previous);
        s_run = nullptr;
    }

private:
    static inline QString s_start;
    static inline std::function<void()> s_run;
    static inline QtMessageHandler s_previous = nullptr;
};

// The lines of one wait, without the thread that ends some of them.
QStringList withoutThreads(QStringList lines)
{
    for (QString &line : lines)
        line = line.section(" QThread(", 0, 0).trimmed();
    return lines;
}

} // namespace

/// The wait of a request on every schedule of the two threads that can be forced.
class tst_Schedules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void survivesEveryOrderOfTheThreads_data();
    void survivesEveryOrderOfTheThreads();
    void neverMissesAnImmediateOutcome_data();
    void neverMissesAnImmediateOutcome();
    void servesCallersOnOtherThreads();
    void letsSlotsCallAgain();
    void endsWithTheApplicationsQuit();
    void endsWithItsOwnDestruction();
    void refusesTheCloudThread();

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportNubelo> client;
    QVariant result;

    PassportCommunityError request(QVariant &into)
    {
        return client->requestNubelo(into, "status", Manager::Get, Manager::NoEncrypt);
    }
};

void tst_Schedules::init()
{
    cloud.reset();
    client = std::make_unique<PassportNubelo>();
    result = "before";
}

void tst_Schedules::cleanup()
{
    client.reset();
    QCOMPARE(Reply::alive.load(), 0);
}

void tst_Schedules::survivesEveryOrderOfTheThreads_data()
{
    QTest::addColumn<QString>("order");
    QTest::newRow("caller held behind the creation until the outcome was emitted") << "caller held";
    QTest::newRow("cloud held with the reply made, the caller still in the invocation")
        << "creation held";
    QTest::newRow("cloud held before the emission until the caller waits") << "emission held";
    QTest::newRow("caller takes the end by processEvents() before it waits") << "swallowed";
    QTest::newRow("emitted inside the caller's own wait of a slot") << "slot";
}

void tst_Schedules::survivesEveryOrderOfTheThreads()
{
    QFETCH(QString, order);
    Gate gate, emitted;
    Script script;
    if (order == "creation held")
        script.atCreation = [&](Reply *) { gate.hold(); };
    script.then([&](Reply *reply) {
        if (order == "emission held" || order == "slot")
            gate.hold();
        Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
        Q_EMIT reply->finished({{"result", order}});
        emitted.open();
    });
    cloud.play(script);

    const LogCapture log;
    std::unique_ptr<LineHook> hook;
    if (order == "caller held" || order == "swallowed") {
        hook = std::make_unique<LineHook>("replyConnect current thread-1", [&] {
            emitted.hold();
            if (order == "swallowed")
                QCoreApplication::processEvents();
        });
    } else if (order == "creation held") {
        std::thread([&] {
            gate.awaitArrival();
            gate.open();
        }).detach();
    } else {
        QTimer::singleShot(0, client.get(), [&] {
            gate.awaitArrival();
            gate.open();
            if (order == "slot")
                emitted.hold();
        });
    }
    QCOMPARE(request(result).errorCode, Code::EC_ConnectionRefusedError);
    QCOMPARE(result, QVariant(order));
    // Whatever came first, the lines stand in one order.
    QCOMPARE(withoutThreads(log.lines()).mid(0, 2),
             QStringList(
                 {"debug replyConnect current thread-1", "debug replyConnect current thread-2.2"}));
}

void tst_Schedules::neverMissesAnImmediateOutcome_data()
{
    QTest::addColumn<Script>("script");
    QTest::newRow("finished") << Script::answering(1);
    QTest::newRow("error in the same turn") << Script().then([](Reply *reply) {
        Q_EMIT reply->errorOccurred(Nubelo::Error::Refused);
        Q_EMIT reply->finished({{"result", 1}});
    });
    QTest::newRow("reply in error") << Script::erroneous(Nubelo::Error::Refused);
}

void tst_Schedules::neverMissesAnImmediateOutcome()
{
    QFETCH(Script, script);
    const LogCapture quiet;
    QLoggingCategory::setFilterRules("velqor.passport.lib.debug=false");
    constexpr int times = 10000;
    int good = 0;
    for (int i = 0; i < times; ++i) {
        cloud.play(script);
        QVariant received = 1;
        request(received);
        good += received == 1;
    }
    QLoggingCategory::setFilterRules({});
    QCOMPARE(good, times);
}

void tst_Schedules::servesCallersOnOtherThreads()
{
    const LogCapture quiet;
    std::atomic<int> good{0};
    constexpr int callers = 4, each = 500;
    std::vector<std::thread> threads;
    for (int caller = 0; caller < callers; ++caller) {
        threads.emplace_back([&] {
            // A thread without an event loop of its own.
            PassportNubelo own;
            for (int i = 0; i < each; ++i) {
                QVariant received = "before";
                own.requestNubelo(received, "status", Manager::Get, Manager::NoEncrypt);
                good += received.isNull();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good.load(), callers * each);

    // One client, its callers taking turns.
    for (int turn = 0; turn < callers; ++turn) {
        cloud.play(Script::answering(turn));
        std::thread([&] { request(result); }).join();
        QCOMPARE(result, QVariant(turn));
    }
}

void tst_Schedules::letsSlotsCallAgain()
{
    constexpr int depth = 20;
    QVector<int> ended;
    const LogCapture quiet;
    // Each wait lets its own outcome come and then calls again: every outer outcome is there before
    // the inner call is made, and still the innermost wait ends first.
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
        QVariant received;
        request(received);
        QCOMPARE(received, QVariant(level));
        ended.append(level);
    };
    nested(1);
    QVector<int> innermostFirst;
    for (int level = depth; level > 0; --level)
        innermostFirst.append(level);
    QCOMPARE(ended, innermostFirst);
}

void tst_Schedules::endsWithTheApplicationsQuit()
{
    Gate release;
    cloud.play(Script().then([&](Reply *reply) {
        release.hold();
        Q_EMIT reply->finished({{"result", "too late"}});
    }));
    PassportCommunityError first, second;
    QTimer::singleShot(0, client.get(), [&] {
        QTimer::singleShot(0, client.get(), [] { QCoreApplication::exit(3); });
        first = request(result);
        release.open();
        // A call made while the application is going down ends the same way, every time.
        cloud.play(Script::silent());
        second = request(result);
    });
    QCOMPARE(QCoreApplication::exec(), 3);
    QCOMPARE(first.errorCode, Code::EC_OperationCanceledError);
    QCOMPARE(first.errorName, "EC_OperationCanceledError");
    QCOMPARE(second.errorCode, Code::EC_OperationCanceledError);
    QCOMPARE(result, QVariant("before"));

    // The library is as good as new for an application that goes on.
    cloud.play(Script::answering("again"));
    QCOMPARE(request(result).errorCode, Code::NoError);
    QCOMPARE(result, QVariant("again"));
}

void tst_Schedules::endsWithItsOwnDestruction()
{
    cloud.play(Script::silent());
    QTimer::singleShot(0, qApp, [this] { client.reset(); });
    QCOMPARE(request(result).errorCode, Code::EC_IsAborted);
}

void tst_Schedules::refusesTheCloudThread()
{
    PassportCommunityError inner;
    cloud.play(Script().then([&](Reply *reply) {
        QVariant ignored;
        inner = request(ignored);
        Q_EMIT reply->finished({});
    }));
    const LogCapture quiet;
    QCOMPARE(request(result).errorCode, Code::NoError);
    QCOMPARE(inner.errorCode, Code::EC_ProtocolInvalidOperationError);
}

QTEST_GUILESS_MAIN(tst_Schedules)
#include "tst_schedules.moc"
