// SPDX-License-Identifier: MIT
#pragma once

#include "Checks.h"

#include <nubelo/Configuration_p.h>

// What is known with the bundled request library alone.

/// Every member of the cloud configuration that the options give. Nothing when no request could be
/// sent with it.
std::optional<Nubelo::Configuration> checkMembers(const HostOptions &options,
                                                  const QVariantMap &overrides, Findings &findings);

/// The proxy and the certificates on the way to the service. Returns the proxy and where it comes
/// from, for telling the user.
QString checkRoute(const Nubelo::Configuration &configuration, Findings &findings);

/// What answers at the service's address: its clock, its certificate, and whether the address lacks
/// its "/v1". `answers`: the account service does. True when a finding says why it does not.
bool checkPeer(const Nubelo::Configuration &configuration, bool answers, Findings &findings);
