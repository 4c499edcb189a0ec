#pragma once

// Qt is built without the thread sanitizer, which therefore cannot see that a posted event orders its
// sender before its receiver. These two say so at our own hand-overs, and do nothing in other builds:
// handOver() before posting, takeOver() as the first thing that the receiver does.

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
