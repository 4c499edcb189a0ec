// SPDX-License-Identifier: MIT
#pragma once

#include "Export.h"

#include <QtCore/QObject>

namespace VelqorPassPort {

/// The outcomes of the community (cloud account) module as 32-bit codes.
///
/// The key names reach callers as PassportCommunityError::errorName through QMetaEnum, so their
/// spelling is part of the interface, "EC_IsRuning" and "EC_ContentReSendError" included.
class PASSPORT_EXPORT CommunityErrorCode
{
    Q_GADGET

public:
    /// In the order of the modules that they come from; see docs/errors.md for what to do on each.
    enum ErrorCode : int {
        // What the account service itself reports.
        NoError = 0x0,
        JsonErr = 0x5070001,
        IllegalErr = 0x5070002,
        AuthErr = 0x5070003,
        ExistErr = 0x5070004,
        ParseErr = 0x5070005,
        IllegalRequesterErr = 0x5070006,
        DbErr = 0x5070007,
        UnknownErr = 0x5070008,
        UrlErr = 0x5070009,
        // The count goes on in decimal digits: clients in the field know 0x...10 and 0x...11.
        NotExistErr = 0x5070010,
        NetErr = 0x5070011,

        // Network errors, named after QNetworkReply::NetworkError.
        EC_ConnectionRefusedError = 0x5070101,
        EC_RemoteHostClosedError = 0x5070102,
        EC_HostNotFoundError = 0x5070103,
        EC_TimeoutError = 0x5070104,
        EC_OperationCanceledError = 0x5070105,
        EC_SslHandshakeFailedError = 0x5070106,
        EC_TemporaryNetworkFailureError = 0x5070107,
        EC_NetworkSessionFailedError = 0x5070108,
        EC_BackgroundRequestNotAllowedError = 0x5070109,
        EC_TooManyRedirectsError = 0x507010a,
        EC_InsecureRedirectError = 0x507010b,
        EC_UnknownNetworkError = 0x5070164,

        // Proxy errors.
        EC_ProxyConnectionRefusedError = 0x5070166,
        EC_ProxyConnectionClosedError = 0x5070167,
        EC_ProxyNotFoundError = 0x5070168,
        EC_ProxyTimeoutError = 0x5070169,
        EC_ProxyAuthenticationRequiredError = 0x507016a,
        EC_UnknownProxyError = 0x50701c8,

        // Content errors.
        EC_ContentAccessDenied = 0x50701ca,
        EC_ContentOperationNotPermittedError = 0x50701cb,
        EC_ContentNotFoundError = 0x50701cc,
        EC_AuthenticationRequiredError = 0x50701cd,
        EC_ContentReSendError = 0x50701ce,
        EC_ContentConflictError = 0x50701cf,
        EC_ContentGoneError = 0x50701d0,
        EC_UnknownContentError = 0x507022c,

        // Protocol and server errors.
        EC_ProtocolUnknownError = 0x507022e,
        EC_ProtocolInvalidOperationError = 0x507022f,
        EC_ProtocolFailure = 0x5070290,
        EC_InternalServerError = 0x5070292,
        EC_OperationNotImplementedError = 0x5070293,
        EC_ServiceUnavailableError = 0x5070294,
        EC_UnknownServerError = 0x50702f4,

        // What the request library refuses before anything is sent.
        EC_RequestNameNotExist = 0x5072101,
        EC_RequestNameRepetition = 0x5072102,
        EC_RequestParamsLack = 0x5072103,
        EC_RequestParamsTypeError = 0x5072104,
        EC_RequestParamsNotValid = 0x5072105,
        EC_GetProductLineInfoError = 0x5072106,
        EC_ConfigDataError = 0x5072107,
        EC_FileNotExist = 0x5072108,
        EC_FileNotOpen = 0x5072109,
        EC_DirNotExist = 0x507210a,
        EC_ServerNotConnect = 0x507210b,
        EC_IsStopped = 0x507210c,
        EC_IsAborted = 0x507210d,
        EC_IsRuning = 0x507210e,
    };
    Q_ENUM(ErrorCode)
};

} // namespace VelqorPassPort
