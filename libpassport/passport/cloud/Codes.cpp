// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

#include <QtCore/QUuid>

namespace VelqorPassPort {

QString PassportNubelo::linkUuid(QString prefix, QString identifier)
{
    // In one step: a "%2" inside the prefix is text and stays as it is.
    return QStringLiteral("%1-%2").arg(prefix, identifier);
}

PassportCommunityError PassportNubelo::reqCaptcha(QVariant &data, QString width, QString height,
                                                  QString expire, QString length, QString source,
                                                  QString uSource)
{
    Q_UNUSED(uSource)
    const QVariantMap params{{QStringLiteral("w"), width},
                             {QStringLiteral("h"), height},
                             {QStringLiteral("l"), length},
                             {QStringLiteral("e"), expire},
                             {QStringLiteral("p"), source}};
    // Before the request: also a captcha that never arrived ends the one before it.
    m_captchaId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    QVariant picture;
    PassportCommunityError record = requestNubelo(
        picture, QStringLiteral("captcha"), QLatin1Char('/') + m_captchaId, Nubelo::Manager::Get,
        Nubelo::Manager::NoEncrypt, QVariantMap(), params, QVariantMap(), QStringLiteral("cloud"));
    if (!record.isError()) {
        data = QVariantMap{{QStringLiteral("data"), picture.toString()},
                           {QStringLiteral("source"), source}};
    }
    return record;
}

PassportCommunityError PassportNubelo::reqValidCode(QVariant &data, QString captcha,
                                                    QString username, QString phoneArea,
                                                    QString lang, QString source, QString uSource)
{
    Q_UNUSED(uSource)
    return post(data, QStringLiteral("userInfoValid"),
                {{QStringLiteral("captcha"), captcha},
                 {QStringLiteral("username"), username},
                 {QStringLiteral("uuid"), linkUuid(source, m_captchaId)},
                 {QStringLiteral("lang"), lang},
                 {QStringLiteral("phoneArea"), phoneArea},
                 {QStringLiteral("source"), source}});
}

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
