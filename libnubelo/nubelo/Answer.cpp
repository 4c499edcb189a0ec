// SPDX-License-Identifier: MIT
#include "nubelo/Answer_p.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Nubelo {

Error::ErrorCode codeOfHttpStatus(int status)
{
    switch (status) {
    case 400:
        return Error::ProtocolInvalidOperationError;
    case 401:
        return Error::AuthenticationRequiredError;
    case 403:
        return Error::ContentAccessDenied;
    case 404:
        return Error::ContentNotFoundError;
    case 405:
        return Error::ContentOperationNotPermittedError;
    case 407:
        return Error::ProxyAuthenticationRequiredError;
    case 409:
        return Error::ContentConflictError;
    case 410:
        return Error::ContentGoneError;
    case 500:
        return Error::InternalServerError;
    case 501:
        return Error::OperationNotImplementedError;
    case 503:
        return Error::ServiceUnavailableError;
    default:
        break;
    }
    if (status >= 500)
        return Error::UnknownServerError;
    return status >= 400 ? Error::UnknownContentError : Error::NoError;
}

Outcome success()
{
    return {Error::NoError, {{QStringLiteral("status"), QStringLiteral("ok")}}, {}};
}

Outcome outcomeOf(const HttpAnswer &answer, bool isAddress)
{
    if (answer.error != Error::NoError)
        return {answer.error, {}, answer.sslErrors};

    Outcome outcome;
    outcome.code = codeOfHttpStatus(answer.httpStatus);
    const QJsonObject object = QJsonDocument::fromJson(answer.body).object();
    const bool isServiceAnswer = object.value(QLatin1String("status")).isString();
    if (isAddress && outcome.code == Error::NoError) {
        outcome = success();
        outcome.map.insert(QStringLiteral("result"), QString::fromUtf8(answer.body));
    } else if (isServiceAnswer) {
        outcome.map = object.toVariantMap();
    } else if (outcome.code == Error::NoError) {
        outcome.code = Error::ProtocolFailure;
    }
    return outcome;
}

} // namespace Nubelo
