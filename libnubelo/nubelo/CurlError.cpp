// SPDX-License-Identifier: MIT
#include "nubelo/CurlError_p.h"

#include <QtCore/QByteArray>

#include <new>

namespace Nubelo {

namespace {

bool proxyAsksForCredentials(CURL *easy)
{
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_HTTP_CONNECTCODE, &status);
    return status == 407;
}

// libcurl says "out of memory" for a header line that is longer than it holds, too.
Error::ErrorCode codeOfMissingMemory(const CurlSituation &situation)
{
    if (!situation.isAsked || situation.isHeaderComplete)
        return Error::UnknownNetworkError;
    try {
        QByteArray asMuch;
        asMuch.reserve(256 * 1024);
        return Error::RemoteHostClosedError;
    } catch (const std::bad_alloc &) {
        return Error::UnknownNetworkError;
    }
}

} // namespace

Error::ErrorCode codeOfCurlError(CURL *easy, CURLcode code, const CurlSituation &situation)
{
    if (proxyAsksForCredentials(easy))
        return Error::ProxyAuthenticationRequiredError;
    switch (code) {
    case CURLE_COULDNT_CONNECT:
        return situation.isThroughProxy ? Error::ProxyConnectionRefusedError
                                        : Error::ConnectionRefusedError;
    case CURLE_COULDNT_RESOLVE_PROXY:
        return Error::ProxyNotFoundError;
    case CURLE_COULDNT_RESOLVE_HOST:
        return Error::HostNotFoundError;
    case CURLE_OPERATION_TIMEDOUT:
        return situation.isThroughProxy && !situation.isAnswerBegun ? Error::ProxyTimeoutError
                                                                    : Error::TimeoutError;
    case CURLE_PROXY:
        return Error::ProxyConnectionClosedError;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_ABORTED_BY_CALLBACK: // closed without an answer to what must not be sent twice
#if LIBCURL_VERSION_NUM >= 0x080600
    case CURLE_TOO_LARGE: // a header line
#endif
        return Error::RemoteHostClosedError;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return Error::SslHandshakeFailedError;
    case CURLE_OUT_OF_MEMORY:
        return codeOfMissingMemory(situation);
    case CURLE_URL_MALFORMAT:
        return situation.isRedirected ? Error::ProtocolFailure : Error::RequestParamsNotValid;
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer that does not even start like HTTP
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return Error::ProtocolFailure;
    default:
        return Error::UnknownNetworkError;
    }
}

QList<QSslError> sslErrorsOf(CURL *easy, CURLcode code)
{
    long verification = 0;
    curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &verification);
    const auto reason = [&] {
        // The numbers are OpenSSL's X509_V_ERR_ codes, which libcurl hands out as they are.
        switch (verification) {
        case 9:
            return QSslError::CertificateNotYetValid;
        case 10:
            return QSslError::CertificateExpired;
        case 18:
            return QSslError::SelfSignedCertificate;
        case 19:
            return QSslError::SelfSignedCertificateInChain;
        case 20:
            return QSslError::UnableToGetLocalIssuerCertificate;
        case 21:
            return QSslError::UnableToVerifyFirstCertificate;
        case 23:
            return QSslError::CertificateRevoked;
        case 0:
        case 1:
            // libcurl compares the name by itself, and that before it looks at the chain's result:
            // the value is still the one it starts from.
            return code == CURLE_PEER_FAILED_VERIFICATION ? QSslError::HostNameMismatch
                                                          : QSslError::UnspecifiedError;
        default:
            return QSslError::UnspecifiedError;
        }
    };
    return {QSslError(reason())};
}

} // namespace Nubelo
