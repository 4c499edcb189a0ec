// SPDX-License-Identifier: MIT
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

/// Writes the line of an operation that failed or succeeded, and hands the record on.
inline PassportCommunityError logOutcome(PassportCommunityError record, const char *failure,
                                         const char *success)
{
    if (record.isError())
        logFailure(failure, record);
    else
        qCDebug(log_lp) << success;
    return record;
}

/// The same with what the operation brought behind the text of its success.
template <typename Value>
PassportCommunityError logOutcome(PassportCommunityError record, const char *failure,
                                  const char *success, const Value &value)
{
    if (record.isError())
        logFailure(failure, record);
    else
        qCDebug(log_lp) << success << value;
    return record;
}

} // namespace VelqorPassPort
