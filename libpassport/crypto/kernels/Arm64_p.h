#pragma once

#include "crypto/kernels/Kernel_p.h"

/// The routines for 64-bit Arm, whose every CPU has the vector unit that the base64 routines use.
namespace VelqorPassPort::Kernels::Arm64 {

bool hasAes(); ///< the crypto extension, which the cipher's routines need

void base64Encode(const Byte *in, std::size_t size, char *out);
std::size_t base64Decode(const char *in, std::size_t size, Byte *out);

} // namespace VelqorPassPort::Kernels::Arm64
