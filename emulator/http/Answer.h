// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <chrono>

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
    int httpStatus = 200;
    QByteArray body;
    QByteArray contentType = "application/json";
    QVector<QPair<QByteArray, QByteArray>> headers; ///< besides Content-Type and Content-Length
    Delivery delivery;
    /// Long polling, when not zero: this answer is kept back, and the request answered anew after
    /// each other one, until an answer has zero here or this time has passed.
    std::chrono::milliseconds longPoll{0};
    QString word;        ///< of a failAnswer, what it fails with
    QString consoleLine; ///< for the developer, once the changes of the request are kept
};

/// {"status":"ok","result":result}
Answer okAnswer(const QJsonValue &result);

/// {"status":"fail","result":text}. Account rules fail with a word and HTTP 200, the protocol with
/// a sentence and an HTTP status of 400 or above.
Answer failAnswer(const QString &text, int httpStatus = 200);
