// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QObject>

namespace Nubelo {

/// The numbers are the contract's; the names, but for NoError, are this library's own.
class Error
{
    Q_GADGET

public:
    enum ErrorCode {
        NoError = 0,
        Refused = 0x5000,
        TimedOut = 0x5003,
        Gone = 0x50cf,
        Unknown = 0x7000
    };
    Q_ENUM(ErrorCode)
};

} // namespace Nubelo
