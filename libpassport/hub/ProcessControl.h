// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// \file
/// Finding and ending programs by name, through the platform's own "ps" and "killall".
///
/// Callable from any thread; nothing is shared between calls.

/// True when the name occurs anywhere in the listing of all processes, letter case included; blocks
/// for the run of "ps", at most 30 s.
///
/// Part of another program's name or path counts too, and the list of process ids is left as it was
/// passed: callers expect no more of the listing than a substring.
PASSPORT_EXPORT bool g_checkProcessRunning(const QString &name,
                                           QList<unsigned long long> &processIds);

/// Asks for the end of all processes of that name and returns at once; the outcome is not known.
/// For a hub or a web tool that is ended on exit.
PASSPORT_EXPORT void g_killProcess(QString name);

/// The same, for a web tool that is closed while the library goes on.
PASSPORT_EXPORT void g_terminateProcess(QString name);
