// SPDX-License-Identifier: MIT
#pragma once

#include "../common/CommunityErrorCode.h"
#include "../common/Export.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace VelqorPassPort {

/// The outcome of a cloud or facade operation.
///
/// A plain value without a thread of its own; every operation that can fail returns one.
struct PASSPORT_EXPORT PassportCommunityError
{
    /// Success, or the kind of failure. Look at errorMessage first: many words of the service share
    /// JsonErr.
    CommunityErrorCode::ErrorCode errorCode = CommunityErrorCode::NoError;
    /// A server word, a fixed word or the key name of errorCode; empty on success.
    QString errorName;
    /// "pwdErr" for a wrong password, the service's whole text with JsonErr; otherwise empty, since
    /// errorCode says all.
    QString errorMessage;
    /// The same text parsed as JSON; null when there is none or it is not JSON.
    QJsonDocument errorData;

    /// True for every outcome but success.
    bool isError() const { return errorCode != CommunityErrorCode::NoError; }

    /// Fills the record from the error word of a failed answer.
    ///
    /// Known words are searched for as substrings, ignoring case, and leave the fields alone that
    /// they say nothing about. Any other text becomes JsonErr and is kept whole, also when it is
    /// empty.
    void setErrorCode(QString text);
};

} // namespace VelqorPassPort

Q_DECLARE_METATYPE(VelqorPassPort::PassportCommunityError)
