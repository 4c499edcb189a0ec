#include "passport/Passport.h"

#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError Passport::reqCountries(QVariantList &countries)
{
    PassportCommunityError record = m_cloud->reqCountries(countries);
    logOutcome(record, "reqCountries error...", "reqCountries success...");
    return record;
}

PassportCommunityError Passport::reqCurrentCountry(QString &country, QVariantMap &cCountryInfoMap)
{
    PassportCommunityError record = m_cloud->reqCurrentCountry(country, cCountryInfoMap, QString());
    if (record.errorCode != CommunityErrorCode::NoError)
        logFailure("reqCurrentCountry error...", record);
    else
        qCDebug(log_lp) << "reqCurrentCountry success..." << country;
    return record;
}

PassportCommunityError Passport::reqCaptcha(QVariant &data, QString width, QString height,
                                            QString expire, QString length, QString source,
                                            QString uSource)
{
    PassportCommunityError record =
        m_cloud->reqCaptcha(data, width, height, expire, length, source, uSource);
    logOutcome(record, "reqCaptcha error...", "reqCaptcha success...");
    return record;
}

PassportCommunityError Passport::reqValidCode(QVariant &data, QString captcha, QString username,
                                              QString phoneArea, QString lang, QString source,
                                              QString uSource)
{
    PassportCommunityError record =
        m_cloud->reqValidCode(data, captcha, username, phoneArea, lang, source, uSource);
    logOutcome(record, "reqValidCode error...", "reqValidCode success...");
    return record;
}

PassportCommunityError Passport::isUserExisted(const QString &source, const QString &captcha,
                                               const QString &username, const QString &phoneArea)
{
    PassportCommunityError record = m_cloud->isUserExisted(source, captcha, username, phoneArea);
    logOutcome(record, "isUserExisted error...", "isUserExisted success...");
    return record;
}

PassportCommunityError Passport::reqResetPassword(QString username, QString phoneArea,
                                                  QString captcha, QString validCode,
                                                  QString password, QString source)
{
    PassportCommunityError record =
        m_cloud->reqResetPassword(username, phoneArea, captcha, validCode, password, source);
    logOutcome(record, "reqResetPassword error...", "reqResetPassword success...");
    return record;
}

} // namespace VelqorPassPort
