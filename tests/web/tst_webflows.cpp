// SPDX-License-Identifier: MIT
#include "common/Log.h"
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>

using namespace VelqorPassPort;

namespace {

const QByteArray bothMarkers = "openLoginURL_token_startABCopenLoginURL_token_end"
                               "openLoginURL_user_id_start42openLoginURL_user_id_end";

void run(Passport &passport, const QString &flow, bool flag)
{
    if (flow == "openURL")
        passport.openURL(QUrl("http://127.0.0.1/"), "en");
    else if (flow == "openLoginURL")
        passport.openLoginURL(flag, "/p", "en");
    else if (flow == "openRegisterURL")
        passport.openRegisterURL(flag, "/p", "en");
    else if (flow == "openForgitURL")
        passport.openForgitURL(flag, "/p", "en");
    else
        passport.openAddInfoURL("T k", flag, "/p", "en");
}

} // namespace

/// The web flows with a web tool that records how it was started and writes what it is told.
class tst_WebFlows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        dir = std::make_unique<PassportDirectory>();
        dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
        dir->writePassportCfg({{"nubelo", QJsonObject{{"url", "http://base"}}},
                               {"openwebengine", QJsonObject{{"reLoadTimeout", 7}}}});
        recorder = std::make_unique<Recorder>();
        recorder->add("killall");
        recorder->add("taskkill");
        passport = std::make_unique<Passport>();
        passport->initial(dir->path());
    }

    void cleanup()
    {
        passport.reset();
        recorder.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // flows.txt: "#" the name, "!" the flow and its flag, "$" a program that runs, "<" what the web
    // tool writes for one read, ">" a signal; the rest is the log.
    void runs_data()
    {
        const auto row =
            columns<QString, QString, QStringList, QStringList>("flow", "chunks", "calls", "log");
        const QStringList sections = textOf(QFINDTESTDATA("flows.txt")).split("\n\n");
        for (const QString &section : sections) {
            QStringList lines = section.split('\n', Qt::SkipEmptyParts);
            const auto taken = [&lines](const QString &mark) {
                QStringList marked;
                for (int i = lines.size() - 1; i >= 0; --i) {
                    if (lines[i].startsWith(mark))
                        marked.prepend(lines.takeAt(i).mid(mark.size()));
                }
                return marked;
            };
            const QByteArray name = taken("# ").value(0).toUtf8();
            row(name, taken("! ").value(0), taken("< ").join('\n'), taken("$ "), lines);
        }
    }

    void runs()
    {
        QFETCH(QString, flow);
        QFETCH(QString, chunks);
        QFETCH(QStringList, calls);
        QFETCH(QStringList, log);
        // Sign-up reads standard error too. A page that closes by itself has time to be read first.
        const bool isSignIn = flow.startsWith("openLogin");
        install(isSignIn ? "openweburl" : "openweburl.app/Contents/MacOS/openweburl",
                chunks.toUtf8().split('\n'), flow.startsWith("openRegister") ? "exec >&2\n" : "",
                flow == "openForgitURL true" ? "sleep 0.5; echo openweburl was read >>\"$RECORD\""
                                             : "");
        logSignals();
        const LogCapture captured(acknowledge());
        run(*passport, flow.section(' ', 0, 0), flow.endsWith("true"));
        QStringList expected;
        for (const QString &line : log)
            expected << "debug " + QString(line).replace("DIR", dir->path());
        QCOMPARE(captured.lines(), expected);
        QTRY_COMPARE(recorder->calls(), calls);
    }

    void needsNoWebTool_data()
    {
        const auto row = columns<int>("closed");
        for (const char *flow : {"openURL", "openLoginURL", "openRegisterURL", "openForgitURL"})
            row(flow, 1);
        row("openAddInfoURL", 0);
    }

    void needsNoWebTool()
    {
        const QSignalSpy closed(passport.get(), &Passport::webpageClosed);
        qunsetenv("QTWEBENGINE_REMOTE_DEBUGGING");
        run(*passport, QTest::currentDataTag(), true);
        QTEST(int(closed.count()), "closed");
        QCOMPARE(qgetenv("QTWEBENGINE_REMOTE_DEBUGGING") == "1112", closed.isEmpty());
    }

    void runsInAThreadWithoutEventLoop()
    {
        install("openweburl", {bothMarkers});
        QThread *slotThread = nullptr;
        connect(
            passport.get(), &Passport::tokenReceived, passport.get(),
            [&] { slotThread = QThread::currentThread(); }, Qt::DirectConnection);
        const LogCapture log(acknowledge());
        const std::unique_ptr<QThread> thread(
            QThread::create([&] { passport->openLoginURL(false, "/p", "en"); }));
        thread->start();
        QVERIFY(thread->wait());
        QCOMPARE(slotThread, thread.get());
    }

    void letsASlotWaitAndCall()
    {
        install("openweburl", {"openLoginURL_token_startTopenLoginURL_token_end",
                               "openLoginURL_user_id_startUopenLoginURL_user_id_end"});
        QStringList seen;
        connect(passport.get(), &Passport::tokenReceived, passport.get(), [&] {
            // The rest of the tool's life passes in here.
            QTRY_VERIFY(seen.contains("user"));
            passport->openURL(QUrl("http://127.0.0.1/"), "en");
            seen += "token";
        });
        connect(passport.get(), &Passport::userIdReceived, [&] { seen += "user"; });
        connect(passport.get(), &Passport::webpageClosed, [&] { seen += "closed"; });
        const LogCapture log(acknowledge());
        passport->openLoginURL(false, "/p", "en");
        QCOMPARE(seen, (QStringList{"user", "closed", "token", "closed"}));
    }

    void survivesItsDestructionInASlot()
    {
        install("openweburl", {bothMarkers, bothMarkers});
        int tokens = 0;
        connect(passport.get(), &Passport::tokenReceived, qApp, [&] {
            ++tokens;
            passport.reset();
        });
        const LogCapture log(acknowledge());
        passport->openLoginURL(true, "/p", "en");
        QCOMPARE(tokens, 1);
    }

private:
    /// A web tool that writes each chunk when the one before has been read; it gives up after some
    /// seconds, so that one that nobody reads is missing and not waited for.
    void install(const QString &program, const QList<QByteArray> &chunks,
                 const QByteArray &atFirst = {}, const QByteArray &atLast = {})
    {
        QByteArray script = "cd '" + QFile::encodeName(dir->path()) + "'\n" + atFirst;
        for (int i = 0; i < chunks.size(); ++i) {
            const QByteArray number = QByteArray::number(i);
            dir->write("chunk" + number, chunks.at(i));
            script += "cat chunk" + number + "; looks=0\n" + "until [ $(wc -c <read) -gt " +
                      number + " ]; do\n" +
                      "looks=$((looks + 1)); [ $looks -lt 1000 ] || exit 1; sleep 0.01\ndone\n";
        }
        dir->write("read", {});
        recorder->add("openweburl", script + atLast);
        const QString path = dir->filePath("openweburl/" + program);
        QDir().mkpath(QFileInfo(path).path());
        QVERIFY(QFile::link(recorder->programPath("openweburl"), path));
    }

    /// Tells the web tool by the length of a file how many chunks were read.
    std::function<void(const LogCapture::Message &)> acknowledge() const
    {
        return [path = dir->filePath("read")](const LogCapture::Message &message) {
            QFile file(path);
            if (message.text.startsWith("resultTest") && file.open(QIODevice::Append))
                file.write(".");
        };
    }

    // Between the log lines, so that one list shows the order of both.
    void logSignals()
    {
        connect(passport.get(), &Passport::tokenReceived,
                [](const QString &token) { qCDebug(log_lp) << "> token" << token; });
        connect(passport.get(), &Passport::userIdReceived,
                [](const QString &userId) { qCDebug(log_lp) << "> user" << userId; });
        connect(passport.get(), &Passport::userLoadSuccess,
                [](const QString &userName, const QString &password, const QString &phoneArea) {
                    qCDebug(log_lp) << "> details" << userName << password << phoneArea;
                });
        connect(passport.get(), &Passport::supplySuccess, [] { qCDebug(log_lp) << "> supplied"; });
        connect(passport.get(), &Passport::webpageClosed, [] { qCDebug(log_lp) << "> closed"; });
    }

    std::unique_ptr<PassportDirectory> dir;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<Passport> passport;
};

QTEST_GUILESS_MAIN(tst_WebFlows)
#include "tst_webflows.moc"
