#include "support/AccountClient.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QUuid>

AccountClient::Reply AccountClient::post(const QByteArray &path, const QJsonObject &body) const
{
    return m_emulator.http("POST", "/v1/user/" + path, QJsonDocument(body).toJson());
}

AccountClient::Reply AccountClient::logIn(const QString &userName, const QString &password) const
{
    return post("login", {{"username", userName},
                          {"password", password},
                          {"phoneArea", ""},
                          {"loginType", "VelqorPassPort"}});
}

AccountClient::Reply AccountClient::profile(const QString &token, const QByteArray &userId) const
{
    return m_emulator.http("POST", "/v1/user/info?userID=" + userId, {},
                           {"X-Auth-Token: " + token.toUtf8()});
}

QJsonObject AccountClient::solvedCaptcha(const QString &purpose, const QString &userName,
                                         const QByteArray &query) const
{
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QByteArray path = "captcha/" + id.toLatin1();
    m_emulator.http("GET", "/v1/" + path + "?p=" + purpose.toLatin1() + query);
    const QJsonObject captcha = result(m_emulator.http("GET", "/_dev/" + path)).toObject();
    if (captcha.isEmpty())
        return {};
    return {{"captcha", captcha.value("answer")},
            {"uuid", purpose + "-" + id},
            {"username", userName},
            {"phoneArea", "86"},
            {"lang", "en"},
            {"source", purpose},
            {"loginType", "VelqorPassPort"}};
}

QJsonObject AccountClient::sentCode(const QString &purpose, const QString &userName) const
{
    QJsonObject fields = solvedCaptcha(purpose, userName);
    if (fields.isEmpty() || word(post("code", fields)) != "ok")
        return {};
    const QJsonArray inbox = result(m_emulator.http("GET", "/_dev/inbox")).toArray();
    for (int i = inbox.size() - 1; i >= 0; --i) {
        const QJsonObject message = inbox.at(i).toObject();
        if (message.value("username") == userName && message.value("purpose") == purpose) {
            fields.insert("validCode", message.value("code"));
            return fields;
        }
    }
    return {};
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
