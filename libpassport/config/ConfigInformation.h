// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

/// \file
/// Small information files: flat JSON objects of texts, such as the remembered account.
///
/// Both functions may be called from any thread: one process-wide lock lets no read and no
/// read-modify-write of any file interleave. Other processes are not kept away. Paths are used as
/// given, and no directory is created. Values are stored as passed, without any protection.
///
/// Reading decodes GBK, writing encodes in the local 8-bit encoding. They differ because
/// files in the field were written both ways. ASCII comes back unchanged, other text need not.

/// The file's JSON object, with whatever values it holds. Empty when the file is missing, cannot be
/// opened or does not hold a JSON object.
PASSPORT_EXPORT QJsonObject g_getConfigInformation(QString path);

/// Sets one key to a text and rewrites the file, creating it if need be; other members stay.
/// Content that is not a JSON object is dropped: the next read would not understand it either.
///
/// True when the file could be opened for writing, whether or not the disk then took the text (when
/// it did not, the old content is put back). False, with the file untouched, when it cannot be
/// opened for reading or, with a critical log line, for writing.
PASSPORT_EXPORT bool g_setConfigInformation(QString key, QString value, QString path);
