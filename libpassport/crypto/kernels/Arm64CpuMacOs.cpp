// SPDX-License-Identifier: MIT
#if defined(__aarch64__) && defined(__APPLE__)

#include "crypto/kernels/Routines_p.h"

#include <sys/sysctl.h>

bool VelqorPassPort::Kernels::Arm64::hasAes()
{
    int present = 0;
    std::size_t size = sizeof(present);
    if (sysctlbyname("hw.optional.arm.FEAT_AES", &present, &size, nullptr, 0) != 0)
        return true; // systems that do not know the name run on CPUs that all have the extension
    return present != 0;
}

#endif
