#pragma once

#include "common/Log.h"
#include "passport/PassportCommunityError.h"

#include <QtCore/QDebug>

namespace VelqorPassPort {

/// The line of a failed operation: its text, then code, name, data and message.
inline void logFailure(const char *text, const PassportCommunityError &record)
{
    qCDebug(log_lp) << text << static_cast<int>(record.errorCode) << record.errorName
                    << record.errorData << record.errorMessage;
}

/// The line of an operation that has nothing more to say when it succeeds.
inline void logOutcome(const PassportCommunityError &record, const char *failure,
                       const char *success)
{
    if (record.errorCode != CommunityErrorCode::NoError)
        logFailure(failure, record);
    else
        qCDebug(log_lp) << success;
}

} // namespace VelqorPassPort
