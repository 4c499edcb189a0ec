// SPDX-License-Identifier: MIT
#include "nubelo/Manager.h"

#include "nubelo/Answer_p.h"
#include "nubelo/Configuration_p.h"
#include "nubelo/HttpRequest_p.h"
#include "nubelo/Log_p.h"
#include "nubelo/Transport_p.h"

#include <QtCore/QThread>

#include <mutex>

namespace Nubelo {

Q_LOGGING_CATEGORY(logNubelo, "nubelo")

struct Manager::Private
{
    explicit Private(Manager *manager) : q(manager)
    {
        QVector<WrongMember> none;
        configuration = std::make_shared<Configuration>(Configuration::parse({}, none));
    }

    std::shared_ptr<const Configuration> current() const
    {
        const std::lock_guard lock(mutex);
        return configuration;
    }

    Transport &transport()
    {
        // On the first request, so that it belongs to the thread that the Manager was moved to, and
        // so that constructing a Manager costs nothing.
        if (!m_transport)
            m_transport = new Transport(q);
        return *m_transport;
    }

    Reply *send(const QString &name, const QByteArray &method, const QString &appendToUrl,
                const QVariantMap &envelope);
    Reply *configure(const QVariantMap &changes, bool replace, const QString &origin);
    Reply *immediateReply(const Outcome &outcome);

    Manager *const q;
    mutable std::mutex mutex;
    std::shared_ptr<const Configuration> configuration; // guarded by mutex, never null

private:
    Transport *m_transport = nullptr;
};

namespace {

QByteArray methodOf(Manager::HttpRequestType type)
{
    switch (type) {
    case Manager::Get:
        return "GET";
    case Manager::Put:
        return "PUT";
    case Manager::Delete:
        return "DELETE";
    case Manager::Patch:
        return "PATCH";
    case Manager::Head:
        return "HEAD";
    case Manager::Post:
        break;
    }
    return "POST";
}

} // namespace

Manager::Manager(QObject *parent) : QObject(parent), d(std::make_unique<Private>(this))
{
    Transport::prepareLibrary();
}

Manager::~Manager()
{
    const auto replies = findChildren<Reply *>(QString(), Qt::FindDirectChildrenOnly);
    for (Reply *reply : replies) {
        reply->settle({Error::IsAborted, {}, {}});
        reply->deliver();
    }
}

Reply *Manager::request(const QString &name, HttpRequestType type, HttpEncryptType encryption,
                        const QVariantMap &envelope, CloudAuthentication authentication,
                        const QVariantMap &extra)
{
    return request(name, type, encryption, QString(), envelope, authentication, extra);
}

Reply *Manager::request(const QString &name, HttpRequestType type, HttpEncryptType encryption,
                        const QString &appendToUrl, const QVariantMap &envelope,
                        CloudAuthentication authentication, const QVariantMap &extra)
{
    Q_UNUSED(encryption)
    Q_UNUSED(authentication)
    Q_UNUSED(extra)
    return d->send(name, methodOf(type), appendToUrl, envelope);
}

Reply *Manager::request(const QString &name, const QVariantMap &envelope, const QVariantMap &extra)
{
    Q_UNUSED(extra)
    return d->send(name, QByteArray(), QString(), envelope);
}

Reply *Manager::Private::send(const QString &name, const QByteArray &method,
                              const QString &appendToUrl, const QVariantMap &envelope)
{
    const auto configured = current();
    HttpRequest request;
    QString problem;
    const Error::ErrorCode code =
        buildRequest(*configured, name, method, appendToUrl, envelope, request, problem);
    std::unique_ptr<Reply> reply(new Reply(q));
    if (code != Error::NoError) {
        qCWarning(logNubelo).noquote() << "request not sent:" << problem;
        reply->refuse({code, {}, {}});
        return reply.release();
    }
    const bool isAddress = request.isAddress;
    transport().start(std::move(request), configured->rules, reply.get(),
                      [reply = reply.get(), isAddress](const HttpAnswer &answer) {
                          reply->settle(outcomeOf(answer, isAddress));
                      });
    return reply.release();
}

Reply *Manager::setConfigPath(const QString &path, const QVariantMap &extra)
{
    Q_UNUSED(extra)
    QVariantMap data;
    QString problem;
    const Error::ErrorCode code = Configuration::readFile(path, data, problem);
    if (code == Error::NoError)
        return d->configure(data, true, QStringLiteral("configuration file ") + path);
    qCWarning(logNubelo).noquote() << "configuration file" << path << "not used:" << problem;
    return d->immediateReply({code, {}, {}});
}

Reply *Manager::setConfigData(const QVariantMap &data, const QVariantMap &extra)
{
    Q_UNUSED(extra)
    return d->configure(data, false, QStringLiteral("configuration"));
}

Reply *Manager::Private::configure(const QVariantMap &changes, bool replace, const QString &origin)
{
    QVector<WrongMember> wrong;
    {
        // Held over reading and writing, so that two threads' changes are both in force afterwards.
        const std::lock_guard lock(mutex);
        const QVariantMap data =
            replace ? changes : Configuration::merged(configuration->data, changes);
        Configuration next = Configuration::parse(data, wrong);
        if (wrong.isEmpty())
            configuration = std::make_shared<Configuration>(std::move(next));
    }
    if (wrong.isEmpty())
        return immediateReply(success());
    for (const WrongMember &member : qAsConst(wrong))
        qCWarning(logNubelo).noquote() << origin << "not used:" << member.path << member.problem;
    return immediateReply({Error::ConfigDataError, {}, {}});
}

Reply *Manager::Private::immediateReply(const Outcome &outcome)
{
    // Made on whatever thread configures; from here on it belongs to the Manager's.
    auto *reply = new Reply;
    reply->moveToThread(q->thread());
    if (QThread::currentThread() == q->thread())
        reply->setParent(q);
    else
        QMetaObject::invokeMethod(
            q, [this, reply] { reply->setParent(q); }, Qt::QueuedConnection);
    reply->refuse(outcome);
    return reply;
}

QVariantMap Manager::configData() const
{
    return d->current()->data;
}

} // namespace Nubelo
