#include "crypto/Result_p.h"

#if defined(__linux__)

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

void VelqorPassPort::adviseLargePages(char *memory, std::size_t size)
{
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::size_t skipped = (page - start % page) % page;
    // A system that refuses goes on with small pages.
    if (skipped < size)
        ::madvise(memory + skipped, size - skipped, MADV_HUGEPAGE);
}

#else

void VelqorPassPort::adviseLargePages(char *, std::size_t) {}

#endif
