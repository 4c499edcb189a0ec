// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

/// The same `size` bytes each time, without a pattern.
inline std::string someBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = 2463534242U;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = char(state >> 24);
    }
    return bytes;
}
