#pragma once

#include <nubelo/Manager.h>
#include <nubelo/Reply.h>

#include <QtCore/QSemaphore>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/// A place where a thread is held until the test lets it go on. Both directions are remembered, so
/// neither side can miss the other.
class Gate
{
public:
    /// Of the thread to be held.
    void hold()
    {
        m_reached.release();
        m_opened.acquire();
    }
    /// Of the test: waits until a thread has arrived.
    void awaitArrival() { m_reached.acquire(); }
    void open() { m_opened.release(); }

private:
    QSemaphore m_reached;
    QSemaphore m_opened;
};

/// What the cloud does with one call. Each step runs in a turn of its own of the cloud thread.
struct Script
{
    using Step = std::function<void(Nubelo::Reply *)>;

    static Script finishing(const QVariantMap &map);
    static Script answering(const QVariant &result)
    {
        return finishing({{"status", "ok"}, {"result", result}});
    }
    static Script refusing(const QString &word)
    {
        return finishing({{"status", "fail"}, {"result", word}});
    }
    static Script failing(Nubelo::Error::ErrorCode code);
    static Script erroneous(Nubelo::Error::ErrorCode status);
    static Script withoutReply();
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
        QThread *thread = nullptr;
    };

    static ScriptedCloud &instance();

    void reset();
    void play(Script script);
    std::vector<Call> calls() const;
    QStringList names() const;
    Call lastCall() const { return calls().back(); }

    /// Of the scripted Manager.
    Nubelo::Reply *perform(Nubelo::Manager *manager, Call call);

private:
    mutable std::mutex m_mutex;
    std::deque<Script> m_scripts;
    std::vector<Call> m_calls;
};
