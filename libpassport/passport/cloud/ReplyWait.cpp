#include "passport/cloud/ReplyWait_p.h"

#include "common/HandOver_p.h"
#include "common/Log.h"
#include "passport/cloud/CloudError_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

namespace VelqorPassPort {

namespace {

constexpr auto canceled = static_cast<Nubelo::Error::ErrorCode>(0x5004);
constexpr auto aborted = static_cast<Nubelo::Error::ErrorCode>(0x700C);

} // namespace

void ReplyWait::attach(Nubelo::Reply *reply, QObject *manager)
{
    const auto self = shared_from_this();
    QObject::connect(
        reply, &Nubelo::Reply::finished, manager, [self, reply](const QVariantMap &map) {
            self->handle([self = self.get(), reply, map] { self->onFinished(reply, map); });
        });
    QObject::connect(reply, &Nubelo::Reply::errorOccurred, manager,
                     [self](Nubelo::Error::ErrorCode code) {
                         self->handle([self = self.get(), code] { self->onError(code); });
                     });
    QObject::connect(
        reply, &Nubelo::Reply::sslErrorOccurred, manager, [self](const QList<QSslError> &errors) {
            self->handle([self = self.get(), errors] {
                if (self->m_finished)
                    return;
                qCDebug(log_lp) << "replyConnect current thread-2.3" << QThread::currentThread();
                qCDebug(log_lp) << "ssl error" << errors;
            });
        });
    m_managerGone =
        QObject::connect(manager, &QObject::destroyed, [self] { self->onManagerGone(); });
}

void ReplyWait::announce(QObject *manager)
{
    // Each side says what it did before it looks at what the other did: at least one of them sees
    // both, and the cloud thread is woken only when something came early.
    m_announced = true;
    if (!m_holding)
        return;
    QMetaObject::invokeMethod(
        manager, [self = HandedOver(shared_from_this())] { self.take()->handleHeld(); },
        Qt::QueuedConnection);
}

PassportCommunityError ReplyWait::wait(QVariant &result)
{
    // Without an application object there is nothing that could deliver the end of the wait.
    if (!QCoreApplication::instance())
        return communityError(canceled);

    QEventLoop loop;
    {
        const std::lock_guard lock(m_mutex);
        m_loop = &loop;
    }
    // The loop is also left without an end: when a slot's processEvents() took the queued quit, the
    // flag tells; when the application quits, the next exec() gives -1 at once.
    while (!ended() && loop.exec() != -1) {
    }

    const std::lock_guard lock(m_mutex);
    m_loop = nullptr;
    if (!m_ended)
        return communityError(canceled);
    result = m_result;
    return m_record;
}

void ReplyWait::handle(Handler handler)
{
    m_held.push_back(std::move(handler));
    m_holding = true;
    if (m_announced)
        handleHeld();
}

void ReplyWait::handleHeld()
{
    // One at a time: a log line may run code of the host that makes the reply emit again.
    while (!m_held.empty()) {
        const Handler handler = std::move(m_held.front());
        m_held.pop_front();
        handler();
    }
}

void ReplyWait::onFinished(Nubelo::Reply *reply, const QVariantMap &map)
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
    reply->deleteLater();
    end();
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

void ReplyWait::onManagerGone()
{
    handleHeld();
    if (m_finished)
        return;
    m_finished = true;
    {
        const std::lock_guard lock(m_mutex);
        m_record = communityError(aborted);
    }
    end();
}

void ReplyWait::end()
{
    QObject::disconnect(m_managerGone);
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    // Queued, never direct: Qt 5 forgets a quit() that comes before exec().
    if (m_loop)
        QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection);
}

bool ReplyWait::ended()
{
    const std::lock_guard lock(m_mutex);
    return m_ended;
}

} // namespace VelqorPassPort
