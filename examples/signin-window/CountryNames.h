// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QVariantMap>

/// The name of a country that the service sent, in the language that the window speaks; the
/// service's English one where there is no other.
QString countryName(const QVariantMap &country);
