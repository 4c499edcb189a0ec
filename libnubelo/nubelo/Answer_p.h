// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QVariantMap>
#include <QtNetwork/QSslError>

namespace Nubelo {

/// What came back for one HTTP request.
struct HttpAnswer
{
    Error::ErrorCode error =
        Error::NoError; ///< the transfer failed; the rest is then not to be used
    QList<QSslError> sslErrors;
    int httpStatus = 0;
    QByteArray body;
};

/// How a reply ends; what its signals carry.
struct Outcome
{
    Error::ErrorCode code = Error::NoError;
    QVariantMap map;
    QList<QSslError> sslErrors;
};

/// The code for an HTTP status, NoError below 400.
Error::ErrorCode codeOfHttpStatus(int status);

/// How a reply ends with `answer`. An answer of the service's form is delivered whatever its HTTP
/// status; `isAddress` takes the text of any body for the result.
Outcome outcomeOf(const HttpAnswer &answer, bool isAddress);

/// The service's answer to a call that needed no network.
Outcome success();

} // namespace Nubelo
