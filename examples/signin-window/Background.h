// SPDX-License-Identifier: MIT
#pragma once

#include "HostSettings.h"

#include <passport/Passport.h>

#include <QtCore/QThread>

#include <functional>
#include <memory>

/// A thread for what nobody shall wait for, with a client of its own: one job at a time.
///
/// For web flows, which block their thread until the page is closed, and for requests beside those
/// of the window. Used from the window's thread. The destructor ends the requests of a job and
/// returns when the job has ended, which a web flow does with its page.
class Background
{
public:
    /// Called on the thread. What it tells the window goes through signals of the client or
    /// through queued calls.
    using Job = std::function<void(VelqorPassPort::Passport &client)>;

    explicit Background(HostSettings settings);
    ~Background();
    Q_DISABLE_COPY_MOVE(Background)

    bool isRunning() const { return m_thread && m_thread->isRunning(); }

    /// Starts a job, or returns false when one is running.
    bool start(const Job &job);

private:
    HostSettings m_settings;
    std::unique_ptr<QThread> m_thread;
};
