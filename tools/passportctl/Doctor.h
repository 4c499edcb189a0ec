#pragma once

#include "Cloud.h"

/// Looks at everything a sign-in needs and prints what it finds: versions, TLS, certificates,
/// proxies, address, and what answers there and how fast. Fails when the service does not answer.
Exit examine(Cloud &cloud, const Output &output);
