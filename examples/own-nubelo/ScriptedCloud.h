// SPDX-License-Identifier: MIT
#pragma once

#include <nubelo/Manager.h>
#include <nubelo/Reply.h>

#include <QtCore/QStringList>
#include <QtCore/QVariantMap>

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/// What the cloud does with one call: whether there is a reply, its status, and the steps by which
/// it reports. Each step runs in a turn of its own of the Manager's thread; those of a
/// configuration call begin when somebody connects to finished().
struct Script
{
    using Step = std::function<void(Nubelo::Reply *)>;

    static Script finishing(const QVariantMap &map);
    static Script answering(const QVariant &result)
    {
        return finishing(
            {{QStringLiteral("status"), QStringLiteral("ok")}, {QStringLiteral("result"), result}});
    }
    static Script refusing(const QString &word)
    {
        return finishing(
            {{QStringLiteral("status"), QStringLiteral("fail")}, {QStringLiteral("result"), word}});
    }
    static Script failing(Nubelo::Error::ErrorCode code);
    /// A reply that is in error already.
    static Script erroneous(Nubelo::Error::ErrorCode status);
    static Script withoutReply();
    /// A reply that never finishes.
    static Script silent() { return {}; }

    Script &then(Step step);

    bool hasReply = true;
    Nubelo::Error::ErrorCode status = Nubelo::Error::NoError;
    Step atCreation; ///< runs before the call returns
    Step atReceiver; ///< runs instead of the steps, while finished() is being connected
    std::vector<Step> steps;
};

/// The cloud behind every scripted Manager: plays the scripts in the order in which they were given
/// and records every call. A call without a script of its own is answered with an empty success.
/// One for all Managers of the program, and callable from any thread.
class ScriptedCloud
{
public:
    struct Call
    {
        QString operation; ///< "request/" and the number of its arguments, or the setter's name
        QString name;
        int type = -1;
        int encryption = -1;
        int authentication = -1;
        QString appendToUrl;
        QVariantMap envelope; ///< the data of a setter
        QVariantMap extra;
        QThread *thread = nullptr; ///< that made the call
    };

    static ScriptedCloud &instance();

    void reset(); ///< forgets all scripts and calls
    void play(Script script);
    std::vector<Call> calls() const;
    QStringList names() const;
    Call lastCall() const { return calls().back(); }

    /// What a Manager does with each call.
    Nubelo::Reply *perform(Nubelo::Manager *manager, Call call);

private:
    mutable std::mutex m_mutex;
    std::deque<Script> m_scripts;
    std::vector<Call> m_calls;
};
