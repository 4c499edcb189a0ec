// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError Passport::reqCountries(QVariantList &countries)
{
    return logOutcome(m_cloud->reqCountries(countries), "reqCountries error...",
                      "reqCountries success...");
}

PassportCommunityError Passport::reqCurrentCountry(QString &country, QVariantMap &cCountryInfoMap)
{
    return logOutcome(m_cloud->reqCurrentCountry(country, cCountryInfoMap, QString()),
                      "reqCurrentCountry error...", "reqCurrentCountry success...", country);
}

} // namespace VelqorPassPort
