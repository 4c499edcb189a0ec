// SPDX-License-Identifier: MIT
#pragma once

// Functions handed from one thread to another through Qt's event queue.
//
// Qt is built without the thread sanitizer, which therefore cannot see that a posted event orders
// its sender before its receiver. What tells it so is in this file and does nothing in other
// builds.

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>

#include <exception>
#include <utility>

#if defined(__SANITIZE_THREAD__)
#define PASSPORT_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define PASSPORT_THREAD_SANITIZER
#endif
#endif

#if defined(PASSPORT_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>
#endif

namespace RunOnThread {

// `order` is an address that stands for one hand-over.
#if defined(PASSPORT_THREAD_SANITIZER)
inline void release(void *order)
{
    __tsan_release(order);
}
inline void acquire(void *order)
{
    __tsan_acquire(order);
}
#else
inline void release(void *) {}
inline void acquire(void *) {}
#endif

/// Runs its function when it is destroyed: Qt does not deliver events without an application
/// object, but it destroys those that it takes from the queue.
template <typename Function>
class Event : public QEvent
{
public:
    explicit Event(Function function) : QEvent(ownType()), m_function(std::move(function)) {}
    ~Event() override
    {
        acquire(static_cast<QEvent *>(this));
        m_function();
    }
    Q_DISABLE_COPY_MOVE(Event)

private:
    static Type ownType()
    {
        static const int type = QEvent::registerEventType();
        return static_cast<Type>(type);
    }

    Function m_function;
};

} // namespace RunOnThread

/// Runs `function` on the thread of `object`, which must be another one and has an event loop, and
/// returns when it has run; what it throws is thrown here. False without an application object: Qt
/// then delivers nothing.
template <typename Function>
bool runOnThreadOf(QObject *object, Function &&function)
{
    bool ran = false;
    std::exception_ptr thrown;
    RunOnThread::release(&ran);
    QMetaObject::invokeMethod(
        object,
        [&] {
            RunOnThread::acquire(&ran);
            try {
                function();
            } catch (...) {
                thrown = std::current_exception();
            }
            ran = true;
            RunOnThread::release(&ran);
        },
        Qt::BlockingQueuedConnection);
    RunOnThread::acquire(&ran);
    if (thrown)
        std::rethrow_exception(thrown);
    return ran;
}

/// Has `function` run once on the thread of `object`, when its event loop comes to it; also without
/// an application object, and at the latest when `object` dies.
template <typename Function>
void postToThreadOf(QObject *object, Function function)
{
    auto *event = new RunOnThread::Event<Function>(std::move(function));
    RunOnThread::release(static_cast<QEvent *>(event));
    QCoreApplication::postEvent(object, event);
}
