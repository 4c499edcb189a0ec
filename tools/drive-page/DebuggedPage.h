// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QUrl>
#include <QtWebSockets/QWebSocket>

#include <stdexcept>

/// A step that could not be taken; what() is a sentence for the user.
struct Failure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws a Failure.
[[noreturn]] void fail(const QString &sentence);

/// The first page of a browser engine, through its remote debugging (Chrome DevTools Protocol).
///
/// Each call waits for its effect, for a minute at most, and throws a Failure when there is none.
class DebuggedPage
{
public:
    /// Waits until there is a page at this port of the machine.
    explicit DebuggedPage(quint16 port);

    /// The value of an expression of JavaScript; a promise is waited for.
    QJsonValue evaluate(const QString &script);
    /// Waits until the expression is true.
    void waitFor(const QString &script);
    /// Into the element that has the focus.
    void type(const QString &text);
    /// A call of the protocol; the parameters are a JSON object, or empty.
    void call(const QString &method, const QString &parameters);
    /// What the page shows, as PNG.
    QByteArray picture();
    void close();

private:
    static QUrl find(quint16 port);
    bool isTrue(const QString &script);
    void send(const QString &method, const QJsonObject &parameters);
    QJsonObject call(const QString &method, const QJsonObject &parameters);

    void take(const QString &text);

    QWebSocket m_socket;
    QEventLoop m_loop; ///< runs while a call waits for its answer
    QJsonObject m_answer;
    int m_lastCall = 0;
};
