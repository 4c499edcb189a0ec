// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace VelqorPassPort {

/// Writes at most the given number of bytes and returns how many of them count.
using WriteResult = std::size_t (*)(void *writer, char *out);

std::string makeResult(std::size_t size, WriteResult write, void *writer);

/// The string that `writer(char *out)` writes: at most `size` bytes, and it returns how many count.
/// There is one allocation, and no filling with zeros first where the standard library can do
/// without.
template <typename Writer>
std::string makeResult(std::size_t size, Writer writer)
{
    const auto write = [](void *self, char *out) { return (*static_cast<Writer *>(self))(out); };
    return makeResult(size, write, &writer);
}

} // namespace VelqorPassPort
