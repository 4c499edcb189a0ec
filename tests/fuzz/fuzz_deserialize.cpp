#include "crypto/EDData.h"

#include <cstdlib>
#include <string>

using namespace VelqorPassPort;

namespace {

constexpr std::size_t block = 16;
const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

/// Any bytes come back with the zeros of their padding; any text is unprotected up to its first
/// character outside the alphabet, whatever follows, into whole blocks that each depend on their
/// own characters alone.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const EDData codec;

    std::string padded = text;
    padded.resize((size + block - 1) / block * block);
    if (codec.global_deserialize(codec.global_serialize(text)) != padded)
        std::abort();

    const std::string bytes = codec.global_deserialize(text);
    const std::string accepted = text.substr(0, text.find_first_not_of(alphabet));
    if (bytes.size() % block != 0 || codec.global_deserialize(accepted) != bytes)
        std::abort();
    // 64 characters are three blocks.
    const std::size_t whole = accepted.size() / 64 * 64;
    const std::string first = codec.global_deserialize(accepted.substr(0, whole));
    if (first + codec.global_deserialize(accepted.substr(whole)) != bytes)
        std::abort();
    return 0;
}
