// SPDX-License-Identifier: MIT
#include "DebuggedPage.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>

#include <chrono>

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;
constexpr auto pause = 50ms;

template <typename Sender, typename Signal>
void waitForSignal(Sender *sender, Signal signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, &QEventLoop::quit);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    loop.exec();
}

QString compact(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

} // namespace

void fail(const QString &sentence)
{
    throw Failure(sentence.toStdString());
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
            if (target.toObject().value(QLatin1String("type")) == QLatin1String("page"))
                return QUrl(
                    target.toObject().value(QLatin1String("webSocketDebuggerUrl")).toString());
        }
        QThread::msleep(pause.count());
    }
    fail(QStringLiteral("no page can be debugged at ") + list.toString());
}

DebuggedPage::DebuggedPage(quint16 port)
{
    QObject::connect(&m_socket, &QWebSocket::disconnected, &m_loop, &QEventLoop::quit);
    QObject::connect(&m_socket, &QWebSocket::textMessageReceived, &m_loop,
                     [this](const QString &text) { take(text); });
    m_socket.open(find(port));
    waitForSignal(&m_socket, &QWebSocket::connected);
}

void DebuggedPage::close()
{
    send(QStringLiteral("Page.close"), {});
}

void DebuggedPage::type(const QString &text)
{
    call(QStringLiteral("Input.insertText"), {{QStringLiteral("text"), text}});
}

void DebuggedPage::call(const QString &method, const QString &parameters)
{
    call(method, QJsonDocument::fromJson(parameters.toUtf8()).object());
}

QByteArray DebuggedPage::picture()
{
    const QJsonObject answer = call(QStringLiteral("Page.captureScreenshot"), QJsonObject());
    return QByteArray::fromBase64(answer.value(QLatin1String("data")).toString().toLatin1());
}

void DebuggedPage::send(const QString &method, const QJsonObject &parameters)
{
    const QJsonObject request{{QStringLiteral("id"), ++m_lastCall},
                              {QStringLiteral("method"), method},
                              {QStringLiteral("params"), parameters}};
    m_socket.sendTextMessage(compact(request));
    m_socket.flush();
}

// Events of the page come between answers.
void DebuggedPage::take(const QString &text)
{
    const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
    if (message.value(QLatin1String("id")).toInt() != m_lastCall)
        return;
    m_answer = message;
    m_loop.quit();
}

QJsonObject DebuggedPage::call(const QString &method, const QJsonObject &parameters)
{
    if (m_socket.state() != QAbstractSocket::ConnectedState)
        fail(method + QStringLiteral(": the page is gone"));
    QTimer deadline;
    QObject::connect(&deadline, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    deadline.start(patience);
    m_answer = QJsonObject();
    send(method, parameters);
    m_loop.exec();
    if (!m_answer.contains(QLatin1String("result")))
        fail(method + QStringLiteral(": ") + compact(m_answer));
    return m_answer.value(QLatin1String("result")).toObject();
}

QJsonValue DebuggedPage::evaluate(const QString &script)
{
    const QJsonObject result =
        call(QStringLiteral("Runtime.evaluate"), {{QStringLiteral("expression"), script},
                                                  {QStringLiteral("awaitPromise"), true},
                                                  {QStringLiteral("returnByValue"), true}});
    if (result.contains(QLatin1String("exceptionDetails")))
        fail(compact(result));
    return result.value(QLatin1String("result")).toObject().value(QLatin1String("value"));
}

// What cannot be evaluated yet, on a page that is only being loaded, is not true yet.
bool DebuggedPage::isTrue(const QString &script)
{
    try {
        return evaluate(QStringLiteral("Boolean(%1)").arg(script)).toBool();
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
    const QString page =
        evaluate(QStringLiteral("location + '\\n' + document.body.innerText")).toString();
    fail(QStringLiteral("never true: %1\nThe page: %2").arg(script, page));
}
