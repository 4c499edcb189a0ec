// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "config/ConfigInformation.h"
#include "config/PassportDirectory_p.h"
#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

#include <QtCore/QFile>

namespace VelqorPassPort {

namespace {

// False when the file could not be emptied, or others may be able to read it.
bool rebuildAccountFile(const QString &path)
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

} // namespace

PassportCommunityError Passport::logIn(const QString &username, const QString &password,
                                       const QString &phoneArea, QVariantMap &userInfo,
                                       bool isRemember)
{
    PassportCommunityError record =
        logOutcome(m_cloud->logIn(username, password, phoneArea, userInfo, isRemember),
                   "login error...", "login success...");
    if (!record.isError() && isRemember) {
        const QString path = PassportDirectory(m_passportDir).accountFile();
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
        logOutcome(m_cloud->reqCodeLogIn(username, phoneArea, captcha, validCode, userInfo, source),
                   "reqCodeLogIn error...", "reqCodeLogIn success...");
    if (!record.isError() && isRemember) {
        const QString path = PassportDirectory(m_passportDir).accountFile();
        rebuildAccountFile(path);
        g_setConfigInformation(QStringLiteral("name"), username, path);
    }
    return record;
}

QJsonObject Passport::getAccountInfo()
{
    return g_getConfigInformation(PassportDirectory(m_passportDir).accountFile());
}

PassportCommunityError Passport::logOut()
{
    return logOutcome(m_cloud->logOut(), "logOut error...", "logOut success...");
}

PassportCommunityError Passport::reqGetUserInfo(QVariantMap &map, QString sourceStr)
{
    return logOutcome(m_cloud->reqGetUserInfo(map, sourceStr), "reqGetUserInfo error...",
                      "reqGetUserInfo success...", map);
}

void Passport::setToken(QString token)
{
    m_cloud->setToken(token);
}

QString Passport::token() const
{
    return m_cloud->token();
}

} // namespace VelqorPassPort
