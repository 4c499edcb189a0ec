// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

#include "common/Log.h"
#include "common/RunOnThread_p.h"
#include "passport/cloud/CloudError_p.h"
#include "passport/cloud/OpenWaits_p.h"
#include "passport/cloud/ReplyWait_p.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtCore/QScopeGuard>

#include <optional>

namespace VelqorPassPort {

namespace {

QVariantMap envelope(const QVariantMap &headers, const QVariantMap &body, const QVariantMap &params)
{
    return {{QStringLiteral("headers"), headers},
            {QStringLiteral("body"), body},
            {QStringLiteral("params"), params}};
}

QVariantMap envelope(const QVariantMap &headers, const QVariantMap &body, const QVariantMap &params,
                     const QString &source)
{
    QVariantMap map = envelope(headers, body, params);
    map.insert(QStringLiteral("source"), source);
    return map;
}

// Before the hand-over to the cloud thread, whose lines all come behind it.
void logFirstLine()
{
    qCDebug(log_lp) << "replyConnect current thread-1" << QThread::currentThread();
}

PassportCommunityError withoutReply()
{
    qCDebug(log_lp) << "reply is nullptr";
    PassportCommunityError record;
    record.setErrorCode(QStringLiteral("unknownErr"));
    return record;
}

} // namespace

PassportNubelo::PassportNubelo(QObject *parent)
    : QObject(parent)
    , m_manager(new Nubelo::Manager(nullptr))
{
    // They cross threads as signal arguments, whatever the request library declares about them.
    qRegisterMetaType<Nubelo::Manager::HttpRequestType>("Nubelo::Manager::HttpRequestType");
    qRegisterMetaType<Nubelo::Error::ErrorCode>("Nubelo::Error::ErrorCode");
    // Calls by name may give the type of a record with or without its namespace.
    qRegisterMetaType<PassportCommunityError>("VelqorPassPort::PassportCommunityError");
    qRegisterMetaType<PassportCommunityError>("PassportCommunityError");

    qCDebug(log_lp) << "current threaddddddddd nubelo" << QThread::currentThread();
    m_manager->moveToThread(&m_cloudThread);
    connect(&m_cloudThread, &QThread::finished, m_manager, [thread = &m_cloudThread] {
        // Deletes the replies left: the destructor, which hears of the end here, finds none.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        RunOnThread::release(thread);
    });
    connect(&m_cloudThread, &QThread::finished, m_manager, &QObject::deleteLater);
    m_cloudThread.start();

    // Only the application's own thread is woken by its quit. Directly, and without this object,
    // which another thread may be destroying.
    if (QCoreApplication *application = QCoreApplication::instance()) {
        const auto cancelAll = [] { OpenWaits::cancel(); };
        connect(application, &QCoreApplication::aboutToQuit, this, cancelAll, Qt::DirectConnection);
        connect(application, &QObject::destroyed, this, cancelAll, Qt::DirectConnection);
    }
}

PassportNubelo::~PassportNubelo()
{
    const QPointer<Nubelo::Manager> manager(m_manager);
    m_cloudThread.quit();
    m_cloudThread.wait();
    RunOnThread::acquire(&m_cloudThread);
    // Normally gone with its thread; once the application object is destroyed, Qt delivers no
    // deferred deletion any more.
    delete manager.data();
}

PassportCommunityError PassportNubelo::requestNubelo(QVariant &result, QString name,
                                                     Nubelo::Manager::HttpRequestType requestType,
                                                     Nubelo::Manager::HttpEncryptType encryptType,
                                                     QVariantMap body, QVariantMap params,
                                                     QVariantMap headers, QString source)
{
    const QVariantMap parts = envelope(headers, body, params, source);
    return exchange(name, result, [&](Nubelo::Manager &manager) {
        return manager.request(name, requestType, encryptType, parts,
                               Nubelo::Manager::NoAuthentication, QVariantMap());
    });
}

PassportCommunityError PassportNubelo::requestNubelo(QVariant &result, QString name,
                                                     QVariantMap body, QVariantMap params,
                                                     QVariantMap headers, QString source)
{
    const QVariantMap parts = envelope(headers, body, params, source);
    return exchange(name, result, [&](Nubelo::Manager &manager) {
        return manager.request(name, parts, QVariantMap());
    });
}

PassportCommunityError PassportNubelo::requestNubelo(QVariant &result, QString name,
                                                     QString appendToUrl,
                                                     Nubelo::Manager::HttpRequestType requestType,
                                                     Nubelo::Manager::HttpEncryptType encryptType,
                                                     QVariantMap headers, QVariantMap params,
                                                     QVariantMap body, QString source)
{
    const QVariantMap parts = envelope(headers, body, params, source);
    return exchange(name, result, [&](Nubelo::Manager &manager) {
        return manager.request(name, requestType, encryptType, appendToUrl, parts,
                               Nubelo::Manager::NoAuthentication, QVariantMap());
    });
}

PassportCommunityError PassportNubelo::requestNubelo(QVariant &result, QString url,
                                                     Nubelo::Manager::HttpRequestType requestType,
                                                     QVariantMap body, QVariantMap params,
                                                     QVariantMap headers)
{
    Q_UNUSED(requestType)
    const QVariantMap parts = envelope(headers, body, params);
    return exchange(url, result, [&](Nubelo::Manager &manager) {
        return manager.request(url, parts, QVariantMap());
    });
}

PassportCommunityError PassportNubelo::post(QVariant &result, const QString &name,
                                            const QVariantMap &body, const QVariantMap &params,
                                            const QVariantMap &headers)
{
    return requestNubelo(result, name, Nubelo::Manager::Post, Nubelo::Manager::NoEncrypt, body,
                         params, headers, QStringLiteral("cloud"));
}

PassportCommunityError PassportNubelo::get(QVariant &result, const QString &name)
{
    return requestNubelo(result, name, Nubelo::Manager::Get, Nubelo::Manager::NoEncrypt,
                         QVariantMap(), QVariantMap(), QVariantMap(), QStringLiteral("cloud"));
}

PassportCommunityError PassportNubelo::replyConnect(Nubelo::Reply *reply, QString name,
                                                    QVariant &result)
{
    if (!reply) {
        logFirstLine();
        return withoutReply();
    }
    // It may be gone before its thread gets to it.
    const QPointer<Nubelo::Reply> held(reply);
    bool isAttached = false;
    PassportCommunityError record = exchange(name, result, [&](Nubelo::Manager &) {
        isAttached = true;
        return held.data();
    });
    if (!isAttached)
        postToThreadOf(m_manager, [held] { delete held.data(); });
    return record;
}

PassportCommunityError PassportNubelo::setErrorCode(Nubelo::Error::ErrorCode errorCode)
{
    return communityError(errorCode);
}

void PassportNubelo::cancel()
{
    OpenWaits::cancel(this);
}

PassportCommunityError PassportNubelo::exchange(const QString &name, QVariant &result,
                                                const Call &call)
{
    if (QThread::currentThread() == &m_cloudThread) {
        qCCritical(log_lp) << "called on the cloud thread, which would wait for itself:" << name;
        return communityError(callNotAllowed);
    }
    if (!m_cloudThread.isRunning()) // it could not be started
        return communityError(callAborted);
    // Known before the application object is looked at: its end cancels what is known. Should it
    // end while the loop is made, nothing would drive the loop.
    const auto wait = std::make_shared<ReplyWait>(name);
    const OpenWaits::Entry entry(this, wait);
    if (!QCoreApplication::instance())
        return communityError(callCanceled);
    QEventLoop loop;
    if (!QAbstractEventDispatcher::instance())
        return communityError(callCanceled);

    logFirstLine();
    std::optional<Nubelo::Error::ErrorCode> status;
    if (!runOnThreadOf(m_manager, [&] { status = wait->attach(call(*m_manager), m_manager); }))
        return communityError(callCanceled);
    if (!status)
        return withoutReply();
    if (status != Nubelo::Error::NoError) {
        qCDebug(log_lp) << "request error" << keyName(*status);
        return communityError(*status);
    }

    // A slot that runs during the wait may destroy this object, and with it the cloud thread, or
    // throw.
    const QPointer<PassportNubelo> self(this);
    auto dropRequest = qScopeGuard([&] {
        if (self)
            postToThreadOf(m_manager, [wait] { wait->drop(); });
    });
    PassportCommunityError record = wait->wait(loop, result);
    if (record.errorCode != CommunityErrorCode::EC_OperationCanceledError)
        dropRequest.dismiss();
    // After a success callers go on with this object.
    return self || record.isError() ? record : communityError(callAborted);
}

} // namespace VelqorPassPort
