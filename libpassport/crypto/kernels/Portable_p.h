#pragma once

#include "crypto/kernels/Kernel_p.h"

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
