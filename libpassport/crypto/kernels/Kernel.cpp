// SPDX-License-Identifier: MIT
#include "crypto/kernels/Kernel_p.h"

namespace VelqorPassPort::Kernels {

namespace {

const Kernel &fastestKernel()
{
    for (const auto candidate : {vaesKernel, aesniKernel, neonKernel}) {
        if (const Kernel *kernel = candidate())
            return *kernel;
    }
    return *portableKernel();
}

} // namespace

const Kernel &activeKernel()
{
    static const Kernel &kernel = fastestKernel();
    return kernel;
}

} // namespace VelqorPassPort::Kernels
