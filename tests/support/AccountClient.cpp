// SPDX-License-Identifier: MIT
#include "support/AccountClient.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QUuid>

AccountClient::Reply AccountClient::post(const QString &path, const QJsonObject &body,
                                         const QString &token) const
{
    return m_emulator.http("POST", "/v1/user/" + path.toUtf8(), QJsonDocument(body).toJson(),
                           {"X-Auth-Token: " + token.toUtf8()});
}

AccountClient::Reply AccountClient::logIn(const QString &userName, const QString &password,
                                          const QString &phoneArea) const
{
    return post("login", {{"username", userName},
                          {"password", password},
                          {"phoneArea", phoneArea},
                          {"loginType", "VelqorPassPort"}});
}

AccountClient::Reply AccountClient::profile(const QString &token, const QByteArray &userId) const
{
    return post("info?userID=" + userId, {}, token);
}

QJsonObject AccountClient::solvedCaptcha(const QString &purpose, const QString &userName,
                                         const QString &phoneArea, const QByteArray &query) const
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_emulator.http("GET", "/v1/captcha/" + id.toLatin1() + "?p=" + purpose.toLatin1() + query);
    return {{"captcha", m_emulator.captchaAnswer(id)},
            {"uuid", purpose + "-" + id},
            {"username", userName},
            {"phoneArea", phoneArea},
            {"lang", "en"},
            {"source", purpose},
            {"loginType", "VelqorPassPort"}};
}

QJsonObject AccountClient::sentCode(const QString &purpose, const QString &userName,
                                    const QString &phoneArea) const
{
    const QJsonObject fields = solvedCaptcha(purpose, userName, phoneArea);
    const bool sent = word(post("code", fields)) == "ok";
    return with(fields, {{"validCode", sent ? m_emulator.latestCode() : QString()}});
}

QJsonObject AccountClient::with(QJsonObject object, const QJsonObject &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

QString AccountClient::word(const Reply &reply)
{
    const QJsonObject answer = reply.json();
    return answer.value("status") == "ok" ? "ok" : answer.value("result").toString();
}

QJsonValue AccountClient::result(const Reply &reply)
{
    return reply.json().value("result");
}

QString AccountClient::token(const Reply &reply)
{
    return result(reply).toObject().value("token").toString();
}
