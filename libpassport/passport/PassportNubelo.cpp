#include "passport/PassportNubelo.h"

#include "common/HandOver_p.h"
#include "common/Log.h"
#include "passport/cloud/CloudError_p.h"
#include "passport/cloud/ReplyWait_p.h"

#include <QtCore/QPointer>

#include <memory>

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

} // namespace

PassportNubelo::PassportNubelo(QObject *parent)
    : QObject(parent)
    , m_manager(new Nubelo::Manager(nullptr))
{
    // They cross threads as signal arguments, whatever the request library declares about them.
    qRegisterMetaType<Nubelo::Manager::HttpRequestType>("Nubelo::Manager::HttpRequestType");
    qRegisterMetaType<Nubelo::Error::ErrorCode>("Nubelo::Error::ErrorCode");

    qCDebug(log_lp) << "current threaddddddddd nubelo" << QThread::currentThread();
    m_manager->moveToThread(&m_cloudThread);
    connect(&m_cloudThread, &QThread::finished, m_manager, &QObject::deleteLater);
    m_cloudThread.start();
}

PassportNubelo::~PassportNubelo()
{
    const QPointer<Nubelo::Manager> manager(m_manager);
    m_cloudThread.quit();
    m_cloudThread.wait();
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
    return exchange(name, result, [reply](Nubelo::Manager &) { return reply; });
}

PassportCommunityError PassportNubelo::setErrorCode(Nubelo::Error::ErrorCode errorCode)
{
    return communityError(errorCode);
}

PassportCommunityError PassportNubelo::exchange(const QString &name, QVariant &result,
                                                const Call &call)
{
    if (QThread::currentThread() == &m_cloudThread) {
        qCCritical(log_lp) << "called on the cloud thread, which would wait for itself:" << name;
        return communityError(static_cast<Nubelo::Error::ErrorCode>(0x512E));
    }

    // In one turn of the cloud thread: the reply's state is read and its handlers are attached
    // before the reply can do anything.
    const auto wait = std::make_shared<ReplyWait>(name);
    Nubelo::Reply *reply = nullptr;
    auto status = Nubelo::Error::NoError;
    handOver();
    QMetaObject::invokeMethod(
        m_manager,
        [&] {
            takeOver();
            reply = call(*m_manager);
            status = reply ? reply->status() : Nubelo::Error::NoError;
            if (status != Nubelo::Error::NoError)
                reply->deleteLater();
            else if (reply)
                wait->attach(reply, m_manager);
            handOver();
        },
        Qt::BlockingQueuedConnection);
    takeOver();

    qCDebug(log_lp) << "replyConnect current thread-1" << QThread::currentThread();
    if (!reply) {
        qCDebug(log_lp) << "reply is nullptr";
        PassportCommunityError record;
        record.setErrorCode(QStringLiteral("unknownErr"));
        return record;
    }
    if (status != Nubelo::Error::NoError) {
        qCDebug(log_lp) << "request error" << keyName(status);
        return communityError(status);
    }
    const QPointer<PassportNubelo> self(this);
    wait->announce(m_manager);
    // Nothing of this object from here on: a slot that runs during the wait may destroy it. Callers
    // do go on with it, but only after a success.
    PassportCommunityError record = wait->wait(result);
    if (!self && record.errorCode == CommunityErrorCode::NoError)
        return communityError(static_cast<Nubelo::Error::ErrorCode>(0x700C));
    return record;
}

} // namespace VelqorPassPort
