#include "common/Log.h"
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"

#include <QtCore/QDir>
#include <QtCore/QEventLoop>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <cstdio>
#include <memory>

#include <unistd.h>

using namespace VelqorPassPort;
using Chunks = QList<QByteArray>;

namespace {

const QString bundled = "openweburl/openweburl.app/Contents/MacOS/openweburl";
const QString apart = "openweburl/openweburl";
const QByteArray bothMarkers = "..openLoginURL_token_startABCopenLoginURL_token_end.."
                               "openLoginURL_user_id_start42openLoginURL_user_id_end";
const QByteArray wholeRecord = "userLoadSuccess start: alice secret 86 end";

/// Collects the log, and tells the web tool by the length of a file how many chunks were read.
class ReadingLog
{
public:
    explicit ReadingLog(const QString &acknowledgements)
    {
        path = acknowledgements;
        capture = qInstallMessageHandler(acknowledge);
    }
    QStringList lines() const { return m_log.lines(); }

private:
    static void acknowledge(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        capture(type, context, text);
        QFile file(path);
        if (text.startsWith("resultTest") && file.open(QIODevice::Append))
            file.write(".");
    }

    LogCapture m_log; // puts the handler back too
    static inline QString path;
    static inline QtMessageHandler capture = nullptr;
};

QStringList expected(QString log, const Chunks &chunks, const QString &directory)
{
    log.replace("%DIR%", directory);
    for (int i = 0; i < chunks.size(); ++i)
        log.replace('%' + QString::number(i + 1), chunks.at(i));
    QStringList lines;
    const QStringList texts = log.split('\n', Qt::SkipEmptyParts);
    for (const QString &text : texts)
        lines.append("debug " + text.trimmed());
    return lines;
}

using Flow = std::function<void(Passport &)>;

Flow signIn(bool flag)
{
    return [flag](Passport &passport) { passport.openLoginURL(flag, "/p", "en"); };
}

Flow signUp(bool closes)
{
    return [closes](Passport &passport) { passport.openRegisterURL(closes, "/p", "en"); };
}

Flow forgotten(bool closes)
{
    return [closes](Passport &passport) { passport.openForgitURL(closes, "/p", "en"); };
}

Flow addInfo(bool closes)
{
    return [closes](Passport &passport) { passport.openAddInfoURL("T k", closes, "/p", "en"); };
}

} // namespace

Q_DECLARE_METATYPE(Flow)

/// The web flows with a web tool that records how it was started and writes what it is told.
class tst_WebFlows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void runs_data();
    void runs();
    void needsNoWebTool_data();
    void needsNoWebTool();
    void readsMegabytes();
    void runsInAThreadWithoutEventLoop();
    void letsASlotWaitAndCall();
    void survivesItsDestructionInASlot();
    void endsTheToolByName_data();
    void endsTheToolByName();

private:
    void install(const QString &program, const Chunks &chunks,
                 const QByteArray &firstLine = QByteArray());
    void logSignals(Passport &passport);

    QString acknowledgements;
    std::unique_ptr<PassportDirectory> dir;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<Passport> passport;
};

void tst_WebFlows::init()
{
    dir = std::make_unique<PassportDirectory>();
    dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
    dir->writePassportCfg({{"nubelo", QJsonObject{{"url", "http://base"}}},
                           {"openwebengine", QJsonObject{{"reLoadTimeout", 7}}}});
    recorder = std::make_unique<Recorder>();
    recorder->add("killall");
    recorder->add("taskkill");
    acknowledgements = dir->filePath("acknowledgements");
    passport = std::make_unique<Passport>();
    passport->initial(dir->path());
}

void tst_WebFlows::cleanup()
{
    passport.reset();
    recorder.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// The tool writes each chunk only when the one before has been read.
void tst_WebFlows::install(const QString &program, const Chunks &chunks,
                           const QByteArray &firstLine)
{
    QByteArray script = firstLine;
    for (int i = 0; i < chunks.size(); ++i) {
        const QString file = QStringLiteral("chunk%1").arg(i);
        dir->write(file, chunks.at(i));
        script += "cat '" + QFile::encodeName(dir->filePath(file)) + "'\nuntil [ \"$(wc -c <'" +
                  QFile::encodeName(acknowledgements) + "')\" -gt " + QByteArray::number(i) +
                  " ]; do sleep 0.01; done\n";
    }
    dir->write("acknowledgements", QByteArray());
    recorder->add("openweburl", script);
    const QString path = dir->filePath(program);
    QDir().mkpath(QFileInfo(path).path());
    QVERIFY(QFile::link(recorder->programPath("openweburl"), path));
}

// Between the log lines, so that one list shows the order of both.
void tst_WebFlows::logSignals(Passport &client)
{
    connect(&client, &Passport::tokenReceived,
            [](const QString &token) { qCDebug(log_lp) << "> token" << token; });
    connect(&client, &Passport::userIdReceived,
            [](const QString &userId) { qCDebug(log_lp) << "> user" << userId; });
    connect(&client, &Passport::userLoadSuccess,
            [](const QString &userName, const QString &password, const QString &phoneArea) {
                qCDebug(log_lp) << "> details" << userName << password << phoneArea;
            });
    connect(&client, &Passport::supplySuccess, [] { qCDebug(log_lp) << "> supplied"; });
    connect(&client, &Passport::webpageClosed, [] { qCDebug(log_lp) << "> closed"; });
}

// What a row's log begins and ends with.
namespace {

const QString signInHead = R"(
    reloadTiemout___ 7
    openLoginURL urlStr:::: "http://base/p"
    openLoginURL openurl:::: "%DIR%/openweburl/openweburl")";
const QString signUpHead = R"(
    reloadTiemout___ 7
    oopenweburl QJsonObject({"nubelo":{"url":"http://base"},"openwebengine":{"reLoadTimeout":7}})
    openRegisterURL openurl:::: "http://base/p"
    openRegisterURL openurl:::: "%DIR%/openweburl/openweburl.app/Contents/MacOS/openweburl"
    Register openRegisterUrl started and wait for finished)";
const QString signUpTail = R"(
    Register openRegisterUrl finished emit webpageClosed signal
    > closed)";
const QString forgottenHead = R"(
    reloadTiemout___ 7
    openForgitURL urlStr:::: "http://base/p"
    openForgitURL openurl:::: "%DIR%/openweburl/openweburl.app/Contents/MacOS/openweburl")";
const QString addInfoHead = R"(
    openAddInfoURL token::: "T k"
    openAddInfoURL urlStr:::: "http://base/p"
    openAddInfoURL list:::: ("http://base/p", "T k", "http://base", "en")
    openAddInfoURL openurl:::: "%DIR%/openweburl/openweburl.app/Contents/MacOS/openweburl")";
const QString supplied = R"(
    resultTest res:::: "%1"
    str:::: "%1"
    supplyResult success!
    > supplied)";

} // namespace

void tst_WebFlows::runs_data()
{
    QTest::addColumn<Flow>("flow");
    QTest::addColumn<Chunks>("chunks");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QString>("log"); // %1 and on are the chunks

    const QString call = "openweburl [http://base/p] [en] [7000]";
    const QString addInfoCall = "openweburl [http://base/p] [T k] [http://base] [en]";
    const QString ended = "killall [openweburl.app/Contents/MacOS/openweburl]";
    const QByteArray token = "openLoginURL_token_startTopenLoginURL_token_end";
    const QByteArray userId = "openLoginURL_user_id_startUopenLoginURL_user_id_end";
    const QByteArray shortRecord = "userLoadSuccess start:alice end";

    QTest::newRow("sign-in, both values at once")
        << signIn(true) << Chunks{bothMarkers} << QStringList{call} << signInHead + R"(
            resultTest res:::: "%1"
            qStr0:::: "%1"
            > token "ABC"
            qStr0:::: "%1"
            > user "42"
            mireth01 received token and id true
            > closed)";
    QTest::newRow("sign-in, one after the other, and one again")
        << signIn(true) << Chunks{userId, token, userId} << QStringList{call} << signInHead + R"(
            resultTest res:::: "%1"
            qStr0:::: "%1"
            > user "U"
            resultTest res:::: "%2"
            qStr0:::: "%2"
            > token "T"
            mireth01 received token and id true
            resultTest res:::: "%3"
            qStr0:::: "%3"
            > user "U"
            mireth01 received token and id true
            > closed)";
    QTest::newRow("sign-in without the flag, then a token in two reads")
        << signIn(false) << Chunks{bothMarkers, token.left(30), token.mid(30)} << QStringList{call}
        << signInHead + R"(
            resultTest res:::: "%1"
            qStr0:::: "%1"
            > token "ABC"
            qStr0:::: "%1"
            > user "42"
            resultTest res:::: "%2"
            resultTest res:::: "%3"
            > closed)";

    QTest::newRow("sign-up, closing; a close signal in the same read")
        << signUp(true)
        << Chunks{wholeRecord + " closeSignal"} << QStringList{call, ended} << signUpHead + R"(
            Register openRegisterUrl still receiving std cout
            resultTest res:::: "%1"
            str::::111 "%1"
            qStr0:::: "%1"
            qStr1::::111 "userLoadSuccess start: alice secret 86 "
            qStr2::::111 " alice secret 86 "
            userName.... "alice" passWord: "secret" phoneArea: "86"
            > details "alice" "secret" "86")" + signUpTail;
    QTest::newRow("sign-up, a short record, then a close signal")
        << signUp(false)
        << Chunks{shortRecord, "closeSignal"} << QStringList{call, ended} << signUpHead + R"(
            Register openRegisterUrl still receiving std cout
            resultTest res:::: "%1"
            str::::111 "%1"
            qStr0:::: "%1"
            qStr1::::111 "userLoadSuccess start:alice "
            qStr2::::111 "alice "
            userName....  is empty, info error
            Register openRegisterUrl still receiving std cout
            resultTest res:::: "%2"
            str::::111 "%2"
            closeSignal received close web tool)" + signUpTail;
    QTest::newRow("sign-up, three parts")
        << signUp(false)
        << Chunks{"userLoadSuccess start: alice secretend"} << QStringList{call} << signUpHead + R"(
            Register openRegisterUrl still receiving std cout
            resultTest res:::: "%1"
            str::::111 "%1"
            qStr0:::: "%1"
            qStr1::::111 "userLoadSuccess start: alice secret"
            qStr2::::111 " alice secret"
            userName.... "alice" passWord: "secret" phoneArea: ""
            > details "alice" "secret" "")" + signUpTail;

    QTest::newRow("forgotten, closing")
        << forgotten(true) << Chunks{wholeRecord} << QStringList{call, ended} << forgottenHead + R"(
            resultTest res:::: "%1"
            str:::: "%1"
            qStr0:::: "%1"
            qStr1:::: "userLoadSuccess start: alice secret 86 "
            qStr2:::: " alice secret 86 "
            userName.... "alice" passWord: "secret" phoneArea: "86"
            > details "alice" "secret" "86"
            mireth01 start msleep
            mireth01 end   msleep
            mireth01 close webtool
            > closed)";
    QTest::newRow("forgotten, a short record, then a close signal")
        << forgotten(false) << Chunks{shortRecord, "closeSignal"} << QStringList{call, ended}
        << forgottenHead + R"(
            resultTest res:::: "%1"
            str:::: "%1"
            qStr0:::: "%1"
            qStr1:::: "userLoadSuccess start:alice "
            qStr2:::: "alice "
            userName.... "" passWord: "" phoneArea: ""
            > details "" "" ""
            resultTest res:::: "%2"
            str:::: "%2"
            closeSignal received close web tool
            > closed)";

    QTest::newRow("add information, closing")
        << addInfo(true) << Chunks{"supplyResult success!"}
        << QStringList{addInfoCall,
                       "taskkill [/im] [openweburl.app/Contents/MacOS/openweburl] [/f]"}
        << addInfoHead + supplied;
    QTest::newRow("add information, left open; a close signal says nothing")
        << addInfo(false) << Chunks{"supplyResult success!", "closeSignal"}
        << QStringList{addInfoCall} << addInfoHead + supplied + R"(
            resultTest res:::: "%2"
            str:::: "%2")";
}

void tst_WebFlows::runs()
{
    QFETCH(Flow, flow);
    QFETCH(Chunks, chunks);
    QFETCH(QStringList, calls);
    QFETCH(QString, log);
    const QByteArray row = QTest::currentDataTag();
    // Sign-up reads standard error too.
    install(row.startsWith("sign-in") ? apart : bundled, chunks,
            row.startsWith("sign-up") ? "exec >&2\n" : "");
    logSignals(*passport);
    const ReadingLog captured(acknowledgements);
    flow(*passport);
    QCOMPARE(captured.lines(), expected(log, chunks, dir->path()));
    QTRY_COMPARE(recorder->calls(), calls);
}

void tst_WebFlows::needsNoWebTool_data()
{
    QTest::addColumn<Flow>("flow");
    QTest::addColumn<int>("closed");
    QTest::newRow("sign-in") << signIn(true) << 1;
    QTest::newRow("sign-up") << signUp(true) << 1;
    QTest::newRow("forgotten") << forgotten(true) << 1;
    QTest::newRow("add information") << addInfo(true) << 0;
}

void tst_WebFlows::needsNoWebTool()
{
    QFETCH(Flow, flow);
    const QSignalSpy closed(passport.get(), &Passport::webpageClosed);
    qunsetenv("QTWEBENGINE_REMOTE_DEBUGGING");
    flow(*passport);
    QTEST(int(closed.count()), "closed");
    QCOMPARE(qgetenv("QTWEBENGINE_REMOTE_DEBUGGING") == "1112", closed.isEmpty());
}

void tst_WebFlows::readsMegabytes()
{
    install(apart, {QByteArray(3 * 1024 * 1024, 'x'), bothMarkers});
    QString token;
    connect(passport.get(), &Passport::tokenReceived, [&](const QString &t) { token = t; });
    const ReadingLog log(acknowledgements);
    passport->openLoginURL(false, "/p", "en");
    QCOMPARE(token, "ABC");
}

void tst_WebFlows::runsInAThreadWithoutEventLoop()
{
    install(apart, {bothMarkers});
    QThread *slotThread = nullptr;
    connect(
        passport.get(), &Passport::tokenReceived, passport.get(),
        [&] { slotThread = QThread::currentThread(); }, Qt::DirectConnection);
    const ReadingLog log(acknowledgements);
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { passport->openLoginURL(false, "/p", "en"); }));
    thread->start();
    QVERIFY(thread->wait());
    QCOMPARE(slotThread, thread.get());
}

void tst_WebFlows::letsASlotWaitAndCall()
{
    install(apart, {"openLoginURL_token_startTopenLoginURL_token_end",
                    "openLoginURL_user_id_startUopenLoginURL_user_id_end"});
    QStringList seen;
    connect(passport.get(), &Passport::tokenReceived, [&] {
        // The rest of the tool's life passes in here.
        QEventLoop loop;
        connect(passport.get(), &Passport::userIdReceived, &loop, &QEventLoop::quit);
        QTimer::singleShot(30000, &loop, &QEventLoop::quit);
        loop.exec();
        passport->openURL(QUrl("http://127.0.0.1/"), "en");
        seen += "token";
    });
    connect(passport.get(), &Passport::userIdReceived, [&] { seen += "user"; });
    connect(passport.get(), &Passport::webpageClosed, [&] { seen += "closed"; });
    const ReadingLog log(acknowledgements);
    passport->openLoginURL(false, "/p", "en");
    QCOMPARE(seen, (QStringList{"user", "closed", "token", "closed"}));
}

void tst_WebFlows::survivesItsDestructionInASlot()
{
    install(apart, {bothMarkers, bothMarkers});
    int tokens = 0;
    connect(passport.get(), &Passport::tokenReceived, qApp, [&] {
        ++tokens;
        passport.reset();
    });
    const ReadingLog log(acknowledgements);
    passport->openLoginURL(true, "/p", "en");
    QCOMPARE(tokens, 1);
}

void tst_WebFlows::endsTheToolByName_data()
{
    QTest::addColumn<QString>("report");
    QTest::newRow("after the details") << QString(wholeRecord);
    QTest::newRow("on the close signal") << "closeSignal";
    QTest::newRow("when the host is done") << "nothing";
}

// The system's own killall, which takes a name with slashes for a path below the working directory.
void tst_WebFlows::endsTheToolByName()
{
    QFETCH(QString, report);
    recorder.reset();
    const QString program = dir->filePath(bundled);
    QDir().mkpath(QFileInfo(program).path());
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
    dir->write("config/PassPortCfg.cfg", R"({"nubelo": {"url": "--report="}})");

    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(dir->filePath("openweburl")));
    const ReadingLog log(acknowledgements);
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { passport->openForgitURL(true, report, "en"); }));
    thread->start();
    QTRY_VERIFY(!log.lines().filter("resultTest").isEmpty());
    if (report == "nothing")
        passport->exitModule();
    const bool ended = thread->wait(30000);
    QDir::setCurrent(before);
    QVERIFY(ended);
}

// As a web tool: reports what its page address says and stays.
int main(int argc, char **argv)
{
    const QByteArray mark = "--report=";
    if (argc > 1 && QByteArray(argv[1]).startsWith(mark)) {
        std::puts(argv[1] + mark.size());
        std::fflush(stdout);
        return pause();
    }
    QCoreApplication application(argc, argv);
    tst_WebFlows test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_webflows.moc"
