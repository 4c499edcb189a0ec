// SPDX-License-Identifier: MIT
#pragma once

#include <thread>
#include <vector>

/// Runs `function` with each of the numbers below `count`, at the same time, each on a thread of
/// its own that has no event loop; returns when all have ended.
template <typename Function>
void inThreads(int count, Function function)
{
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&function, number] { function(number); });
    for (std::thread &thread : threads)
        thread.join();
}
