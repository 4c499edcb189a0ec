// SPDX-License-Identifier: MIT
#include "passport/PassportCommunityError.h"

namespace VelqorPassPort {

namespace {

struct ServerWord
{
    QLatin1String word;
    CommunityErrorCode::ErrorCode code;
    QLatin1String name;
    QLatin1String message;
};

// The first hit decides, so the order is part of the behaviour: a text may hold several words.
// A wrong password has the code of a missing authorisation and the name "JsonErr"; hosts tell it
// apart by its message "pwdErr", so the odd pairing stays.
const ServerWord serverWords[] = {
    {QLatin1String("autherr"), CommunityErrorCode::AuthErr, QLatin1String("AuthErr"), {}},
    {QLatin1String("pwderr"), CommunityErrorCode::AuthErr, QLatin1String("JsonErr"),
     QLatin1String("pwdErr")},
    {QLatin1String("dberr"), CommunityErrorCode::DbErr, QLatin1String("dbErr"), {}},
    {QLatin1String("illegalerr"), CommunityErrorCode::IllegalErr, QLatin1String("illegalErr"), {}},
    {QLatin1String("unknownErr"), CommunityErrorCode::UnknownErr, QLatin1String("unknownErr"), {}},
};

} // namespace

void PassportCommunityError::setErrorCode(QString text)
{
    for (const ServerWord &known : serverWords) {
        if (!text.contains(known.word, Qt::CaseInsensitive))
            continue;
        errorCode = known.code;
        errorName = known.name;
        if (!known.message.isEmpty())
            errorMessage = known.message;
        return;
    }
    errorCode = CommunityErrorCode::JsonErr;
    errorName = text;
    errorMessage = text;
    errorData = QJsonDocument::fromJson(text.toUtf8());
}

} // namespace VelqorPassPort
