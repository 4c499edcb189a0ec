// SPDX-License-Identifier: MIT
#include "passport/cloud/ReplyWait_p.h"

#include "common/Log.h"
#include "common/RunOnThread_p.h"
#include "passport/cloud/CloudError_p.h"

#include <QtCore/QScopeGuard>
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
    m_managerGone = QObject::connect(manager, &QObject::destroyed, [self] { self->onGone(); });
    QObject::connect(reply, &QObject::destroyed, manager, [self] { self->onGone(); });
    QObject::connect(reply, &Reply::sslErrorOccurred, manager,
                     [self](const QList<QSslError> &errors) { self->onSslError(errors); });
    QObject::connect(reply, &Reply::errorOccurred, manager,
                     [self](Nubelo::Error::ErrorCode code) { self->onError(code); });
    // The last one: a reply may bring its outcome as soon as somebody is there to receive it.
    QObject::connect(reply, &Reply::finished, manager,
                     [self](const QVariantMap &map) { self->onFinished(map); });
    return status;
}

PassportCommunityError ReplyWait::wait(QEventLoop &loop, QVariant &result)
{
    // Also when a slot throws.
    const auto forgetLoop = qScopeGuard([this] {
        const std::lock_guard lock(m_mutex);
        m_loop = nullptr;
    });
    std::unique_lock lock(m_mutex);
    m_loop = &loop;
    if (m_state != State::Open)
        leaveLoopLater();
    lock.unlock();
    // -1 at once on a thread that is quitting; any other end without an outcome is a quit, too.
    const bool isQuitting = loop.exec() == -1;
    lock.lock();
    if (isQuitting || m_state == State::Open || m_state == State::Canceled)
        return communityError(callCanceled);
    if (m_state == State::Answered)
        result = m_result;
    return m_record;
}

void ReplyWait::drop()
{
    if (m_finished)
        return;
    m_finished = true;
    QObject::disconnect(m_managerGone);
    if (m_reply)
        m_reply->deleteLater();
}

void ReplyWait::onFinished(const QVariantMap &map)
{
    if (m_finished)
        return;
    m_finished = true;
    QObject::disconnect(m_managerGone);
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
    end(State::Answered);
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

void ReplyWait::onGone()
{
    if (m_finished)
        return;
    m_finished = true;
    QObject::disconnect(m_managerGone);
    {
        const std::lock_guard lock(m_mutex);
        m_record = communityError(callAborted);
    }
    end(State::Aborted);
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
