// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Export.h"

#include <QtCore/QMetaType>
#include <QtCore/QObject>

namespace Nubelo {

/// The error codes of the request library.
///
/// Network codes follow QNetworkReply::NetworkError e: 0x5000 + e - 1 for e of 1 to 11 and
/// 0x5000 + e for e of 99 and above. Request codes (0x70xx) are what the library refuses before
/// anything is sent.
class NUBELO_EXPORT Error
{
    Q_GADGET

public:
    /// By range: the network, its proxies, what HTTP statuses say, and requests refused unsent.
    enum ErrorCode : int {
        NoError = 0,

        ConnectionRefusedError = 0x5000,
        RemoteHostClosedError = 0x5001,
        HostNotFoundError = 0x5002,
        TimeoutError = 0x5003,
        OperationCanceledError = 0x5004,
        SslHandshakeFailedError = 0x5005,
        TemporaryNetworkFailureError = 0x5006,
        NetworkSessionFailedError = 0x5007,
        BackgroundRequestNotAllowedError = 0x5008,
        TooManyRedirectsError = 0x5009,
        InsecureRedirectError = 0x500a,
        UnknownNetworkError = 0x5063,

        ProxyConnectionRefusedError = 0x5065,
        ProxyConnectionClosedError = 0x5066,
        ProxyNotFoundError = 0x5067,
        ProxyTimeoutError = 0x5068,
        ProxyAuthenticationRequiredError = 0x5069,
        UnknownProxyError = 0x50c7,

        ContentAccessDenied = 0x50c9,
        ContentOperationNotPermittedError = 0x50ca,
        ContentNotFoundError = 0x50cb,
        AuthenticationRequiredError = 0x50cc,
        ContentReSendError = 0x50cd,
        ContentConflictError = 0x50ce,
        ContentGoneError = 0x50cf,
        UnknownContentError = 0x512b,

        ProtocolUnknownError = 0x512d,
        ProtocolInvalidOperationError = 0x512e,
        ProtocolFailure = 0x518f,

        InternalServerError = 0x5191,
        OperationNotImplementedError = 0x5192,
        ServiceUnavailableError = 0x5193,
        UnknownServerError = 0x51f3,

        RequestNameNotExist = 0x7000,
        RequestNameRepetition = 0x7001,
        RequestParamsLack = 0x7002,
        RequestParamsTypeError = 0x7003,
        RequestParamsNotValid = 0x7004,
        GetProductLineInfoError = 0x7005,
        ConfigDataError = 0x7006,
        FileNotExist = 0x7007,
        FileNotOpen = 0x7008,
        DirNotExist = 0x7009,
        ServerNotConnect = 0x700a,
        IsStopped = 0x700b,
        IsAborted = 0x700c,
        IsRunning = 0x700d,
    };
    Q_ENUM(ErrorCode)
};

} // namespace Nubelo
