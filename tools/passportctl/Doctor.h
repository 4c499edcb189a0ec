#pragma once

#include "Host.h"

/// Looks at everything a sign-in needs and prints what it finds: versions, TLS, certificates,
/// proxies, address, and what answers there and how fast. Fails when the service does not answer.
Exit examine(Host &host, const Output &output);
