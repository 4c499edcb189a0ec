// SPDX-License-Identifier: MIT
#include "Emulator.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

namespace {

QJsonObject lastOf(const QJsonValue &list)
{
    return list.toArray().last().toObject();
}

} // namespace

QJsonValue Emulator::ask(Host &host, const QString &call, const QVariantMap &body, QString *refusal)
{
    QVariant result;
    const QUrl url = QUrl(host.address()).resolved(QUrl(QStringLiteral("/_dev/") + call));
    const auto record =
        host.client().requestNubelo(result, url.toString(), Nubelo::Manager::Get, body);
    if (refusal)
        *refusal = record.errorMessage;
    const QJsonObject answer = QJsonDocument::fromJson(result.toString().toUtf8()).object();
    return answer.isEmpty() ? QJsonValue(QJsonValue::Undefined)
                            : answer.value(QStringLiteral("result"));
}

QString Emulator::captchaText(Host &host)
{
    // Newest first; the recorded requests, which name it too, may be longer than an answer may be.
    const QJsonValue captchas = ask(host, QStringLiteral("captchas?limit=1"));
    return captchas[0][QStringLiteral("answer")].toString();
}

QString Emulator::verificationCode(Host &host)
{
    return lastOf(ask(host, QStringLiteral("inbox"))).value(QStringLiteral("code")).toString();
}
