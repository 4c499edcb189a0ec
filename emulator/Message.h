#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QMap>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <chrono>
#include <exception>

/// An HTTP request, wholly read and decoded, as the rules see it.
struct Request
{
    QString method;
    QString path;                             ///< percent-decoded, without the query
    QMap<QString, QString> query;             ///< of a repeated key the last value
    QVector<QPair<QString, QString>> headers; ///< as sent
    QByteArray body;
    QString remoteAddress; ///< the caller's address without the port

    /// The values of a header; its name is compared without regard to case.
    QStringList headerValues(const QString &name) const;
    /// A query value that must be "true" or "false"; a missing one is false. Throws Refusal.
    bool queryFlag(const QString &key) const;
    /// A query value that must be a whole number from minimum to maximum; a missing or empty one is
    /// the fallback. Throws Refusal.
    int queryNumber(const QString &key, int fallback, int minimum, int maximum) const;
    /// The body, which must be a JSON object. Throws Refusal.
    QJsonObject json() const;
};

/// How an answer is brought to the caller; anything but the default is a fault that somebody asked
/// for.
struct Delivery
{
    enum class Manner {
        Whole,
        HalfBody, ///< the full Content-Length, half of the body, then the end of the connection
        Drip,     ///< the body at bytesPerSecond
        Drop      ///< the connection ends in the middle of the headers
    };

    Manner manner = Manner::Whole;
    int bytesPerSecond = 0;
    std::chrono::milliseconds delay{0}; ///< before the first byte
};

/// An HTTP answer.
struct Answer
{
    int code = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    QVector<QPair<QByteArray, QByteArray>> headers; ///< besides Content-Type and Content-Length
    Delivery delivery;
    /// Long polling, when not zero: this answer is kept back, and the request answered anew after
    /// each other one, until an answer has zero here or this time has passed.
    std::chrono::milliseconds longPoll{0};
    QString consoleLine; ///< for the developer, once the changes of the request are kept
};

/// A request that the emulator does not act on; travels as an exception to the place that answers.
class Refusal : public std::exception
{
public:
    Refusal(int code, const QString &text) : m_code(code), m_text(text) {}

    int code() const { return m_code; }
    QString text() const { return m_text; }
    const char *what() const noexcept override { return "request refused"; }

private:
    int m_code;
    QString m_text;
};

/// A request that the account rules deny, with the word that tells the client why. It travels like
/// a Refusal, but is an answer of its own: what has been changed on the way to it remains.
class Denial : public std::exception
{
public:
    explicit Denial(const QString &word) : m_word(word) {}

    QString word() const { return m_word; }
    const char *what() const noexcept override { return "request denied"; }

private:
    QString m_word;
};

/// {"status":"ok","result":result}
Answer okAnswer(const QJsonValue &result);

/// {"status":"fail","result":text}. Account rules fail with a word and HTTP 200, the protocol with
/// a sentence and a code of 400 or above.
Answer failAnswer(const QString &text, int code = 200);
