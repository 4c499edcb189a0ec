// SPDX-License-Identifier: MIT
#pragma once

#include "Export.h"

#include <QtCore/QLoggingCategory>

/// \file
/// Where the library logs to.

/// The library's one logging category, "velqor.passport.lib", with every message type enabled.
///
/// Created on first use; callable from any thread. A host filters it with Qt's logging rules.
/// The texts of a sign-in carry the session token: do not write this category to a shared place.
PASSPORT_EXPORT const QLoggingCategory &log_lp();
