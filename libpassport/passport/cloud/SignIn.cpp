#include "passport/PassportNubelo.h"

#include "common/Log.h"

namespace VelqorPassPort {

PassportCommunityError PassportNubelo::logIn(const QString &username, const QString &password,
                                             const QString &phoneArea, QVariantMap &userInfo,
                                             bool isRemember)
{
    Q_UNUSED(isRemember)
    const QVariantMap body{{QStringLiteral("username"), username},
                           {QStringLiteral("password"), password},
                           {QStringLiteral("phoneArea"), phoneArea},
                           {QStringLiteral("loginType"), QStringLiteral("VelqorPassPort")}};
    const QVariantMap params{{QStringLiteral("withPerms"), true},
                             {QStringLiteral("withDentals"), true}};
    QVariant result;
    const PassportCommunityError record = requestNubelo(
        result, QStringLiteral("userLogin"), Nubelo::Manager::Post, Nubelo::Manager::NoEncrypt,
        body, params, QVariantMap(), QStringLiteral("cloud"));
    if (record.errorCode != CommunityErrorCode::NoError)
        return record;

    QVariantMap account = result.toMap();
    account.insert(QStringLiteral("source"), QStringLiteral("product"));
    account.insert(QStringLiteral("status"), true);
    setUserInfo(account);
    m_token = account.value(QStringLiteral("token")).toString();
    qCDebug(log_lp) << "token changed" << m_token;

    // The user is signed in, with or without the full profile: its record is not the sign-in's.
    reqGetUserInfo(userInfo, QStringLiteral("product"));
    return record;
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

QString PassportNubelo::linkUuid(QString prefix, QString identifier)
{
    // In one step: a "%2" inside the prefix is text and stays as it is.
    return QStringLiteral("%1-%2").arg(prefix, identifier);
}

} // namespace VelqorPassPort
