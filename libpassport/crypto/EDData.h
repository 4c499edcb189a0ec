// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <string>

namespace VelqorPassPort {

/// Turns byte strings into protected text and back, and moves whole files.
///
/// Protected text is base64 (RFC 4648, "=" padding, no line breaks) of AES-128-ECB ciphertext under
/// the library's fixed key, the value completed with zero bytes to whole blocks of 16. Objects have
/// no state: any number of threads may use one or many at the same time.
class PASSPORT_EXPORT EDData
{
public:
    /// Protected text of any bytes; empty for empty text.
    std::string global_serialize(const std::string &text) const;
    /// The bytes behind a protected text with the 0 to 15 zero bytes of its padding still attached.
    /// Text that is no protected text gives bytes without meaning: there is no error.
    std::string global_deserialize(const std::string &text) const;

    /// Base64 of that many bytes; empty for none.
    std::string base64_encode(const unsigned char *bytes, unsigned int length) const;
    /// Decodes up to the first character outside the alphabet ("=", a line break, ...) and ignores
    /// the rest. A last group of 2 or 3 characters gives 1 or 2 bytes, a single one nothing.
    std::string base64_decode(const std::string &text) const;

    /// Every byte of a file. A file that cannot be opened is reported by a line on standard output
    /// and gives an empty result, as an empty file does.
    std::string readFile(const std::string &path) const;
    /// Replaces a file's content. True means only that the file could be opened.
    bool writeFile(const std::string &path, const std::string &data) const;
};

} // namespace VelqorPassPort
