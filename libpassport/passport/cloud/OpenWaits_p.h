// SPDX-License-Identifier: MIT
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
            const std::lock_guard lock(registry().mutex);
            registry().open.emplace_back(client, m_wait);
        }
        ~Entry()
        {
            const std::lock_guard lock(registry().mutex);
            auto &open = registry().open;
            open.erase(std::find_if(open.begin(), open.end(),
                                    [this](const auto &one) { return one.second == m_wait; }));
        }
        Q_DISABLE_COPY_MOVE(Entry)

    private:
        const std::shared_ptr<ReplyWait> m_wait;
    };

    /// Cancels the waits of one client, or of all without one.
    static void cancel(const void *client = nullptr)
    {
        const std::lock_guard lock(registry().mutex);
        for (const auto &[owner, wait] : registry().open) {
            if (!client || owner == client)
                wait->cancel();
        }
    }

private:
    struct Registry
    {
        std::mutex mutex; // guards what follows
        std::vector<std::pair<const void *, std::shared_ptr<ReplyWait>>> open;
    };
    // Never destroyed: another thread may be in a call while the process exits.
    static Registry &registry()
    {
        static Registry &one = *new Registry;
        return one;
    }
};

} // namespace VelqorPassPort
