// SPDX-License-Identifier: MIT
#include "http/Answer.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

Answer jsonAnswer(const QString &status, const QJsonValue &result, int httpStatus)
{
    const QJsonObject envelope{{QStringLiteral("status"), status},
                               {QStringLiteral("result"), result}};
    Answer answer;
    answer.httpStatus = httpStatus;
    answer.body = QJsonDocument(envelope).toJson(QJsonDocument::Compact);
    return answer;
}

} // namespace

Answer okAnswer(const QJsonValue &result)
{
    return jsonAnswer(QStringLiteral("ok"), result, 200);
}

Answer failAnswer(const QString &text, int httpStatus)
{
    Answer answer = jsonAnswer(QStringLiteral("fail"), text, httpStatus);
    answer.word = text;
    return answer;
}
