// SPDX-License-Identifier: MIT
#include "crypto/Result_p.h"

namespace VelqorPassPort {

std::string makeResult(std::size_t size, WriteResult write, void *writer)
{
    std::string result;
#if defined(__cpp_lib_string_resize_and_overwrite)
    result.resize_and_overwrite(size, [=](char *out, std::size_t) { return write(writer, out); });
#else
    result.resize(size);
    result.resize(write(writer, result.data()));
#endif
    return result;
}

} // namespace VelqorPassPort
