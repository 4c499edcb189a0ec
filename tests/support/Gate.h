// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QSemaphore>

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
