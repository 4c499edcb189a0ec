// SPDX-License-Identifier: MIT
#include "crypto/EDData.h"

#include "common/Log.h"
#include "crypto/AESEncryption.h"
#include "crypto/Result_p.h"
#include "crypto/kernels/Kernel_p.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

namespace VelqorPassPort {

using Kernels::activeKernel;
using Kernels::BlockSize;
using Kernels::Byte;
using Kernels::decodedSize;
using Kernels::encodedSize;
using Kernels::paddedSize;
using Kernels::RoundKeys;

namespace {

/// Cipher and base64 take turns on pieces that stay in the first-level cache. Whole blocks and
/// whole base64 groups fit without rest, so that the pieces join without a seam.
constexpr std::size_t PieceBytes = 6144;
constexpr std::size_t PieceCharacters = encodedSize(PieceBytes);
static_assert(PieceBytes % 48 == 0 && PieceBytes % 256 == 0);

/// The key of every protected value, expanded once for both directions.
struct LibraryKey
{
    RoundKeys encryption;
    RoundKeys decryption;

    static const LibraryKey &instance()
    {
        static const LibraryKey key;
        return key;
    }

private:
    LibraryKey()
    {
        constexpr char bytes[] = "\x0B\x05\x11\x02\x27\x0E\x19\x1C\x03\x0A\x26\x07\x13\x22\x06\x18";
        const std::string expanded = AESEncryption::ExpandKey(
            AESEncryption::AES_128, AESEncryption::ECB, std::string(bytes, BlockSize));
        encryption.rounds = 10;
        std::memcpy(encryption.bytes.data(), expanded.data(), expanded.size());
        decryption = Kernels::invertedKeys(encryption);
    }
};

/// Enciphers a piece and its padding; `out` has room for whole blocks.
void encipher(const Kernels::Kernel &kernel, const Byte *in, std::size_t size, Byte *out)
{
    const RoundKeys &keys = LibraryKey::instance().encryption;
    const std::size_t whole = size / BlockSize * BlockSize;
    kernel.ecbEncrypt(keys, in, out, whole / BlockSize);
    if (whole == size)
        return;
    std::array<Byte, BlockSize> last{};
    std::memcpy(last.data(), in + whole, size - whole);
    kernel.ecbEncrypt(keys, last.data(), out + whole, 1);
}

} // namespace

std::string EDData::global_serialize(const std::string &text) const
{
    const std::size_t size = encodedSize(paddedSize(text.size()));
    return makeResult(size, [&](char *out) {
        const auto &kernel = activeKernel();
        alignas(32) std::array<Byte, PieceBytes> piece;
        for (std::size_t at = 0; at < text.size(); at += PieceBytes) {
            const std::size_t length = std::min(PieceBytes, text.size() - at);
            encipher(kernel, reinterpret_cast<const Byte *>(text.data() + at), length,
                     piece.data());
            kernel.base64Encode(piece.data(), paddedSize(length), out + encodedSize(at));
        }
        return size;
    });
}

std::string EDData::global_deserialize(const std::string &text) const
{
    return makeResult(paddedSize(decodedSize(text.size())), [&](char *result) {
        const auto &kernel = activeKernel();
        const RoundKeys &keys = LibraryKey::instance().decryption;
        auto *out = reinterpret_cast<Byte *>(result);
        std::size_t written = 0;
        for (std::size_t at = 0; at < text.size(); at += PieceCharacters) {
            const std::size_t length = std::min(PieceCharacters, text.size() - at);
            const std::size_t bytes = kernel.base64Decode(text.data() + at, length, out + written);
            const std::size_t padded = paddedSize(bytes);
            // A short last block is completed with zero bytes.
            std::fill(out + written + bytes, out + written + padded, Byte(0));
            kernel.ecbDecrypt(keys, out + written, out + written, padded / BlockSize);
            written += padded;
            if (bytes < PieceBytes)
                break;
        }
        return written;
    });
}

std::string EDData::base64_encode(const unsigned char *bytes, unsigned int length) const
{
    const std::size_t size = encodedSize(length);
    return makeResult(size, [=](char *out) {
        activeKernel().base64Encode(bytes, length, out);
        return size;
    });
}

std::string EDData::base64_decode(const std::string &text) const
{
    return makeResult(decodedSize(text.size()), [&](char *out) {
        return activeKernel().base64Decode(text.data(), text.size(), reinterpret_cast<Byte *>(out));
    });
}

std::string EDData::readFile(const std::string &path) const
{
    std::ifstream file(path, std::ios::in | std::ios::binary);
    if (!file.is_open()) {
        std::cout << "readfile fail!" << std::endl;
        return {};
    }
    std::string content;
    std::error_code noRegularFile;
    const auto size = std::filesystem::file_size(path, noRegularFile);
    if (!noRegularFile)
        content.reserve(size);
    std::array<char, 32768> piece;
    while (file.read(piece.data(), piece.size()) || file.gcount() > 0)
        content.append(piece.data(), static_cast<std::size_t>(file.gcount()));
    return content;
}

bool EDData::writeFile(const std::string &path, const std::string &data) const
{
    qCDebug(log_lp, "mireth01 edData.writeFile start:");
    std::ofstream file(path, std::ios::out | std::ios::binary | std::ios::trunc);
    qCDebug(log_lp, "mireth01 edData.ofstream declared:");
    if (!file.is_open()) {
        qCDebug(log_lp, "edData.writeFile open failed:");
        return false;
    }
    qCDebug(log_lp, "mireth01 edData.ofstream opened:");
    file.write(data.data(), static_cast<std::streamsize>(data.size()));
    // "declared" once more: those who read these logs know the line after a write by it.
    qCDebug(log_lp, "mireth01 edData.ofstream declared:");
    file.flush();
    qCDebug(log_lp, "mireth01 edData.ofstream flushed:");
    file.close();
    qCDebug(log_lp, "edData.writeFile close file:");
    return true;
}

} // namespace VelqorPassPort
