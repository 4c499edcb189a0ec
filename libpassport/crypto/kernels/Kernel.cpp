#include "crypto/kernels/Kernel_p.h"

#include <cstdlib>
#include <cstring>

namespace VelqorPassPort::Kernels {

namespace {

const Kernel &chosenKernel()
{
    const char *wanted = std::getenv("PASSPORT_CRYPTO_KERNEL");
    const Kernel *fastest = portableKernel();
    for (const auto candidate : {portableKernel, neonKernel, aesniKernel, vaesKernel}) {
        const Kernel *kernel = candidate();
        if (!kernel)
            continue;
        if (wanted && std::strcmp(kernel->name, wanted) == 0)
            return *kernel;
        fastest = kernel;
    }
    return *fastest;
}

} // namespace

const Kernel &activeKernel()
{
    static const Kernel &kernel = chosenKernel();
    return kernel;
}

} // namespace VelqorPassPort::Kernels
