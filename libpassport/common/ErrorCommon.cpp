// SPDX-License-Identifier: MIT
#include "common/ErrorCommon.h"

#include "common/CommunityErrorCode.h"
#include "common/QtTunnelErrorCode.h"

#include <QtCore/QMetaEnum>

using VelqorPassPort::CommunityErrorCode;
using VelqorPassPort::QtTunnelErrorCode;

namespace {

constexpr unsigned int communityModule = 5;

unsigned int libraryBits(unsigned int code)
{
    return code & 0xffffU;
}

bool isTunnelError(unsigned int code)
{
    return (code & 0xff00U) == 0;
}

bool hasModuleError(unsigned int code)
{
    return (code & 0xff0000U) != 0;
}

QString enumeratorName(const QMetaObject &holder, unsigned int code)
{
    const QMetaEnum codes = holder.enumerator(holder.indexOfEnumerator("ErrorCode"));
    const char *const name = codes.valueToKey(static_cast<int>(code));
    return name ? QString::fromLatin1(name) : QStringLiteral("Undefined");
}

} // namespace

unsigned int ErrorCommon::getModuleCode(unsigned int code)
{
    return code >> 24U;
}

QString ErrorCommon::getLibErrStr(unsigned int code)
{
    const QString name = getLibErrStrWithoutNS(code);
    return isTunnelError(code) ? QStringLiteral("QtTunnelErrorCode::") + name : name;
}

QString ErrorCommon::getLibErrStrWithoutNS(unsigned int code)
{
    if (!isTunnelError(code))
        return QStringLiteral("UnknownLib_Error");
    return enumeratorName(QtTunnelErrorCode::staticMetaObject, libraryBits(code));
}

QString ErrorCommon::getModuleErrStr(unsigned int code)
{
    const unsigned int module = getModuleCode(code);
    if (module == communityModule) {
        return QStringLiteral("CommunityErrorCode::") + (hasModuleError(code)
                                                             ? getModuleErrStrWithoutNS(code)
                                                             : getLibErrStr(libraryBits(code)));
    }
    if (module == 0 && code != 0)
        return getLibErrStr(libraryBits(code));
    return getModuleErrStrWithoutNS(code);
}

QString ErrorCommon::getModuleErrStrWithoutNS(unsigned int code)
{
    const unsigned int module = getModuleCode(code);
    if (module == communityModule && hasModuleError(code))
        return enumeratorName(CommunityErrorCode::staticMetaObject, code);
    if (module != 0 && module != communityModule)
        return QStringLiteral("UnkownModule_Error"); // spelled so: hosts compare with this text
    if (code == 0)
        return QStringLiteral("NoError");
    return getLibErrStrWithoutNS(libraryBits(code));
}
