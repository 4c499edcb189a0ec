// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QStringList>

/// The name that was probably meant by a mistyped one, whatever its letter case: the one with the
/// fewest letters added, left out, exchanged or swapped, empty when each has more than a third of
/// them so.
QString nearestName(const QString &typed, const QStringList &names);
