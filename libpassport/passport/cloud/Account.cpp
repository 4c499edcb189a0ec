// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

#include "common/Log.h"

#include <QtCore/QPointer>

namespace VelqorPassPort {

namespace {

// What the service calls the kind of account, and what an answer to a sign-in is to hold.
QString loginType()
{
    return QStringLiteral("VelqorPassPort");
}

QVariantMap signInParams()
{
    return {{QStringLiteral("withPerms"), true}, {QStringLiteral("withDentals"), true}};
}

enum class As { Text, Flag, TextList };

struct ProfileField
{
    const char *received;
    const char *stored;
    As type;
};

// The service speaks in snake case here and there; hosts know the camel-case names.
const ProfileField profileFields[] = {
    {"country", "country", As::Text},
    {"defaultDentalOrderReceive", "defaultDentalOrderReceive", As::Flag},
    {"email", "email", As::Text},
    // The text form and not the list: hosts store it and hand it back as it is.
    {"factory_objs", "factoryObjs", As::Text},
    {"lastIP", "lastIP", As::Text},
    {"lastLogin", "lastLogin", As::Text},
    {"nick_name", "nickName", As::Text},
    {"oems", "oems", As::TextList},
    {"perms", "perms", As::TextList},
    {"phone", "phone", As::Text},
    {"phone_area", "phoneArea", As::Text},
    {"source", "source", As::Text},
    {"status", "status", As::Flag},
    {"token", "token", As::Text},
    {"user_id", "userID", As::Text},
};

QVariant converted(const QVariant &value, As type)
{
    switch (type) {
    case As::Flag:
        return value.toBool();
    case As::TextList:
        return value.toStringList();
    case As::Text:
        break;
    }
    return value.toString();
}

} // namespace

PassportCommunityError PassportNubelo::logIn(const QString &username, const QString &password,
                                             const QString &phoneArea, QVariantMap &userInfo,
                                             bool isRemember)
{
    Q_UNUSED(isRemember)
    const QVariantMap body{{QStringLiteral("username"), username},
                           {QStringLiteral("password"), password},
                           {QStringLiteral("phoneArea"), phoneArea},
                           {QStringLiteral("loginType"), loginType()}};
    QVariant result;
    PassportCommunityError record = post(result, QStringLiteral("userLogin"), body, signInParams());
    if (record.isError())
        return record;

    keepAccount(result.toMap());
    // The user is signed in, with or without the full profile: its record is not the sign-in's,
    // unless a slot that ran meanwhile destroyed this object.
    const QPointer<PassportNubelo> self(this);
    const PassportCommunityError profile = reqGetUserInfo(userInfo, QStringLiteral("product"));
    return self ? record : profile;
}

PassportCommunityError PassportNubelo::reqCodeLogIn(const QString &username,
                                                    const QString &phoneArea,
                                                    const QString &captcha,
                                                    const QString &validCode, QVariantMap &userInfo,
                                                    QString source)
{
    Q_UNUSED(source)
    const QVariantMap body{
        {QStringLiteral("username"), username},
        {QStringLiteral("validCode"), validCode},
        {QStringLiteral("phoneArea"), phoneArea},
        {QStringLiteral("loginType"), loginType()},
        {QStringLiteral("captcha"), captcha},
        {QStringLiteral("uuid"), linkUuid(QStringLiteral("login"), m_captchaId)}};
    QVariant result;
    PassportCommunityError record =
        post(result, QStringLiteral("userCodeLogin"), body, signInParams());
    if (record.isError())
        return record;

    keepAccount(result.toMap());
    // Unlike a password's, a code's sign-in is reported as its profile query went.
    const QPointer<PassportNubelo> self(this);
    PassportCommunityError profile = reqGetUserInfo(userInfo, QStringLiteral("product"));
    if (self)
        userInfo = m_userInfo;
    return profile;
}

void PassportNubelo::keepAccount(QVariantMap account)
{
    account.insert(QStringLiteral("source"), QStringLiteral("product"));
    account.insert(QStringLiteral("status"), true);
    setUserInfo(account);
    m_token = account.value(QStringLiteral("token")).toString();
    qCDebug(log_lp) << "token changed" << m_token;
}

PassportCommunityError PassportNubelo::logOut()
{
    // The token stays: the service ends the session by itself, and hosts may still ask for the
    // profile.
    m_userInfo.insert(QStringLiteral("status"), false);
    return {};
}

void PassportNubelo::setToken(QString token)
{
    if (token != m_token)
        m_token = token;
}

QString PassportNubelo::token() const
{
    return m_token;
}

PassportCommunityError PassportNubelo::reqGetUserInfo(QVariantMap &map, QString sourceStr)
{
    Q_UNUSED(sourceStr)
    PassportCommunityError record;
    if (m_token.isEmpty() || m_userInfo.isEmpty()) {
        record.setErrorCode(QStringLiteral("autherr"));
        return record;
    }

    const QVariantMap headers{{QStringLiteral("X-Auth-Token"), m_token}};
    const QVariantMap params{
        {QStringLiteral("userID"), m_userInfo.value(QStringLiteral("userID")).toString()}};
    QVariant result;
    record = post(result, QStringLiteral("getPassInfo"), QVariantMap(), params, headers);
    if (!record.isError()) {
        setUserInfo(result.toMap());
        map = m_userInfo;
    }
    return record;
}

void PassportNubelo::setUserInfo(QVariantMap info)
{
    if (m_userInfo.isEmpty())
        m_userInfo = info;

    const QString company[] = {QStringLiteral("companyName"), QStringLiteral("companyPurpose"),
                               QStringLiteral("companyType")};
    if (info.contains(company[0]) && info.contains(company[1]) && info.contains(company[2])) {
        for (const QString &key : company)
            m_userInfo.insert(key, info.value(key).toString());
    }

    // Only an answer to a sign-in or profile query carries a token; a field it lacks is emptied.
    if (!info.contains(QStringLiteral("token")))
        return;
    for (const ProfileField &field : profileFields) {
        const QVariant value = info.value(QLatin1String(field.received));
        m_userInfo.insert(QLatin1String(field.stored), converted(value, field.type));
    }
}

} // namespace VelqorPassPort
