#include "web/WebAddress_p.h"

#include "config/ConfigInformation.h"

namespace VelqorPassPort {

WebAddress::WebAddress(const QString &passportDir)
    : m_configuration(
          g_getConfigInformation(passportDir + QStringLiteral("/config/PassPortCfg.cfg")))
{
    const QJsonObject cloud = m_configuration.value(QLatin1String("nubelo")).toObject();
    const bool isTest = cloud.value(QLatin1String("env")).toString() == QLatin1String("beta");
    const QLatin1String key = isTest ? QLatin1String("testurl") : QLatin1String("url");
    m_base = cloud.value(key).toString();
}

} // namespace VelqorPassPort
