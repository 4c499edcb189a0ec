#pragma once

// Qt is built without the thread sanitizer, which therefore cannot see that a posted event orders
// its sender before its receiver. These two say so at our own hand-overs, and do nothing in other
// builds: handOver() before posting, takeOver() as the first thing that the receiver does.

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

namespace HandOver {
inline char order; // its address stands for all posted events
} // namespace HandOver

inline void handOver()
{
    __tsan_release(&HandOver::order);
}

inline void takeOver()
{
    __tsan_acquire(&HandOver::order);
}

#else

inline void handOver() {}
inline void takeOver() {}

#endif

/// A value inside of a posted functor. The functor is moved on its way, behind an announcement made
/// before it is posted; the value announces itself anew wherever it comes to rest.
template <typename Value>
class HandedOver
{
public:
    explicit HandedOver(Value value) : m_value(std::move(value)) { handOver(); }
    HandedOver(HandedOver &&other) noexcept : m_value(std::move(other.m_value)) { handOver(); }
    HandedOver &operator=(HandedOver &&) = delete;
    ~HandedOver() = default;

    /// For the receiver, first of all.
    const Value &take() const
    {
        takeOver();
        return m_value;
    }

private:
    Value m_value;
};
