#include "passport/Passport.h"

#include "config/ConfigInformation.h"
#include "crypto/EDData.h"
#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

#include <QtCore/QFile>

namespace VelqorPassPort {

PassportCommunityError Passport::logIn(const QString &username, const QString &password,
                                       const QString &phoneArea, QVariantMap &userInfo,
                                       bool isRemember)
{
    PassportCommunityError record =
        m_cloud->logIn(username, password, phoneArea, userInfo, isRemember);
    if (record.errorCode != CommunityErrorCode::NoError) {
        logFailure("login error...", record);
        return record;
    }
    qCDebug(log_lp) << "login success...";
    if (isRemember) {
        const QString path = accountFilePath();
        const bool isPrivate = rebuildAccountFile(path);
        g_setConfigInformation(QStringLiteral("name"), username, path);
        if (isPrivate)
            g_setConfigInformation(QStringLiteral("password"), password, path);
    }
    return record;
}

PassportCommunityError Passport::reqCodeLogIn(const QString &username, const QString &phoneArea,
                                              const QString &captcha, const QString &validCode,
                                              QVariantMap &userInfo, QString source,
                                              bool isRemember)
{
    PassportCommunityError record =
        m_cloud->reqCodeLogIn(username, phoneArea, captcha, validCode, userInfo, source);
    logOutcome(record, "reqCodeLogIn error...", "reqCodeLogIn success...");
    if (record.errorCode == CommunityErrorCode::NoError && isRemember) {
        const QString path = accountFilePath();
        rebuildAccountFile(path);
        g_setConfigInformation(QStringLiteral("name"), username, path);
    }
    return record;
}

QString Passport::accountFilePath() const
{
    return m_passportDir + QStringLiteral("/config/account.json");
}

bool Passport::rebuildAccountFile(const QString &path)
{
    // From nothing, so that no member of an earlier account survives: a file that cannot be removed
    // is emptied.
    QFile file(path);
    if (file.exists())
        file.remove();
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Text))
        return false;
    // Before there is anything to read in it.
    return file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

QJsonObject Passport::getAccountInfo()
{
    return g_getConfigInformation(accountFilePath());
}

PassportCommunityError Passport::logOut()
{
    PassportCommunityError record = m_cloud->logOut();
    logOutcome(record, "logOut error...", "logOut success...");
    return record;
}

PassportCommunityError Passport::reqGetUserInfo(QVariantMap &map, QString sourceStr)
{
    PassportCommunityError record = m_cloud->reqGetUserInfo(map, sourceStr);
    if (record.errorCode != CommunityErrorCode::NoError)
        logFailure("reqGetUserInfo error...", record);
    else
        qCDebug(log_lp) << "reqGetUserInfo success..." << map;
    return record;
}

std::string Passport::deBase64(const std::string &text)
{
    return EDData().base64_decode(text);
}

PassportCommunityError Passport::reqSoftUp()
{
    return {};
}

} // namespace VelqorPassPort
