#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtWebSockets/QWebSocket>

#include <chrono>
#include <cstdio>
#include <stdexcept>

// Fills in the page that a web tool shows, through the browser engine's remote debugging (Chrome
// DevTools Protocol), which the tool opens when QTWEBENGINE_REMOTE_DEBUGGING names a port.
//
//     drive-page PORT STEPS
//
// STEPS is a file with one step on a line: "wait SCRIPT" until it is true, "run SCRIPT", "type
// TEXT" into the field that has the focus, "type-result SCRIPT", "include FILE" from the same
// folder; "#" begins a comment. A script is an expression of JavaScript, a promise is waited for.
// When a step fails the page is closed.

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;
constexpr auto pause = 50ms;

struct Failure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

void fail(const QString &sentence)
{
    throw Failure(sentence.toStdString());
}

/// The debugging connection to the first page of a browser engine.
class DebuggedPage
{
public:
    explicit DebuggedPage(quint16 port);

    QJsonValue evaluate(const QString &script);
    void waitFor(const QString &script);
    void close() { send("Page.close", {}); }
    void type(const QString &text) { call("Input.insertText", {{"text", text}}); }

private:
    static QUrl find(quint16 port);
    bool isTrue(const QString &script);
    int send(const QString &method, const QJsonObject &parameters);
    QJsonObject call(const QString &method, const QJsonObject &parameters);

    QWebSocket m_socket;
    int m_lastCall = 0;
};

template <typename Sender, typename Signal>
void waitForSignal(Sender *sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    loop.exec();
}

QUrl DebuggedPage::find(quint16 port)
{
    QNetworkAccessManager network;
    const QUrl list(QStringLiteral("http://127.0.0.1:%1/json/list").arg(port));
    for (auto waited = 0ms; waited < patience; waited += pause) {
        QNetworkReply *reply = network.get(QNetworkRequest(list));
        waitForSignal(reply, &QNetworkReply::finished);
        const QJsonArray targets = QJsonDocument::fromJson(reply->readAll()).array();
        for (const auto &target : targets) {
            if (target.toObject().value("type") == QLatin1String("page"))
                return target.toObject().value("webSocketDebuggerUrl").toString();
        }
        QThread::msleep(pause.count());
    }
    fail("no page can be debugged at " + list.toString());
    return {};
}

DebuggedPage::DebuggedPage(quint16 port)
{
    m_socket.open(find(port));
    waitForSignal(&m_socket, &QWebSocket::connected);
}

int DebuggedPage::send(const QString &method, const QJsonObject &parameters)
{
    const QJsonObject request{{"id", ++m_lastCall}, {"method", method}, {"params", parameters}};
    m_socket.sendTextMessage(QJsonDocument(request).toJson());
    m_socket.flush();
    return m_lastCall;
}

QJsonObject DebuggedPage::call(const QString &method, const QJsonObject &parameters)
{
    if (m_socket.state() != QAbstractSocket::ConnectedState)
        fail(method + ": the page is gone");
    int id = 0;
    QJsonObject answer;
    QEventLoop loop;
    QObject::connect(&m_socket, &QWebSocket::disconnected, &loop, &QEventLoop::quit);
    QObject::connect(&m_socket, &QWebSocket::textMessageReceived, &loop, [&](const QString &text) {
        const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
        if (message.value("id").toInt() == id) {
            answer = message;
            loop.quit();
        }
    });
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    id = send(method, parameters);
    loop.exec();
    if (!answer.contains("result"))
        fail(method + ": " + QJsonDocument(answer).toJson(QJsonDocument::Compact));
    return answer.value("result").toObject();
}

QJsonValue DebuggedPage::evaluate(const QString &script)
{
    const QJsonObject result =
        call("Runtime.evaluate",
             {{"expression", script}, {"awaitPromise", true}, {"returnByValue", true}});
    if (result.contains("exceptionDetails"))
        fail(QJsonDocument(result).toJson(QJsonDocument::Compact));
    return result.value("result").toObject().value("value");
}

// What cannot be evaluated yet, on a page that is only being loaded, is not true yet.
bool DebuggedPage::isTrue(const QString &script)
{
    try {
        return evaluate("Boolean(" + script + ')').toBool();
    } catch (const Failure &) {
        if (m_socket.state() != QAbstractSocket::ConnectedState)
            throw;
        return false;
    }
}

void DebuggedPage::waitFor(const QString &script)
{
    for (auto waited = 0ms; waited < patience; waited += pause) {
        if (isTrue(script))
            return;
        QThread::msleep(pause.count());
    }
    const QString page = evaluate("location + '\\n' + document.body.innerText").toString();
    fail("never true: " + script + "\nThe page: " + page);
}

void takeAll(DebuggedPage &page, const QString &path);

void take(DebuggedPage &page, const QString &step, const QDir &folder)
{
    const QString verb = step.section(' ', 0, 0);
    const QString rest = step.section(' ', 1).trimmed();
    if (verb == "wait")
        page.waitFor(rest);
    else if (verb == "run")
        page.evaluate(rest);
    else if (verb == "type")
        page.type(rest);
    else if (verb == "type-result")
        page.type(page.evaluate(rest).toString());
    else if (verb == "include")
        takeAll(page, folder.filePath(rest));
    else if (!verb.isEmpty() && verb != "#")
        fail("no such step: " + step);
}

void takeAll(DebuggedPage &page, const QString &path)
{
    QFile steps(path);
    if (!steps.open(QIODevice::ReadOnly))
        fail(path + " cannot be read");
    while (!steps.atEnd())
        take(page, QString::fromUtf8(steps.readLine()).trimmed(), QFileInfo(path).dir());
}

// Whoever waits for the page to be closed need not wait for a time-out.
template <typename Steps>
void closeOnFailure(DebuggedPage &page, Steps steps)
{
    try {
        steps();
    } catch (const Failure &) {
        page.close();
        throw;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: drive-page PORT STEPS\n");
        return 2;
    }
    try {
        DebuggedPage page(arguments.at(1).toUShort());
        closeOnFailure(page, [&] { takeAll(page, arguments.at(2)); });
    } catch (const Failure &failure) {
        std::fprintf(stderr, "drive-page: %s\n", failure.what());
        return 1;
    }
    return 0;
}
