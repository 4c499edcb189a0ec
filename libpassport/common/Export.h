// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

/// Marks what the shared library offers; everything else stays hidden.
#if defined(PASSPORT_LIBRARY)
#define PASSPORT_EXPORT Q_DECL_EXPORT
#else
#define PASSPORT_EXPORT Q_DECL_IMPORT
#endif
