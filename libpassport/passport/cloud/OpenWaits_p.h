#pragma once

#include "passport/cloud/ReplyWait_p.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace VelqorPassPort {

/// The waits of one client's calls in progress, so that any thread can cancel them.
class OpenWaits
{
public:
    /// One call's wait, known from construction to destruction.
    class Entry
    {
    public:
        Entry(std::shared_ptr<OpenWaits> waits, std::shared_ptr<ReplyWait> wait)
            : m_waits(std::move(waits))
            , m_wait(std::move(wait))
        {
            const std::lock_guard lock(m_waits->m_mutex);
            m_waits->m_open.push_back(m_wait);
        }
        ~Entry()
        {
            const std::lock_guard lock(m_waits->m_mutex);
            auto &open = m_waits->m_open;
            open.erase(std::find(open.begin(), open.end(), m_wait));
        }
        Q_DISABLE_COPY_MOVE(Entry)

    private:
        const std::shared_ptr<OpenWaits> m_waits;
        const std::shared_ptr<ReplyWait> m_wait;
    };

    void cancel()
    {
        const std::lock_guard lock(m_mutex);
        for (const auto &wait : m_open)
            wait->cancel();
    }

private:
    std::mutex m_mutex;
    std::vector<std::shared_ptr<ReplyWait>> m_open;
};

} // namespace VelqorPassPort
