// SPDX-License-Identifier: MIT
#include "passport/cloud/CloudError_p.h"

#include <QtCore/QMetaEnum>

namespace VelqorPassPort {

namespace {

// The distance between the request library's codes and the community module's.
constexpr unsigned communityOffset = 0x0506B101;

// A time-out, an unknown request name and a failed product-line look-up: to a user all three are
// "no connection", and hosts show them as such.
constexpr int codesOfNoNet[] = {0x5003, 0x7000, 0x7005};

} // namespace

PassportCommunityError communityError(Nubelo::Error::ErrorCode code)
{
    PassportCommunityError record;
    const int number = static_cast<int>(code);
    for (const int noNet : codesOfNoNet) {
        if (number == noNet) {
            record.errorCode = CommunityErrorCode::NetErr;
            record.errorName = QStringLiteral("NetErr");
            return record;
        }
    }
    // Unsigned, so that a nonsense code from another implementation wraps instead of overflowing.
    const int shifted = static_cast<int>(static_cast<unsigned>(number) + communityOffset);
    record.errorCode = static_cast<CommunityErrorCode::ErrorCode>(shifted);
    record.errorName = QString::fromLatin1(
        QMetaEnum::fromType<CommunityErrorCode::ErrorCode>().valueToKey(shifted));
    return record;
}

const char *keyName(Nubelo::Error::ErrorCode code)
{
    // By name, so that an implementation may register the enumeration in either of Qt's ways.
    const QMetaObject &error = Nubelo::Error::staticMetaObject;
    return error.enumerator(error.indexOfEnumerator("ErrorCode"))
        .valueToKey(static_cast<int>(code));
}

} // namespace VelqorPassPort
