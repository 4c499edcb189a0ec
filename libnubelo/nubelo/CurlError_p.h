#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtNetwork/QSslError>

#include <curl/curl.h>

namespace Nubelo {

/// The code for a transfer that libcurl ended with `code`. `throughProxy`: a proxy was set by the
/// configuration, so that connecting means connecting to it.
Error::ErrorCode codeOfCurlError(CURL *easy, CURLcode code, bool throughProxy);

/// Why the peer of a failed TLS handshake was not trusted; never empty.
QList<QSslError> sslErrorsOf(CURL *easy, CURLcode code);

} // namespace Nubelo
