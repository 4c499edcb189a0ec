// SPDX-License-Identifier: MIT
#if defined(__aarch64__) && defined(__linux__)

#include "crypto/kernels/Routines_p.h"

#include <asm/hwcap.h>
#include <sys/auxv.h>

bool VelqorPassPort::Kernels::Arm64::hasAes()
{
    return getauxval(AT_HWCAP) & HWCAP_AES;
}

#endif
