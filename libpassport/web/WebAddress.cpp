// SPDX-License-Identifier: MIT
#include "web/WebAddress_p.h"

#include "config/ConfigInformation.h"
#include "config/PassportDirectory_p.h"

namespace VelqorPassPort {

WebAddress::WebAddress(const QString &passportDir)
    : m_configuration(
          g_getConfigInformation(PassportDirectory(passportDir).passportConfiguration()))
{
    const QJsonObject cloud = PassportDirectory::cloudSection(m_configuration);
    const bool isTest = cloud.value(QLatin1String("env")).toString() == QLatin1String("beta");
    const QLatin1String key = isTest ? QLatin1String("testurl") : QLatin1String("url");
    m_base = cloud.value(key).toString();
}

} // namespace VelqorPassPort
