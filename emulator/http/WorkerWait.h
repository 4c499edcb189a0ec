// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QtGlobal>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

class Connection;

/// How the server's worker threads wait: for a time, or for news of other requests.
///
/// Callable from any thread. Every wait is cut short when the service stops, and within a second
/// when the client has closed its connection, since a waiting worker serves nobody else.
class WorkerWait
{
public:
    using Clock = std::chrono::steady_clock;

    /// False when it was cut short.
    bool sleep(std::chrono::milliseconds duration, const Connection &client);

    quint64 newsCount() const;
    void announceNews();
    /// Waits until newsCount() is another one than `seen`. False when it was cut short or took
    /// until the deadline.
    bool waitForNews(quint64 seen, Clock::time_point deadline, const Connection &client);

    /// From now on nobody waits. False if that was so already.
    bool stop();

private:
    enum class End { Done, Deadline, CutShort };
    End wait(Clock::time_point deadline, const Connection &client,
             const std::function<bool()> &isDone);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_stopped = false;
    quint64 m_newsCount = 0;
};
