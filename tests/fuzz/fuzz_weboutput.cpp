// SPDX-License-Identifier: MIT
#include "web/WebOutput_p.h"

#include <algorithm>
#include <cstdlib>

using namespace VelqorPassPort;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

/// A chunk of the web tool's output. Whatever it holds, what is cut out of it stood in it.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    constexpr std::size_t pipeSize = 65536;
    const QByteArray chunk(reinterpret_cast<const char *>(data),
                           static_cast<int>(std::min(size, pipeSize)));
    const std::optional<QString> token =
        valueBetween(chunk, "openLoginURL_token_start", "openLoginURL_token_end");
    require(token.has_value() == (chunk.contains("openLoginURL_token_start") &&
                                  chunk.contains("openLoginURL_token_end")));
    if (token)
        require(chunk.contains("openLoginURL_token_start" + token->toLatin1()));

    const QString text = textOf(chunk);
    const AccountDetails details = accountDetails(text);
    require(text.startsWith(details.untilEnd) && !details.untilEnd.contains(QLatin1String("end")));
    require(details.untilEnd.endsWith(details.afterStart));
    require(details.parts.join(QLatin1Char(' ')) == details.afterStart);
    require(text.contains(details.userName()) && text.contains(details.phoneArea()));
    return 0;
}
