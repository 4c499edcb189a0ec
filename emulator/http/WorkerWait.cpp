// SPDX-License-Identifier: MIT
#include "http/WorkerWait.h"

#include "http/Connection.h"

#include <algorithm>
#include <utility>

bool WorkerWait::sleep(std::chrono::milliseconds duration, const Connection &client)
{
    return wait(Clock::now() + duration, client, [] { return false; }) == End::Deadline;
}

quint64 WorkerWait::newsCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_newsCount;
}

void WorkerWait::announceNews()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_newsCount;
    }
    m_changed.notify_all();
}

bool WorkerWait::waitForNews(quint64 seen, Clock::time_point deadline, const Connection &client)
{
    return wait(deadline, client, [&] { return m_newsCount != seen; }) == End::Done;
}

bool WorkerWait::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (std::exchange(m_stopped, true))
            return false;
    }
    m_changed.notify_all();
    return true;
}

// Nothing wakes a worker when its client goes, so it looks from time to time.
WorkerWait::End WorkerWait::wait(Clock::time_point deadline, const Connection &client,
                                 const std::function<bool()> &isDone)
{
    constexpr std::chrono::milliseconds lookInterval(500);
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait_until(lock, std::min(deadline, Clock::now() + lookInterval),
                             [&] { return m_stopped || isDone(); });
        if (m_stopped)
            return End::CutShort;
        if (isDone())
            return End::Done;
        if (Clock::now() >= deadline)
            return End::Deadline;
        lock.unlock();
        if (!client.isOpen())
            return End::CutShort;
        lock.lock();
    }
}
