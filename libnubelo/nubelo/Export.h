// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

/// Marks what the shared library offers; everything else stays hidden.
#if defined(NUBELO_LIBRARY)
#define NUBELO_EXPORT Q_DECL_EXPORT
#else
#define NUBELO_EXPORT Q_DECL_IMPORT
#endif
