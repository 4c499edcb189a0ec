#pragma once

#include "passport/cloud/ReplyWait_p.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace VelqorPassPort {

/// The waits of all calls in progress, so that any thread can cancel them.
class OpenWaits
{
public:
    /// One call's wait, known from construction to destruction.
    class Entry
    {
    public:
        Entry(const void *client, std::shared_ptr<ReplyWait> wait) : m_wait(std::move(wait))
        {
            const std::lock_guard lock(s_mutex);
            s_open.emplace_back(client, m_wait);
        }
        ~Entry()
        {
            const std::lock_guard lock(s_mutex);
            s_open.erase(std::find_if(s_open.begin(), s_open.end(),
                                      [this](const auto &open) { return open.second == m_wait; }));
        }
        Q_DISABLE_COPY_MOVE(Entry)

    private:
        const std::shared_ptr<ReplyWait> m_wait;
    };

    /// Cancels the waits of one client, or of all without one.
    static void cancel(const void *client = nullptr)
    {
        const std::lock_guard lock(s_mutex);
        for (const auto &[owner, wait] : s_open) {
            if (!client || owner == client)
                wait->cancel();
        }
    }

private:
    static inline std::mutex s_mutex; // guards what follows
    static inline std::vector<std::pair<const void *, std::shared_ptr<ReplyWait>>> s_open;
};

} // namespace VelqorPassPort
