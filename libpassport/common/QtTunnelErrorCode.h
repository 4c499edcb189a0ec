// SPDX-License-Identifier: MIT
#pragma once

#include "Export.h"

#include <QtCore/QObject>

namespace VelqorPassPort {

/// The errors of the tunnel to the hub: the low two bytes of a 32-bit error code.
///
/// ErrorCommon turns the key names into texts through QMetaEnum, so their spelling is part of the
/// interface.
class PASSPORT_EXPORT QtTunnelErrorCode
{
    Q_GADGET

public:
    /// Values are fixed: the hub sends them.
    enum ErrorCode : int {
        NoError = 0,
        ProtocolError = 1,
        IdentifierError = 2,
        HubUnavailableError = 3,
        ParameterError = 4,
        AuthorityError = 5,
        TimeoutError = 6,
        NoReplierError = 7,
        NoCallbackerError = 8,
        DuplicateError = 9,
        NotRegisteredError = 10,
        ParseError = 11,
        SharedMemoryError = 12,
        UnknownError = 65535,
    };
    Q_ENUM(ErrorCode)
};

} // namespace VelqorPassPort
