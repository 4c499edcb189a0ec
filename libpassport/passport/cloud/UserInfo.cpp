#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

namespace {

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
    if (record.errorCode == CommunityErrorCode::NoError) {
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
