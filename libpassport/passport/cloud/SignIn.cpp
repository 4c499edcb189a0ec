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
    if (record.errorCode != CommunityErrorCode::NoError)
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
    if (record.errorCode != CommunityErrorCode::NoError)
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

QString PassportNubelo::linkUuid(QString prefix, QString identifier)
{
    // In one step: a "%2" inside the prefix is text and stays as it is.
    return QStringLiteral("%1-%2").arg(prefix, identifier);
}

} // namespace VelqorPassPort
