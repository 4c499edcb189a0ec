// SPDX-License-Identifier: MIT
#if defined(__x86_64__)

#include "crypto/kernels/Routines_p.h"

#include <cpuid.h>

namespace VelqorPassPort::Kernels::X86 {

bool hasAes()
{
    __builtin_cpu_init(); // a static initialiser may come before the runtime's own call
    return __builtin_cpu_supports("aes");
}

bool hasAvx2()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2"); // and the system saves the wide registers
}

bool hasVaes()
{
    // Not every supported compiler knows "vaes" by name: leaf 7, ECX bit 9.
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    return hasAes() && hasAvx2() && __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) &&
           (ecx & (1U << 9));
}

} // namespace VelqorPassPort::Kernels::X86

#endif
