// SPDX-License-Identifier: MIT
#pragma once

#include "crypto/kernels/Kernel_p.h"

// The routines of each CPU family, of which its kernel is made.

/// What any CPU can run, in plain C++; the other kernels finish their tails with it.
///
/// The cipher looks key-dependent values up in tables of 4 KiB. Its time depends on what the caches
/// hold and so, a little, on key and text: somebody who can time it on the same machine can learn
/// about the key. The kernels with AES instructions do not have this weakness.
namespace VelqorPassPort::Kernels::Portable {

void ecbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks);
void ecbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks);
void cbcEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cbcDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cfbEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cfbDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void ofb(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);

void base64Encode(const Byte *in, std::size_t size, char *out);
std::size_t base64Decode(const char *in, std::size_t size, Byte *out);

} // namespace VelqorPassPort::Kernels::Portable

/// The routines for 64-bit x86. A routine may run only where the question named beside it says yes.
namespace VelqorPassPort::Kernels::X86 {

bool hasAes(); ///< AES-NI
bool hasAvx2();
bool hasVaes(); ///< AES-NI on registers of two blocks, and AVX2

// hasAes()
void ecbEncrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks);
void ecbDecrypt(const RoundKeys &keys, const Byte *in, Byte *out, std::size_t blocks);
void cbcEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cbcDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cfbEncrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void cfbDecrypt(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);
void ofb(const RoundKeys &keys, Byte *vector, const Byte *in, Byte *out, std::size_t blocks);

// hasAvx2()
void base64Encode(const Byte *in, std::size_t size, char *out);
std::size_t base64Decode(const char *in, std::size_t size, Byte *out);

} // namespace VelqorPassPort::Kernels::X86

/// The routines for 64-bit Arm, whose every CPU has the vector unit that the base64 routines use.
namespace VelqorPassPort::Kernels::Arm64 {

bool hasAes(); ///< the crypto extension, which the cipher's routines need

void base64Encode(const Byte *in, std::size_t size, char *out);
std::size_t base64Decode(const char *in, std::size_t size, Byte *out);

} // namespace VelqorPassPort::Kernels::Arm64
