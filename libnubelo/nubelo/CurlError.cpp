#include "nubelo/CurlError_p.h"

namespace Nubelo {

namespace {

bool isConnecting(CURL *easy)
{
    curl_off_t microseconds = 0;
    curl_easy_getinfo(easy, CURLINFO_CONNECT_TIME_T, &microseconds);
    return microseconds == 0;
}

bool proxyAsksForCredentials(CURL *easy)
{
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_HTTP_CONNECTCODE, &status);
    return status == 407;
}

} // namespace

Error::ErrorCode codeOfCurlError(CURL *easy, CURLcode code, bool throughProxy)
{
    if (proxyAsksForCredentials(easy))
        return Error::ProxyAuthenticationRequiredError;
    switch (code) {
    case CURLE_COULDNT_CONNECT:
        return throughProxy ? Error::ProxyConnectionRefusedError : Error::ConnectionRefusedError;
    case CURLE_COULDNT_RESOLVE_PROXY:
        return Error::ProxyNotFoundError;
    case CURLE_COULDNT_RESOLVE_HOST:
        return Error::HostNotFoundError;
    case CURLE_OPERATION_TIMEDOUT:
        return throughProxy && isConnecting(easy) ? Error::ProxyTimeoutError : Error::TimeoutError;
    case CURLE_PROXY:
        return Error::ProxyConnectionClosedError;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_WRITE_ERROR: // the size limit cuts an answer short from this side
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return Error::RemoteHostClosedError;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return Error::SslHandshakeFailedError;
    case CURLE_URL_MALFORMAT:
        return Error::RequestParamsNotValid;
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
        default:
            // The chain was good, so it was the name: libcurl compares that by itself.
            return verification == 0 && code == CURLE_PEER_FAILED_VERIFICATION
                       ? QSslError::HostNameMismatch
                       : QSslError::UnspecifiedError;
        }
    };
    return {QSslError(reason())};
}

} // namespace Nubelo
