// SPDX-License-Identifier: MIT
#include "crypto/AESEncryption.h"
#include "crypto/kernels/Kernel_p.h"

#include "Bytes.h"

#include <QtTest/QtTest>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

using namespace VelqorPassPort::Kernels;

namespace {

const Kernel &chosenByInitialiser = activeKernel();

/// A page of memory with unmapped pages before and behind it: whoever reads or writes one byte too
/// many crashes.
class GuardedPage
{
public:
    GuardedPage()
        : m_base(static_cast<Byte *>(
              ::mmap(nullptr, 3 * m_size, PROT_NONE, MAP_PRIVATE | MAP_ANON, -1, 0)))
    {
        ::mprotect(m_base + m_size, m_size, PROT_READ | PROT_WRITE);
    }
    ~GuardedPage() { ::munmap(m_base, 3 * m_size); }
    Q_DISABLE_COPY(GuardedPage)

    /// So many bytes right before the end of the page.
    Byte *last(std::size_t size) const { return m_base + 2 * m_size - size; }
    Byte *first() const { return m_base + m_size; }

private:
    std::size_t m_size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    Byte *m_base;
};

RoundKeys roundKeys(const std::string &expanded)
{
    RoundKeys keys;
    keys.rounds = int(expanded.size() / 16) - 1;
    std::memcpy(keys.bytes.data(), expanded.data(), expanded.size());
    return keys;
}

} // namespace

class TestKernels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTheFastest() { QCOMPARE(&chosenByInitialiser, present().front()); }

    // With each other, and by the active one with the published vectors.
    void agree_data() { kernelRows(); }
    void agree()
    {
        for (const auto kind :
             {AESEncryption::AES_128, AESEncryption::AES_192, AESEncryption::AES_256}) {
            for (const auto mode :
                 {AESEncryption::ECB, AESEncryption::CBC, AESEncryption::CFB, AESEncryption::OFB})
                agreesWithTheActiveOne(kind, mode);
        }
    }

    void stayInsideTheirBuffers_data() { kernelRows(); }
    void stayInsideTheirBuffers()
    {
        QFETCH(int, index);
        const Kernel &kernel = *present().at(std::size_t(index));
        const RoundKeys keys = roundKeys(
            AESEncryption::ExpandKey(AESEncryption::AES_128, AESEncryption::ECB, someBytes(16)));
        const GuardedPage bytes;
        const GuardedPage text;
        const GuardedPage copy;
        for (std::size_t size = 0; size < 200; ++size) {
            const std::string expected = someBytes(size);
            const std::size_t characters = encodedSize(size);
            const std::size_t accepted = characters - (3 - size % 3) % 3;
            for (const bool atEnd : {true, false}) {
                Byte *in = atEnd ? bytes.last(size) : bytes.first();
                Byte *base64 = atEnd ? text.last(characters) : text.first();
                Byte *out = atEnd ? copy.last(size) : copy.first();
                std::memcpy(in, expected.data(), size);
                kernel.base64Encode(in, size, reinterpret_cast<char *>(base64));
                QCOMPARE(std::string(base64, base64 + characters),
                         QByteArray::fromStdString(expected).toBase64().toStdString());
                // Without "=": exactly `size` bytes.
                std::memmove(text.last(accepted), base64, accepted);
                const auto *unpadded = reinterpret_cast<const char *>(text.last(accepted));
                QCOMPARE(kernel.base64Decode(unpadded, accepted, out), size);
                QVERIFY(std::memcmp(out, expected.data(), size) == 0);
            }
            const std::size_t blocks = size % 40;
            for (const auto work : {kernel.ecbEncrypt, kernel.ecbDecrypt})
                work(keys, bytes.last(16 * blocks), copy.last(16 * blocks), blocks);
            for (const auto work : {kernel.cbcEncrypt, kernel.cbcDecrypt, kernel.cfbEncrypt,
                                    kernel.cfbDecrypt, kernel.ofb}) {
                work(keys, text.last(16), bytes.last(16 * blocks), copy.last(16 * blocks), blocks);
                work(keys, text.last(16), bytes.first(), copy.first(), blocks);
            }
        }
    }

private:
    void agreesWithTheActiveOne(AESEncryption::Aes kind, AESEncryption::Mode mode)
    {
        QFETCH(int, index);
        const Kernel &kernel = *present().at(std::size_t(index));
        const AESEncryption aes(kind, mode, AESEncryption::ZERO);
        const std::string expanded = aes.expandKey(someBytes(32));
        const RoundKeys keys = roundKeys(expanded);
        const Kernel::Chained encrypt[] = {nullptr, kernel.cbcEncrypt, kernel.cfbEncrypt,
                                           kernel.ofb};
        const Kernel::Chained decrypt[] = {nullptr, kernel.cbcDecrypt, kernel.cfbDecrypt,
                                           kernel.ofb};
        constexpr std::size_t Blocks = 70;
        const std::string text = someBytes(Blocks * 16), vector = someBytes(16);
        const std::string data = aes.encodeWithExpanedKey(text, expanded, vector);
        // Cut into two pieces at every place, with the output off any alignment.
        for (std::size_t cut = 0; cut <= Blocks; ++cut) {
            for (const bool encrypts : {true, false}) {
                const bool inverts = !encrypts && mode <= AESEncryption::CBC;
                const RoundKeys used = inverts ? invertedKeys(keys) : keys;
                std::string result = "off" + (encrypts ? text : data), chain = vector;
                auto *out = reinterpret_cast<Byte *>(&result[3]);
                const std::string &given = encrypts ? text : data;
                const auto *in = reinterpret_cast<const Byte *>(given.data());
                // Independent blocks are deciphered in place, as the library does it.
                const auto run = [&](std::size_t from, std::size_t blocks) {
                    Byte *at = out + 16 * from;
                    if (mode == AESEncryption::ECB)
                        (encrypts ? kernel.ecbEncrypt : kernel.ecbDecrypt)(used, at, at, blocks);
                    else
                        (encrypts ? encrypt : decrypt)[mode](
                            used, reinterpret_cast<Byte *>(&chain[0]), in + 16 * from, at, blocks);
                };
                run(0, cut);
                run(cut, Blocks - cut);
                QCOMPARE(result.substr(3), encrypts ? data : text);
            }
        }
    }

    /// The kernels of this machine, the fastest first.
    static std::vector<const Kernel *> present()
    {
        std::vector<const Kernel *> found{vaesKernel(), aesniKernel(), neonKernel(),
                                          portableKernel()};
        found.erase(std::remove(found.begin(), found.end(), nullptr), found.end());
        return found;
    }

    static void kernelRows()
    {
        QTest::addColumn<int>("index");
        const auto kernels = present();
        for (int i = 0; i < int(kernels.size()); ++i)
            QTest::addRow("%s", kernels[std::size_t(i)]->name) << i;
    }
};

QTEST_APPLESS_MAIN(TestKernels)
#include "tst_kernels.moc"
