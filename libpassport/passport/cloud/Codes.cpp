#include "passport/PassportNubelo.h"

#include <QtCore/QUuid>

namespace VelqorPassPort {

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
    if (record.errorCode == CommunityErrorCode::NoError) {
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

} // namespace VelqorPassPort
