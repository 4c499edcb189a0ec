// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError Passport::reqCaptcha(QVariant &data, QString width, QString height,
                                            QString expire, QString length, QString source,
                                            QString uSource)
{
    return logOutcome(m_cloud->reqCaptcha(data, width, height, expire, length, source, uSource),
                      "reqCaptcha error...", "reqCaptcha success...");
}

PassportCommunityError Passport::reqValidCode(QVariant &data, QString captcha, QString username,
                                              QString phoneArea, QString lang, QString source,
                                              QString uSource)
{
    return logOutcome(
        m_cloud->reqValidCode(data, captcha, username, phoneArea, lang, source, uSource),
        "reqValidCode error...", "reqValidCode success...");
}

PassportCommunityError Passport::isUserExisted(const QString &source, const QString &captcha,
                                               const QString &username, const QString &phoneArea)
{
    return logOutcome(m_cloud->isUserExisted(source, captcha, username, phoneArea),
                      "isUserExisted error...", "isUserExisted success...");
}

PassportCommunityError Passport::reqResetPassword(QString username, QString phoneArea,
                                                  QString captcha, QString validCode,
                                                  QString password, QString source)
{
    return logOutcome(
        m_cloud->reqResetPassword(username, phoneArea, captcha, validCode, password, source),
        "reqResetPassword error...", "reqResetPassword success...");
}

} // namespace VelqorPassPort
