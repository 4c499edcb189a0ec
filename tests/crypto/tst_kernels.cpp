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

const std::string &firstVector()
{
    static const std::string vector = someBytes(16);
    return vector;
}

/// The modes of SP 800-38A put together from the plain round steps.
struct Reference
{
    AESEncryption aes;
    std::string keys;

    std::string encrypt(int mode, const std::string &text)
    {
        std::string result;
        std::string chain = firstVector();
        for (std::size_t at = 0; at < text.size(); at += 16) {
            const std::string block = text.substr(at, 16);
            std::string out;
            if (mode == AESEncryption::ECB) {
                out = aes.cipher(keys, block);
            } else if (mode == AESEncryption::CBC) {
                out = chain = aes.cipher(keys, AESEncryption::byteXor(block, chain));
            } else {
                chain = aes.cipher(keys, chain);
                out = AESEncryption::byteXor(chain, block);
                if (mode == AESEncryption::CFB)
                    chain = out;
            }
            result += out;
        }
        return result;
    }
};

} // namespace

class TestKernels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTheFastest();
    void agreeWithTheRoundSteps_data() { kernelRows(); }
    void agreeWithTheRoundSteps();
    void stayInsideTheirBuffers_data() { kernelRows(); }
    void stayInsideTheirBuffers();

private:
    void agreesWithTheRoundSteps(AESEncryption::Aes kind);
    static const Kernel &kernelAt(int index) { return *present().at(std::size_t(index)); }
    static const std::vector<const Kernel *> &present();
    static void kernelRows();
};

/// The kernels of this machine, the fastest first.
const std::vector<const Kernel *> &TestKernels::present()
{
    static const auto kernels = [] {
        std::vector<const Kernel *> found{vaesKernel(), aesniKernel(), neonKernel(),
                                          portableKernel()};
        found.erase(std::remove(found.begin(), found.end(), nullptr), found.end());
        return found;
    }();
    return kernels;
}

void TestKernels::kernelRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(present().size()); ++i)
        QTest::addRow("%s", kernelAt(i).name) << i;
}

void TestKernels::isTheFastest()
{
    QCOMPARE(&chosenByInitialiser, present().front());
}

void TestKernels::agreeWithTheRoundSteps()
{
    for (int aes = 0; aes < 3; ++aes)
        agreesWithTheRoundSteps(AESEncryption::Aes(aes));
}

void TestKernels::agreesWithTheRoundSteps(AESEncryption::Aes kind)
{
    QFETCH(int, index);
    const Kernel &kernel = kernelAt(index);
    const std::string expanded = AESEncryption::ExpandKey(kind, AESEncryption::ECB, someBytes(32));
    Reference reference{AESEncryption(kind, AESEncryption::ECB, AESEncryption::ZERO), expanded};
    const RoundKeys keys = roundKeys(expanded);
    const RoundKeys inverted = invertedKeys(keys);
    const Kernel::Chained chainedEncrypt[] = {nullptr, kernel.cbcEncrypt, kernel.cfbEncrypt,
                                              kernel.ofb};
    const Kernel::Chained chainedDecrypt[] = {nullptr, kernel.cbcDecrypt, kernel.cfbDecrypt,
                                              kernel.ofb};

    constexpr std::size_t Blocks = 70;
    const std::string text = someBytes(Blocks * 16);
    const auto *in = reinterpret_cast<const Byte *>(text.data());
    for (int mode = 0; mode < 4; ++mode) {
        const std::string data = reference.encrypt(mode, text);
        const auto *dataBytes = reinterpret_cast<const Byte *>(data.data());
        const auto run = [&](bool encrypts, Byte *chain, const Byte *from, Byte *to,
                             std::size_t blocks) {
            const bool inverts = !encrypts && mode <= AESEncryption::CBC;
            const RoundKeys &used = inverts ? inverted : keys;
            if (mode == AESEncryption::ECB)
                (encrypts ? kernel.ecbEncrypt : kernel.ecbDecrypt)(used, from, to, blocks);
            else
                (encrypts ? chainedEncrypt : chainedDecrypt)[mode](used, chain, from, to, blocks);
        };
        // Cut into two pieces at every place, with the output off any alignment.
        for (std::size_t cut = 0; cut <= Blocks; ++cut) {
            std::string result(3 + text.size(), '\0');
            auto *out = reinterpret_cast<Byte *>(&result[3]);
            for (const bool encrypts : {true, false}) {
                std::string vector = firstVector();
                auto *chain = reinterpret_cast<Byte *>(&vector[0]);
                // Independent blocks are deciphered in place, as the library does it.
                const Byte *from = encrypts ? in : mode == AESEncryption::ECB ? out : dataBytes;
                run(encrypts, chain, from, out, cut);
                run(encrypts, chain, from + 16 * cut, out + 16 * cut, Blocks - cut);
                QCOMPARE(result.substr(3), encrypts ? data : text);
            }
        }
    }
}

void TestKernels::stayInsideTheirBuffers()
{
    QFETCH(int, index);
    const Kernel &kernel = kernelAt(index);
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

QTEST_APPLESS_MAIN(TestKernels)
#include "tst_kernels.moc"
