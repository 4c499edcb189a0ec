// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"
#include "ConfigMgr.h"

#include <memory>

/// Holds the one configuration manager of the process.
///
/// init() and release() are called while the library starts and shuts down, on one thread: the
/// pointer is not guarded. A copy keeps its manager alive after release().
class PASSPORT_EXPORT ServiceLocator
{
public:
    /// Puts a new manager, which has loaded nothing yet, in the place of any earlier one.
    static void init();

    /// Lets go of the manager, if there is one.
    static void release();

    /// The manager, empty before init() and after release().
    static std::shared_ptr<ConfigMgr> configMgr();

    /// What configMgr() returns; set by init() and release() alone.
    static std::shared_ptr<ConfigMgr> g_cfgMgr;
};
