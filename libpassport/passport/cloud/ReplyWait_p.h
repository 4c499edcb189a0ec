#pragma once

#include "passport/PassportCommunityError.h"

#include <nubelo/Reply.h>

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace VelqorPassPort {

/// One caller's wait for one reply, shared by the caller and the reply's handlers.
///
/// The cloud thread attaches the handlers in the turn in which it has the reply, so no outcome can
/// slip by. The caller then waits on its own thread. Each side holds a reference: a signal that
/// comes late, or after the caller gave up, finds valid memory and changes nothing the caller sees.
/// The wait ends with the reply's finished(), with the application's quit, or with the end of the
/// cloud thread.
class ReplyWait : public std::enable_shared_from_this<ReplyWait>
{
public:
    /// `requestName` stands in the log lines.
    explicit ReplyWait(QString requestName) : m_requestName(std::move(requestName)) {}

    /// Cloud thread: connects the handlers to `reply`, which is released when it has finished. They
    /// run on the thread of `manager`, whose end also ends the wait.
    void attach(Nubelo::Reply *reply, QObject *manager);

    /// Caller's thread: says that the wait's first log line is written. Outcomes that came earlier
    /// are handled only now, so that the lines of one wait always stand in one order.
    void announce(QObject *manager);

    /// Caller's thread: waits without a time limit while its events go on being delivered. `result`
    /// is the answer's "result" afterwards; it stays as it was when the wait was cancelled.
    PassportCommunityError wait(QVariant &result);

private:
    using Handler = std::function<void()>;
    void handle(Handler handler);
    void handleHeld();
    void onFinished(Nubelo::Reply *reply, const QVariantMap &map);
    void onError(Nubelo::Error::ErrorCode code);
    void onManagerGone();
    void end();
    bool ended();

    const QString m_requestName;
    std::atomic<bool> m_announced{false};
    std::atomic<bool> m_holding{false}; // an outcome has come

    // Of the cloud thread alone.
    std::deque<Handler> m_held;
    QMetaObject::Connection m_managerGone;
    bool m_finished = false;

    std::mutex m_mutex; // guards what follows
    QEventLoop *m_loop = nullptr;
    bool m_ended = false;
    QVariant m_result;
    PassportCommunityError m_record;
};

} // namespace VelqorPassPort
