// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"

#include "crypto/Result_p.h"
#include "crypto/kernels/Kernel_p.h"

#include <array>
#include <cstring>
#include <stdexcept>

using VelqorPassPort::makeResult;
using VelqorPassPort::Kernels::activeKernel;
using VelqorPassPort::Kernels::BlockSize;
using VelqorPassPort::Kernels::Byte;
using VelqorPassPort::Kernels::Kernel;
using VelqorPassPort::Kernels::paddedSize;
using VelqorPassPort::Kernels::RoundKeys;

namespace {

RoundKeys roundKeys(const std::string &expandedKey, int rounds, int expandedKeyLength)
{
    const auto length = static_cast<std::size_t>(expandedKeyLength);
    if (expandedKey.size() < length)
        throw std::out_of_range("AESEncryption: expanded key too short");
    RoundKeys keys;
    keys.rounds = rounds;
    std::memcpy(keys.bytes.data(), expandedKey.data(), length);
    return keys;
}

/// One direction of one mode: which routine works on the blocks and with which keys.
class BlockWorker
{
public:
    BlockWorker(Kernel::Independent blocks, const RoundKeys &keys) : m_blocks(blocks), m_keys(keys)
    {
    }
    BlockWorker(Kernel::Chained blocks, const RoundKeys &keys, const std::string &iv)
        : m_chainedBlocks(blocks)
        , m_keys(keys)
    {
        std::memcpy(m_vector.data(), iv.data(), BlockSize);
    }

    void run(const char *text, char *result, std::size_t size)
    {
        const auto *in = reinterpret_cast<const Byte *>(text);
        auto *out = reinterpret_cast<Byte *>(result);
        if (m_blocks)
            m_blocks(m_keys, in, out, size / BlockSize);
        else
            m_chainedBlocks(m_keys, m_vector.data(), in, out, size / BlockSize);
    }

private:
    Kernel::Independent m_blocks = nullptr;
    Kernel::Chained m_chainedBlocks = nullptr;
    RoundKeys m_keys;
    std::array<Byte, BlockSize> m_vector{};
};

BlockWorker encoder(AESEncryption::Mode mode, const RoundKeys &keys, const std::string &iv)
{
    const Kernel &kernel = activeKernel();
    switch (mode) {
    case AESEncryption::CBC:
        return {kernel.cbcEncrypt, keys, iv};
    case AESEncryption::CFB:
        return {kernel.cfbEncrypt, keys, iv};
    case AESEncryption::OFB:
        return {kernel.ofb, keys, iv};
    default:
        return {kernel.ecbEncrypt, keys};
    }
}

BlockWorker decoder(AESEncryption::Mode mode, const RoundKeys &keys, const std::string &iv)
{
    const Kernel &kernel = activeKernel();
    switch (mode) {
    case AESEncryption::CBC:
        return {kernel.cbcDecrypt, invertedKeys(keys), iv};
    case AESEncryption::CFB:
        return {kernel.cfbDecrypt, keys, iv};
    case AESEncryption::OFB:
        return {kernel.ofb, keys, iv};
    default:
        return {kernel.ecbDecrypt, invertedKeys(keys)};
    }
}

bool isUsable(AESEncryption::Mode mode, const std::string &iv)
{
    if (mode == AESEncryption::ECB)
        return true;
    const int value = mode;
    return iv.size() == BlockSize && value > AESEncryption::ECB && value <= AESEncryption::OFB;
}

} // namespace

AESEncryption::AESEncryption(Aes aes, Mode mode, Padding padding)
    : m_columns(4)
    , m_blockSize(16)
    , m_aes(aes)
    , m_mode(mode)
    , m_padding(padding)
{
    const int kind = aes;
    m_keyWords = kind == AES_192 ? 6 : kind == AES_256 ? 8 : 4;
    m_keyLength = 4 * m_keyWords;
    m_rounds = m_keyWords + 6;
    m_expandedKeyLength = m_blockSize * (m_rounds + 1);
}

std::string AESEncryption::Crypt(Aes aes, Mode mode, const std::string &text,
                                 const std::string &key, const std::string &iv, Padding padding)
{
    return AESEncryption(aes, mode, padding).encode(text, key, iv);
}

std::string AESEncryption::Decrypt(Aes aes, Mode mode, const std::string &data,
                                   const std::string &key, const std::string &iv, Padding padding)
{
    return AESEncryption(aes, mode, padding).decode(data, key, iv);
}

std::string AESEncryption::ExpandKey(Aes aes, Mode mode, const std::string &key)
{
    return AESEncryption(aes, mode, ZERO).expandKey(key);
}

std::string AESEncryption::encode(const std::string &text, const std::string &key,
                                  const std::string &iv) const
{
    return encodeWithExpanedKey(text, expandKey(key), iv);
}

std::string AESEncryption::decode(const std::string &data, const std::string &key,
                                  const std::string &iv) const
{
    return decodeWithExpanedKey(data, expandKey(key), iv);
}

std::string AESEncryption::encodeWithExpanedKey(const std::string &text,
                                                const std::string &expandedKey,
                                                const std::string &iv) const
{
    const std::size_t whole = text.size() / BlockSize * BlockSize;
    // Only the remainder counts, so that texts beyond the range of int are padded too.
    std::string last = text.substr(whole);
    last += getPadding(static_cast<int>(last.size()), m_blockSize);
    const std::size_t size = whole + last.size();
    if (!isUsable(m_mode, iv) || size == 0)
        return {};
    const RoundKeys keys = roundKeys(expandedKey, m_rounds, m_expandedKeyLength);
    return makeResult(size, [&, worker = encoder(m_mode, keys, iv)](char *out) mutable {
        worker.run(text.data(), out, whole);
        worker.run(last.data(), out + whole, last.size());
        return size;
    });
}

std::string AESEncryption::decodeWithExpanedKey(const std::string &data,
                                                const std::string &expandedKey,
                                                const std::string &iv) const
{
    const std::size_t whole = data.size() / BlockSize * BlockSize;
    std::string last = data.substr(whole);
    if (!isUsable(m_mode, iv) || data.empty())
        return {};
    last.resize(paddedSize(last.size()));
    const std::size_t size = whole + last.size();
    const bool streaming = m_mode == CFB || m_mode == OFB;
    const RoundKeys keys = roundKeys(expandedKey, m_rounds, m_expandedKeyLength);
    return makeResult(size, [&, worker = decoder(m_mode, keys, iv)](char *out) mutable {
        worker.run(data.data(), out, whole);
        worker.run(last.data(), out + whole, last.size());
        return streaming ? data.size() : size;
    });
}

std::string AESEncryption::getPadding(int length, int blockSize) const
{
    if (blockSize < 1)
        return {};
    const int rest = length % blockSize;
    const int missing = rest > 0 ? blockSize - rest : -rest;
    const auto count = static_cast<std::size_t>(missing);
    switch (static_cast<int>(m_padding)) {
    case PKCS7: {
        const int added = missing > 0 ? missing : blockSize;
        return std::string(static_cast<std::size_t>(added), static_cast<char>(added));
    }
    case ISO:
        return missing > 0 ? '\x80' + std::string(count - 1, '\0') : std::string();
    default:
        return std::string(count, '\0');
    }
}

std::string AESEncryption::removePadding(const std::string &text) const
{
    return RemovePadding(text, m_padding);
}

std::string AESEncryption::RemovePadding(const std::string &text, Padding padding)
{
    if (text.empty())
        return text;
    switch (static_cast<int>(padding)) {
    case ZERO: {
        const std::size_t last = text.find_last_not_of('\0');
        if (last == std::string::npos)
            throw std::out_of_range("AESEncryption: nothing but zero padding");
        return text.substr(0, last + 1);
    }
    case PKCS7: {
        const auto count = static_cast<Byte>(text.back());
        if (count > text.size() || count >= 0x80)
            throw std::out_of_range("AESEncryption: padding count out of range");
        return text.substr(0, text.size() - count);
    }
    case ISO: {
        const std::size_t last = text.find_last_not_of('\0');
        const bool marked = last != std::string::npos && text[last] == '\x80';
        return marked ? text.substr(0, last) : text;
    }
    default:
        return text;
    }
}
