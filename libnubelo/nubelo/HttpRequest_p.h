// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

namespace Nubelo {

class Configuration;

/// One HTTP request, ready to be sent.
struct HttpRequest
{
    QByteArray method;
    QByteArray url;            ///< absolute and percent-encoded
    QList<QByteArray> headers; ///< the caller's own, one "Name: value" each; taken for credentials
    QByteArray body;           ///< JSON
    bool hasBody = false;
    bool isAddress =
        false; ///< an address instead of a named request: any answer's text is its result
};

/// Builds the request for `name` from the envelope. `method` is empty when the configuration
/// decides; `appendToUrl` goes behind the path. On failure the code, with the reason in `problem`.
Error::ErrorCode buildRequest(const Configuration &configuration, const QString &name,
                              const QByteArray &method, const QString &appendToUrl,
                              const QVariantMap &envelope, HttpRequest &request, QString &problem);

} // namespace Nubelo
