// SPDX-License-Identifier: MIT
#pragma once

#include "Export.h"

#include <QtCore/QString>

/// Splits 32-bit error codes and names them.
///
/// A code is made of four bytes, from the highest down: module (0 none, 5 the community module),
/// module error (where it is set, the whole code is a CommunityErrorCode), library (0 the tunnel)
/// and library error (a QtTunnelErrorCode). For hosts: nothing in the library calls these.
/// Callable from any thread.
class PASSPORT_EXPORT ErrorCommon
{
public:
    /// The module byte.
    static unsigned int getModuleCode(unsigned int code);

    /// "QtTunnelErrorCode::" with the name of the low 16 bits, or with "Undefined" when no
    /// enumerator has that value; "UnknownLib_Error" for a library other than the tunnel.
    ///
    /// The library byte is tested first, so UnknownError (65535) is never named: hosts know its
    /// code as "UnknownLib_Error".
    static QString getLibErrStr(unsigned int code);

    /// As getLibErrStr(), without the prefix.
    static QString getLibErrStrWithoutNS(unsigned int code);

    /// "CommunityErrorCode::" with the name of the module error, or with getLibErrStr() where the
    /// community module passes on a library error; "UnkownModule_Error" for another module. Without
    /// a module "NoError" for 0, else getLibErrStr() of the low 16 bits.
    static QString getModuleErrStr(unsigned int code);

    /// As getModuleErrStr(), without the prefixes.
    static QString getModuleErrStrWithoutNS(unsigned int code);
};
