// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QVariantMap>

/// What each client of this host is set up with.
struct HostSettings
{
    QString passportDirectory; ///< without a trailing separator
    QVariantMap cloud;         ///< the cloud configuration
};
