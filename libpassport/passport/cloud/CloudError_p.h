// SPDX-License-Identifier: MIT
#pragma once

#include "passport/PassportCommunityError.h"

#include <nubelo/Error.h>

namespace VelqorPassPort {

// Codes that the client itself reports. By number, since an implementation of the request library
// may call them otherwise.
constexpr auto callCanceled = static_cast<Nubelo::Error::ErrorCode>(0x5004);
constexpr auto callAborted = static_cast<Nubelo::Error::ErrorCode>(0x700C);
constexpr auto callNotAllowed = static_cast<Nubelo::Error::ErrorCode>(0x512E);

/// The record for a code of the request library; a code without a community counterpart keeps its
/// number and has an empty name. Callable from any thread.
PassportCommunityError communityError(Nubelo::Error::ErrorCode code);

/// The key name of a code of the request library, for log lines; null when it has none.
const char *keyName(Nubelo::Error::ErrorCode code);

} // namespace VelqorPassPort
