// SPDX-License-Identifier: MIT
#pragma once

#include "passport/PassportCommunityError.h"

#include <nubelo/Reply.h>

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <memory>
#include <mutex>
#include <optional>

namespace VelqorPassPort {

/// One caller's wait for one reply, shared by the caller and the reply's handlers.
///
/// The cloud thread attaches the handlers in the turn in which it has the reply, so no outcome can
/// slip by. The caller then waits on its own thread. Each side holds a reference: a signal that
/// comes late, or after the caller gave up, finds valid memory and changes nothing the caller sees.
/// The wait ends with the reply's finished(), with the end of the reply or of the cloud thread,
/// with cancel(), or when the caller's thread is told to quit.
class ReplyWait : public std::enable_shared_from_this<ReplyWait>
{
public:
    /// `requestName` stands in the log lines.
    explicit ReplyWait(QString requestName) : m_requestName(std::move(requestName)) {}

    /// Cloud thread: the state of `reply`, or nothing when there is none. One without an error is
    /// waited for: its handlers run on the thread of `manager`, and it is released when it has
    /// finished. One already in error is released at once. A reply without a parent becomes a child
    /// of `manager`, so that it does not outlive it.
    std::optional<Nubelo::Error::ErrorCode> attach(Nubelo::Reply *reply, QObject *manager);

    /// Any thread: ends the wait, now or as soon as it begins, unless its outcome is there already.
    void cancel() { end(State::Canceled); }

    /// Caller's thread: waits in `loop` without a time limit while its events go on being
    /// delivered, those queued before the call in any case. `result` is the answer's "result"
    /// afterwards; it stays as it was when there was no answer. On a thread that has been told to
    /// quit the outcome is always cancellation.
    PassportCommunityError wait(QEventLoop &loop, QVariant &result);

    /// Cloud thread: releases a reply that has not finished, and with it the request.
    void drop();

private:
    enum class State { Open, Answered, Aborted, Canceled };

    void onFinished(const QVariantMap &map);
    void onError(Nubelo::Error::ErrorCode code);
    void onSslError(const QList<QSslError> &errors);
    void onGone();
    void end(State state);
    void leaveLoopLater();

    const QString m_requestName;

    // Of the cloud thread alone.
    QPointer<Nubelo::Reply> m_reply;
    QMetaObject::Connection m_managerGone;
    bool m_finished = false;

    std::mutex m_mutex; // guards what follows
    QEventLoop *m_loop = nullptr;
    State m_state = State::Open;
    QVariant m_result;
    PassportCommunityError m_record;
};

} // namespace VelqorPassPort
