#pragma once

#include <nubelo/Reply.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QTimer>

#include <memory>

/// What one reply of the request library came to.
struct ReplyOutcome
{
    bool ended = false;
    int finished = 0;
    QStringList order; ///< of the signals
    Nubelo::Error::ErrorCode code = Nubelo::Error::NoError;
    QVariantMap map;
    QList<QSslError> sslErrors;
    bool fromLaterTurn = false;

    /// Waits for the reply's end, and one more turn for what must not come; releases the reply.
    static ReplyOutcome of(Nubelo::Reply *reply, int milliseconds = 15000)
    {
        auto outcome = std::make_shared<ReplyOutcome>();
        bool later = false;
        QObject::connect(reply, &Nubelo::Reply::sslErrorOccurred, reply,
                         [outcome](const QList<QSslError> &errors) {
                             outcome->order << "ssl";
                             outcome->sslErrors = errors;
                         });
        QObject::connect(reply, &Nubelo::Reply::errorOccurred, reply,
                         [outcome](Nubelo::Error::ErrorCode error) {
                             outcome->order << "error";
                             outcome->code = error;
                         });
        QObject::connect(reply, &Nubelo::Reply::finished, reply,
                         [outcome, &later](const QVariantMap &answer) {
                             outcome->order << "finished";
                             ++outcome->finished;
                             outcome->map = answer;
                             outcome->fromLaterTurn = later;
                         });
        later = true;
        QEventLoop loop;
        QObject::connect(reply, &Nubelo::Reply::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
        outcome->ended = outcome->finished > 0;
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        delete reply;
        return *outcome;
    }
};
