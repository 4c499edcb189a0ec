#include "passport/Passport.h"

#include "config/ConfigInformation.h"
#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

bool Passport::hasNet()
{
    const QJsonObject configuration =
        g_getConfigInformation(m_passportDir + QStringLiteral("/config/PassPortCfg.cfg"));
    const QJsonObject cloud = configuration.value(QLatin1String("nubelo")).toObject();
    QVariant ignored;
    PassportCommunityError record =
        m_cloud->requestNubelo(ignored, cloud.value(QLatin1String("hasnet")).toString(),
                               Nubelo::Manager::Get, QVariantMap(), QVariantMap(), QVariantMap());
    if (record.errorCode != CommunityErrorCode::NoError) {
        logFailure("hasNet error...", record);
        return false;
    }
    return true;
}

bool Passport::hasVelqorNet()
{
    PassportCommunityError record = m_cloud->getNetByStatus();
    if (record.errorCode != CommunityErrorCode::NoError) {
        logFailure("hasVelqorNet error...", record);
        return false;
    }
    return true;
}

} // namespace VelqorPassPort
