#include "passport/cloud/ReplyWait_p.h"

#include "common/Log.h"
#include "common/RunOnThread_p.h"
#include "passport/cloud/CloudError_p.h"

#include <QtCore/QThread>

namespace VelqorPassPort {

std::optional<Nubelo::Error::ErrorCode> ReplyWait::attach(Nubelo::Reply *reply, QObject *manager)
{
    if (!reply)
        return std::nullopt;
    if (!reply->parent() && reply->thread() == manager->thread())
        reply->setParent(manager);
    const Nubelo::Error::ErrorCode status = reply->status();
    if (status != Nubelo::Error::NoError) {
        reply->deleteLater();
        return status;
    }
    m_reply = reply;
    const auto self = shared_from_this();
    using Nubelo::Reply;
    QObject::connect(manager, &QObject::destroyed, reply, [self] { self->onManagerGone(); });
    QObject::connect(reply, &Reply::sslErrorOccurred, manager,
                     [self](const QList<QSslError> &errors) { self->onSslError(errors); });
    QObject::connect(reply, &Reply::errorOccurred, manager,
                     [self](Nubelo::Error::ErrorCode code) { self->onError(code); });
    // The last one: a reply may bring its outcome as soon as somebody is there to receive it.
    QObject::connect(reply, &Reply::finished, manager,
                     [self](const QVariantMap &map) { self->onFinished(map); });
    return status;
}

PassportCommunityError ReplyWait::wait(QVariant &result)
{
    QEventLoop loop;
    std::unique_lock lock(m_mutex);
    m_loop = &loop;
    if (m_state != State::Open)
        leaveLoopLater();
    // When the application quits, the loop is left once without an end, and the next exec() gives
    // -1 at once.
    do {
        lock.unlock();
        const int code = loop.exec();
        lock.lock();
        if (code == -1)
            break;
    } while (m_state == State::Open);

    m_loop = nullptr;
    if (m_state != State::Settled)
        return communityError(callCanceled);
    result = m_result;
    return m_record;
}

void ReplyWait::drop()
{
    if (m_reply && !m_finished)
        m_reply->deleteLater();
    m_finished = true;
}

void ReplyWait::onFinished(const QVariantMap &map)
{
    if (m_finished)
        return;
    m_finished = true;
    qCDebug(log_lp) << "replyConnect current thread-2.1" << QThread::currentThread();

    const QVariant result = map.value(QStringLiteral("result"));
    const bool failed = map.value(QStringLiteral("status")).toString() == QLatin1String("fail");
    qCDebug(log_lp) << "request success" << !result.isNull();
    {
        const std::lock_guard lock(m_mutex);
        m_result = result;
        // A failure that says nothing counts as a success: the service sends it for "nothing to
        // do".
        if (failed && !result.isNull())
            m_record.setErrorCode(result.toString());
    }
    if (m_reply)
        m_reply->deleteLater();
    end(State::Settled);
}

void ReplyWait::onError(Nubelo::Error::ErrorCode code)
{
    if (m_finished)
        return;
    qCDebug(log_lp) << "replyConnect current thread-2.2" << QThread::currentThread();
    qCDebug(log_lp) << "erro" << m_requestName << keyName(code);
    const std::lock_guard lock(m_mutex);
    m_record = communityError(code);
}

void ReplyWait::onSslError(const QList<QSslError> &errors)
{
    if (m_finished)
        return;
    qCDebug(log_lp) << "replyConnect current thread-2.3" << QThread::currentThread();
    qCDebug(log_lp) << "ssl error" << errors;
}

void ReplyWait::onManagerGone()
{
    if (m_finished)
        return;
    m_finished = true;
    {
        const std::lock_guard lock(m_mutex);
        m_record = communityError(callAborted);
    }
    end(State::Settled);
}

void ReplyWait::end(State state)
{
    const std::lock_guard lock(m_mutex);
    if (m_state != State::Open)
        return;
    m_state = state;
    if (m_loop)
        leaveLoopLater();
}

// Queued, never direct: Qt 5 forgets a quit() that comes before exec().
void ReplyWait::leaveLoopLater()
{
    postToThreadOf(m_loop, [self = shared_from_this()] {
        const std::lock_guard lock(self->m_mutex);
        if (self->m_loop)
            self->m_loop->quit();
    });
}

} // namespace VelqorPassPort
