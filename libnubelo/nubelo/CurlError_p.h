// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtNetwork/QSslError>

#include <curl/curl.h>

namespace Nubelo {

/// How far a transfer had come, where libcurl's code alone does not tell.
struct CurlSituation
{
    bool isThroughProxy;
    bool isRedirected;     ///< the address came from the peer
    bool isAsked;          ///< the connection stood, through a tunnel if need be
    bool isAnswerBegun;    ///< a line has come, be it from the proxy
    bool isHeaderComplete; ///< the header has come as a whole
};

/// The code for a transfer that libcurl ended with `code`.
Error::ErrorCode codeOfCurlError(CURL *easy, CURLcode code, const CurlSituation &situation);

/// Why the peer of a failed TLS handshake was not trusted; never empty.
QList<QSslError> sslErrorsOf(CURL *easy, CURLcode code);

} // namespace Nubelo
