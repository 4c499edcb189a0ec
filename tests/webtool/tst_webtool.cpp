// SPDX-License-Identifier: MIT
#include "PageServer.h"
#include "support/Rows.h"

#include <QtCore/QProcess>

#include <memory>

namespace {

constexpr int patienceMs = 60000;

QByteArray script(const QByteArray &text)
{
    return html("<script>" + text + "</script>");
}

// What a page does to report; "openweburl:arguments" gives the key.
const QByteArray report = R"(
    function ask(what) {
        return new Promise(resolve => {
            const request = new XMLHttpRequest();
            request.onload = () => resolve(request.responseText);
            request.onerror = () => resolve('refused');
            request.open('GET', 'openweburl:' + what);
            request.send();
        });
    }
    const key = ask('arguments').then(a => a === 'refused' ? a : JSON.parse(a).key);
    const report = what => key.then(k => ask(what + (what.includes('?') ? '&' : '?') + 'key=' + k));
)";

} // namespace

/// The web tool's program, offscreen, with pages that this test serves.
class tst_WebTool : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        tool = std::make_unique<QProcess>();
        tool->setProgram(OPENWEBURL);
    }

    // With standard error in the same pipe, as the flow that creates accounts has it.
    void printsNothingButReports()
    {
        serve([](const QByteArray &target) {
            if (target != "/")
                return QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
            return script(report + R"(
                console.log('closeSignal');
                console.error('userLoadSuccess start: a b c end');
                (async () => {
                    await report('openLoginURL_token_startXopenLoginURL_token_end');
                    await report('account?userName=a%20closeSignal&password=x&phoneArea=');
                    await report('account?userName=ada&password=x%0AcloseSignal&phoneArea=');
                    await report('signed-in?token=T&userId=7');
                    await report('account?userName=ada&password=s&phoneArea=86');
                    await report('close');
                })();
            )");
        });
        tool->setProcessChannelMode(QProcess::MergedChannels);
        tool->setArguments({page(), "en", "200"});
        tool->start();
        QTRY_COMPARE_WITH_TIMEOUT(tool->state(), QProcess::NotRunning, patienceMs);
        QCOMPARE(tool->readAll(), QByteArray("openLoginURL_token_startTopenLoginURL_token_end"
                                             "openLoginURL_user_id_start7openLoginURL_user_id_end\n"
                                             "userLoadSuccess start: ada s 86 end\n"
                                             "closeSignal\n"));
        QCOMPARE(tool->exitCode(), 0);
    }

    void deniesForeignPages_data()
    {
        const auto row = columns<QByteArray>("firstPage");
        const QByteArray elsewhere = "'http://localhost:' + location.port";
        const QByteArray frame = "const frame = document.createElement('iframe');"
                                 "document.documentElement.append(frame);";
        row("gone to", "location = " + elsewhere + " + '/foreign';");
        row("asked for something, and redirecting to a report",
            "const picture = new Image();"
            "picture.onerror = () => picture.src = '/outcome/refused,refused,refused';"
            "picture.src = " +
                elsewhere + " + '/redirect';");
        row("framed", frame + "frame.src = " + elsewhere + " + '/foreign';");
        row("own, but in a sandbox",
            frame + "frame.sandbox = 'allow-scripts'; frame.src = '/foreign';");
    }

    void deniesForeignPages()
    {
        QFETCH(QByteArray, firstPage);
        QByteArray outcome;
        serve([&](const QByteArray &target) {
            if (target == "/")
                return script(firstPage);
            if (target == "/foreign") {
                return script(report + R"(
                    Promise.all([report('close'), report('arguments'), report('supplied')])
                        .then(outcome => new Image().src = '/outcome/' + outcome);
                    )");
            }
            if (target == "/redirect")
                return redirect("openweburl:supplied?key=");
            if (target.startsWith("/outcome/"))
                outcome = target.mid(9);
            return QByteArray();
        });
        tool->setArguments({page(), "secret", "", "en"});
        tool->start();
        QTRY_COMPARE_WITH_TIMEOUT(outcome, QByteArray("refused,refused,refused"), patienceMs);
        tool->terminate();
        QVERIFY(tool->waitForFinished());
        QCOMPARE(tool->readAllStandardOutput(), QByteArray());
    }

    void loadsAgainUntilThePageIsThere()
    {
        int tries = 0;
        serve([&](const QByteArray &target) {
            if (target == "/favicon.ico")
                return QByteArray();
            switch (++tries) {
            case 1:
            case 4:
                return QByteArray();
            case 2:
                return QByteArray("HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\nbusy");
            case 3: // shown, and then followed by one that gives no answer
                return script("onload = () => setTimeout(() => location = '/next');");
            default:
                return script(report + "report('close');");
            }
        });
        tool->setArguments({page("/a b"), "en", "100"});
        tool->start();
        QTRY_COMPARE_WITH_TIMEOUT(tool->state(), QProcess::NotRunning, patienceMs);
        QCOMPARE(tool->readAllStandardOutput(), QByteArray("closeSignal\n"));
        QCOMPARE(tries, 5);
    }

    void keepsAPageThatWasShown_data()
    {
        const auto row = columns<QByteArray>("step");
        row("mail address", "location = 'mailto:a@b'");
        row("download", "location = '/file'");
        row("form that the service refuses",
            "const form = document.createElement('form'); form.method = 'POST';"
            "form.action = '/form'; document.documentElement.append(form); form.submit()");
    }

    // The page, or the answer to its form, stays for ten times the reload timeout.
    void keepsAPageThatWasShown()
    {
        QFETCH(QByteArray, step);
        int tries = 0;
        const QByteArray closeLater = report + "setTimeout(() => report('close'), 1000);";
        serve([&](const QByteArray &target) {
            if (target == "/file") {
                return QByteArray("HTTP/1.1 200 OK\r\nContent-Disposition: attachment\r\n"
                                  "Content-Length: 1\r\n\r\nx");
            }
            if (target == "/favicon.ico")
                return QByteArray();
            ++tries;
            if (target == "/form")
                return script(closeLater).replace("200 OK", "422 Refused");
            return script(closeLater + "onload = () => setTimeout(() => {" + step + "});");
        });
        tool->setArguments({page(), "en", "100"});
        tool->start();
        QTRY_COMPARE_WITH_TIMEOUT(tool->state(), QProcess::NotRunning, patienceMs);
        QCOMPARE(tries, step.contains("form") ? 2 : 1);
    }

    void showsAFileNothingButItself()
    {
        QByteArray outcome;
        serve([&](const QByteArray &target) {
            if (target.startsWith("/outcome/"))
                outcome = target.mid(9);
            return script("");
        });
        QTemporaryDir directory;
        const auto write = [&](const char *name, const QByteArray &text) {
            QFile file(directory.filePath(name));
            return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
        };
        QVERIFY(write("secret.json", "secret"));
        QVERIFY(write("page.html",
                      "<script>const tell = what => location = '" + page("/outcome/").toLatin1() +
                          "' + what; const request = new XMLHttpRequest();"
                          "request.onload = () => tell(request.responseText);"
                          "request.onerror = () => tell('nothing');"
                          "request.open('GET', 'secret.json'); request.send();</script>"));
        tool->setArguments({"file://" + directory.filePath("page.html"), "en", "100"});
        tool->start();
        QTRY_COMPARE_WITH_TIMEOUT(outcome, QByteArray("nothing"), patienceMs);
        tool->kill();
        QVERIFY(tool->waitForFinished());
    }

    void refusesAWrongCommandLine()
    {
        tool->setArguments({"-platform", "en", "7"});
        tool->start();
        QVERIFY(tool->waitForFinished());
        QCOMPARE(tool->exitCode(), 2);
        QVERIFY(
            tool->readAllStandardError().contains("\"-platform\" is not an http, https or file"));
        QCOMPARE(tool->readAllStandardOutput(), QByteArray());
    }

private:
    void serve(std::function<QByteArray(const QByteArray &target)> answers)
    {
        server = std::make_unique<PageServer>(std::move(answers));
    }

    QString page(const QString &path = "/") const { return server->page(path); }

    std::unique_ptr<PageServer> server;
    std::unique_ptr<QProcess> tool;
};

QTEST_GUILESS_MAIN(tst_WebTool)
#include "tst_webtool.moc"
