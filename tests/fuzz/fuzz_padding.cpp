#include "crypto/AESEncryption.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

/// The first byte names the padding. Its removal never does more than cut bytes off the end, and
/// what a padding adds to a text it removes again.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
    const auto padding = static_cast<AESEncryption::Padding>(data[0] % 4);
    try {
        const std::string removed = AESEncryption::RemovePadding(text, padding);
        if (text.compare(0, removed.size(), removed) != 0)
            std::abort();
    } catch (const std::out_of_range &) {
    }
    const AESEncryption aes(AESEncryption::AES_128, AESEncryption::CBC, AESEncryption::PKCS7);
    const std::string key(16, 'k');
    if (aes.removePadding(aes.decode(aes.encode(text, key, key), key, key)) != text)
        std::abort();
    return 0;
}
