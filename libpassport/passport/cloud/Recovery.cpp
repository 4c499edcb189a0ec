#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError PassportNubelo::isUserExisted(const QString &source, const QString &captcha,
                                                     const QString &username,
                                                     const QString &phoneArea)
{
    QVariant ignored;
    return post(ignored, QStringLiteral("userExistCheck"),
                {{QStringLiteral("captcha"), captcha},
                 {QStringLiteral("username"), username},
                 {QStringLiteral("uuid"), linkUuid(source, m_captchaId)},
                 {QStringLiteral("phoneArea"), phoneArea}});
}

PassportCommunityError PassportNubelo::reqResetPassword(const QString &username,
                                                        const QString &phoneArea,
                                                        const QString &captcha,
                                                        const QString &validCode,
                                                        const QString &password, QString source)
{
    Q_UNUSED(source)
    QVariant ignored;
    return post(ignored, QStringLiteral("rbpwd"),
                {{QStringLiteral("captcha"), captcha},
                 {QStringLiteral("username"), username},
                 {QStringLiteral("uuid"), linkUuid(QStringLiteral("bpwd"), m_captchaId)},
                 {QStringLiteral("password"), password},
                 {QStringLiteral("validCode"), validCode},
                 {QStringLiteral("phoneArea"), phoneArea}});
}

} // namespace VelqorPassPort
