// SPDX-License-Identifier: MIT
#include "ScriptedCloud.h"

#include <QtCore/QMetaObject>
#include <QtCore/QThread>

namespace {

void playFrom(Nubelo::Reply *reply, const std::vector<Script::Step> &steps, std::size_t next)
{
    if (next >= steps.size())
        return;
    const auto play = [reply, steps, next] {
        // Posted first: the step may finish the reply, whose receiver releases it.
        playFrom(reply, steps, next + 1);
        steps[next](reply);
    };
    QMetaObject::invokeMethod(reply, play, Qt::QueuedConnection);
}

} // namespace

Script Script::finishing(const QVariantMap &map)
{
    return Script().then([map](Nubelo::Reply *reply) { Q_EMIT reply->finished(map); });
}

Script Script::failing(Nubelo::Error::ErrorCode code)
{
    return Script()
        .then([code](Nubelo::Reply *reply) { Q_EMIT reply->errorOccurred(code); })
        .then([](Nubelo::Reply *reply) { Q_EMIT reply->finished({}); });
}

Script Script::erroneous(Nubelo::Error::ErrorCode status)
{
    Script script;
    script.status = status;
    return script;
}

Script Script::withoutReply()
{
    Script script;
    script.hasReply = false;
    return script;
}

Script &Script::then(Step step)
{
    steps.push_back(std::move(step));
    return *this;
}

ScriptedCloud &ScriptedCloud::instance()
{
    static ScriptedCloud cloud;
    return cloud;
}

void ScriptedCloud::reset()
{
    const std::lock_guard lock(m_mutex);
    m_scripts.clear();
    m_calls.clear();
}

void ScriptedCloud::play(Script script)
{
    const std::lock_guard lock(m_mutex);
    m_scripts.push_back(std::move(script));
}

std::vector<ScriptedCloud::Call> ScriptedCloud::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

QStringList ScriptedCloud::names() const
{
    QStringList names;
    for (const Call &call : calls())
        names.append(call.name);
    return names;
}

Nubelo::Reply *ScriptedCloud::perform(Nubelo::Manager *manager, Call call)
{
    Script script = Script::answering(QVariant());
    const QString operation = call.operation;
    {
        const std::lock_guard lock(m_mutex);
        call.thread = QThread::currentThread();
        m_calls.push_back(std::move(call));
        if (!m_scripts.empty()) {
            script = std::move(m_scripts.front());
            m_scripts.pop_front();
        }
    }
    if (!script.hasReply)
        return nullptr;
    // A setter is called on any thread, so its outcome has to wait for a receiver. That of a
    // request comes in a later turn, and by then there is one.
    Script::Step atReceiver = script.atReceiver;
    if (!atReceiver && !operation.startsWith(QLatin1String("request")))
        atReceiver = [steps = script.steps](Nubelo::Reply *reply) { playFrom(reply, steps, 0); };
    auto *reply = new Nubelo::Reply(script.status, atReceiver);
    reply->moveToThread(manager->thread());
    if (script.atCreation)
        script.atCreation(reply);
    if (!atReceiver)
        playFrom(reply, script.steps, 0);
    return reply;
}

namespace Nubelo {

Manager::Manager(QObject *parent) : QObject(parent) {}

Reply *Manager::request(QString name, HttpRequestType type, HttpEncryptType encryption,
                        QVariantMap envelope, CloudAuthentication authentication, QVariantMap extra)
{
    return ScriptedCloud::instance().perform(
        this,
        {QStringLiteral("request/6"), name, type, encryption, authentication, {}, envelope, extra});
}

Reply *Manager::request(QString name, HttpRequestType type, HttpEncryptType encryption,
                        QString appendToUrl, QVariantMap envelope,
                        CloudAuthentication authentication, QVariantMap extra)
{
    return ScriptedCloud::instance().perform(this,
                                             {QStringLiteral("request/7"), name, type, encryption,
                                              authentication, appendToUrl, envelope, extra});
}

Reply *Manager::request(QString name, QVariantMap envelope, QVariantMap extra)
{
    return ScriptedCloud::instance().perform(
        this, {QStringLiteral("request/3"), name, -1, -1, -1, {}, envelope, extra});
}

Reply *Manager::setConfigPath(QString path, QVariantMap extra)
{
    return ScriptedCloud::instance().perform(
        this, {QStringLiteral("setConfigPath"), path, -1, -1, -1, {}, {}, extra});
}

Reply *Manager::setConfigData(QVariantMap data, QVariantMap extra)
{
    return ScriptedCloud::instance().perform(
        this, {QStringLiteral("setConfigData"), {}, -1, -1, -1, {}, data, extra});
}

QVariantMap Manager::configData() const
{
    return {};
}

} // namespace Nubelo
