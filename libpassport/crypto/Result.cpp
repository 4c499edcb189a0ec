#include "crypto/Result_p.h"

namespace VelqorPassPort {

namespace {

/// From here on, the first touch of so many small pages costs more than all work on the bytes.
constexpr std::size_t LargeSize = std::size_t(8) << 20;

} // namespace

std::string makeResult(std::size_t size, WriteResult write, void *writer)
{
    std::string result;
    result.reserve(size);
    if (size >= LargeSize)
        adviseLargePages(result.data(), size);
#if defined(__cpp_lib_string_resize_and_overwrite)
    result.resize_and_overwrite(size, [=](char *out, std::size_t) { return write(writer, out); });
#else
    result.resize(size);
    result.resize(write(writer, result.data()));
#endif
    return result;
}

} // namespace VelqorPassPort
