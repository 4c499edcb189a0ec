#pragma once

#include "passport/PassportCommunityError.h"

#include <nubelo/Error.h>

namespace VelqorPassPort {

/// The record for a code of the request library; a code without a community counterpart keeps its
/// number and has an empty name. Callable from any thread.
PassportCommunityError communityError(Nubelo::Error::ErrorCode code);

/// The key name of a code of the request library, for log lines; null when it has none.
const char *keyName(Nubelo::Error::ErrorCode code);

} // namespace VelqorPassPort
