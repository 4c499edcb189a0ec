// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"
#include "crypto/EDData.h"
#include "crypto/kernels/Kernel_p.h"

#include <benchmark/benchmark.h>
#include <openssl/aes.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// Each piece of work stands twice, as "<work>/<size>/ours" and "<work>/<size>/peer", for
// scripts/bench to divide. The peer is OpenSSL's EVP interface; for the cipher in plain C++ it is
// AES_encrypt, the table code that OpenSSL falls back to on a CPU without AES instructions.

namespace {

using VelqorPassPort::EDData;
using namespace VelqorPassPort::Kernels;

const std::string Key("0123456789abcdef");
const std::string Vector("fedcba9876543210");

const Byte *bytesOf(const std::string &text)
{
    return reinterpret_cast<const Byte *>(text.data());
}

std::string someText(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>((i * 2654435761U) >> 11);
    return text;
}

using Context = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

enum class Direction { Encode, Decode };

Context makeContext(const EVP_CIPHER *cipher, const Byte *key, Direction direction)
{
    Context context(EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), cipher, nullptr, key, bytesOf(Vector),
                      direction == Direction::Encode ? 1 : 0);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    return context;
}

const EVP_CIPHER *peerCipher(AESEncryption::Mode mode)
{
    switch (mode) {
    case AESEncryption::CBC:
        return EVP_aes_128_cbc();
    case AESEncryption::CFB:
        return EVP_aes_128_cfb128();
    case AESEncryption::OFB:
        return EVP_aes_128_ofb();
    default:
        return EVP_aes_128_ecb();
    }
}

/// Whole texts through the public class: allocation of the result, key expansion and all.
void oursMode(benchmark::State &state, AESEncryption::Mode mode, Direction direction)
{
    const std::string text = someText(static_cast<std::size_t>(state.range(0)));
    const AESEncryption aes(AESEncryption::AES_128, mode, AESEncryption::ZERO);
    for (auto _ : state) {
        benchmark::DoNotOptimize(direction == Direction::Encode ? aes.encode(text, Key, Vector)
                                                                : aes.decode(text, Key, Vector));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void peerMode(benchmark::State &state, AESEncryption::Mode mode, Direction direction)
{
    const std::string text = someText(static_cast<std::size_t>(state.range(0)));
    const EVP_CIPHER *cipher = peerCipher(mode);
    for (auto _ : state) {
        const Context context = makeContext(cipher, bytesOf(Key), direction);
        std::string result;
        result.resize(text.size());
        int size = 0;
        EVP_CipherUpdate(context.get(), reinterpret_cast<Byte *>(result.data()), &size,
                         bytesOf(text), static_cast<int>(text.size()));
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

/// The bare routines, into memory that is there already.
void oursBlocks(benchmark::State &state, const Kernel *kernel)
{
    const std::string text = someText(static_cast<std::size_t>(state.range(0)));
    std::vector<Byte> out(text.size());
    const std::string expanded =
        AESEncryption::ExpandKey(AESEncryption::AES_128, AESEncryption::ECB, Key);
    RoundKeys keys{};
    std::copy(expanded.begin(), expanded.end(), keys.bytes.begin());
    keys.rounds = 10;
    for (auto _ : state) {
        kernel->ecbEncrypt(keys, bytesOf(text), out.data(), text.size() / BlockSize);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void peerBlocks(benchmark::State &state)
{
    const std::string text = someText(static_cast<std::size_t>(state.range(0)));
    std::vector<Byte> out(text.size());
    const Context context = makeContext(EVP_aes_128_ecb(), bytesOf(Key), Direction::Encode);
    for (auto _ : state) {
        int size = 0;
        EVP_CipherUpdate(context.get(), out.data(), &size, bytesOf(text),
                         static_cast<int>(text.size()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void peerTables(benchmark::State &state)
{
    const std::string text = someText(static_cast<std::size_t>(state.range(0)));
    std::vector<Byte> out(text.size());
    AES_KEY key;
    AES_set_encrypt_key(bytesOf(Key), 128, &key);
    for (auto _ : state) {
        for (std::size_t at = 0; at < text.size(); at += BlockSize)
            AES_encrypt(bytesOf(text) + at, &out[at], &key);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void oursBase64Encode(benchmark::State &state)
{
    const std::string bytes = someText(static_cast<std::size_t>(state.range(0)));
    const EDData data;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            data.base64_encode(bytesOf(bytes), static_cast<unsigned>(bytes.size())));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void oursBase64Decode(benchmark::State &state)
{
    const std::string bytes = someText(static_cast<std::size_t>(state.range(0)));
    const EDData data;
    const std::string text =
        data.base64_encode(bytesOf(bytes), static_cast<unsigned>(bytes.size()));
    for (auto _ : state)
        benchmark::DoNotOptimize(data.base64_decode(text));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

std::string peerEncoded(const Byte *bytes, std::size_t size)
{
    std::string text;
    text.resize(encodedSize(size) + 1);
    const int written =
        EVP_EncodeBlock(reinterpret_cast<Byte *>(text.data()), bytes, static_cast<int>(size));
    text.resize(static_cast<std::size_t>(written));
    return text;
}

std::string peerDecoded(const std::string &text)
{
    std::string bytes;
    bytes.resize(text.size() / 4 * 3);
    EVP_DecodeBlock(reinterpret_cast<Byte *>(bytes.data()), bytesOf(text),
                    static_cast<int>(text.size()));
    return bytes;
}

void peerBase64Encode(benchmark::State &state)
{
    const std::string bytes = someText(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(peerEncoded(bytesOf(bytes), bytes.size()));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void peerBase64Decode(benchmark::State &state)
{
    const std::string bytes = someText(static_cast<std::size_t>(state.range(0)));
    const std::string text = peerEncoded(bytesOf(bytes), bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(peerDecoded(text));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void oursProtect(benchmark::State &state, Direction direction)
{
    const EDData data;
    std::string text = someText(static_cast<std::size_t>(state.range(0)));
    if (direction == Direction::Decode)
        text = data.global_serialize(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(direction == Direction::Encode ? data.global_serialize(text)
                                                                : data.global_deserialize(text));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

/// What somebody would write with EVP for the same result.
std::string peerCrypt(const std::string &text, Direction direction)
{
    const Context context = makeContext(EVP_aes_128_ecb(), bytesOf(Key), direction);
    std::string result;
    result.resize(text.size());
    int size = 0;
    EVP_CipherUpdate(context.get(), reinterpret_cast<Byte *>(result.data()), &size, bytesOf(text),
                     static_cast<int>(text.size()));
    result.resize(static_cast<std::size_t>(size));
    return result;
}

std::string peerProtected(const std::string &text)
{
    const std::string data = peerCrypt(text, Direction::Encode);
    return peerEncoded(bytesOf(data), data.size());
}

void peerProtect(benchmark::State &state, Direction direction)
{
    std::string text = someText(static_cast<std::size_t>(state.range(0)));
    if (direction == Direction::Decode)
        text = peerProtected(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(direction == Direction::Encode
                                     ? peerProtected(text)
                                     : peerCrypt(peerDecoded(text), Direction::Decode));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <typename Ours, typename Peer>
void pair(const std::string &work, std::int64_t size, Ours ours, Peer peer)
{
    const std::string name = work + '/' + std::to_string(size);
    benchmark::RegisterBenchmark((name + "/ours").c_str(), ours)->Arg(size);
    benchmark::RegisterBenchmark((name + "/peer").c_str(), peer)->Arg(size);
}

void registerModes()
{
    const char *names[] = {"ECB", "CBC", "CFB", "OFB"};
    for (int value = 0; value < 4; ++value) {
        const auto mode = static_cast<AESEncryption::Mode>(value);
        for (const auto direction : {Direction::Encode, Direction::Decode}) {
            const bool encodes = direction == Direction::Encode;
            pair(
                std::string("AES-128-") + names[value] + (encodes ? " encode" : " decode"),
                mode == AESEncryption::ECB ? 64 << 10 : 1 << 20,
                [=](benchmark::State &state) { oursMode(state, mode, direction); },
                [=](benchmark::State &state) { peerMode(state, mode, direction); });
        }
    }
}

void registerKernels()
{
    for (const Kernel *kernel : {vaesKernel(), aesniKernel(), neonKernel(), portableKernel()}) {
        if (!kernel)
            continue;
        pair(
            std::string("ECB blocks, ") + kernel->name, 64 << 10,
            [=](benchmark::State &state) { oursBlocks(state, kernel); },
            kernel == portableKernel() ? peerTables : peerBlocks);
    }
}

} // namespace

int main(int argc, char **argv)
{
    registerKernels();
    registerModes();
    pair("base64 encode", 64 << 10, oursBase64Encode, peerBase64Encode);
    pair("base64 decode", 64 << 10, oursBase64Decode, peerBase64Decode);
    for (const std::int64_t size : {64, 1 << 10, 1 << 20, 64 << 20}) {
        for (const auto direction : {Direction::Encode, Direction::Decode}) {
            pair(
                direction == Direction::Encode ? "protect" : "unprotect", size,
                [=](benchmark::State &state) { oursProtect(state, direction); },
                [=](benchmark::State &state) { peerProtect(state, direction); });
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
