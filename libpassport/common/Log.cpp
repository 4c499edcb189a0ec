// SPDX-License-Identifier: MIT
#include "common/Log.h"

Q_LOGGING_CATEGORY(log_lp, "velqor.passport.lib")
