// SPDX-License-Identifier: MIT
#include "crypto/EDData.h"
#include "crypto/kernels/Kernel_p.h"

#include <cstdlib>
#include <string>

using namespace VelqorPassPort;

/// Every kernel decodes any text to the same bytes, and these survive encoding and decoding.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const EDData codec;
    const std::string bytes = codec.base64_decode(text);
    for (const Kernels::Kernel *kernel :
         {Kernels::portableKernel(), Kernels::aesniKernel(), Kernels::neonKernel()}) {
        if (!kernel)
            continue;
        std::string decoded(Kernels::decodedSize(size), '\0');
        decoded.resize(kernel->base64Decode(text.data(), size,
                                            reinterpret_cast<Kernels::Byte *>(decoded.data())));
        if (decoded != bytes)
            std::abort();
    }
    const std::string encoded = codec.base64_encode(
        reinterpret_cast<const unsigned char *>(bytes.data()), static_cast<unsigned>(bytes.size()));
    if (codec.base64_decode(encoded) != bytes)
        std::abort();
    if (codec.global_deserialize(text).size() != Kernels::paddedSize(bytes.size()))
        std::abort();
    return 0;
}
