// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError Passport::setConfigPath(QString path)
{
    return m_cloud->setConfigPath(path);
}

PassportCommunityError Passport::setConfigData(QVariantMap data)
{
    return m_cloud->setConfigData(data);
}

PassportCommunityError Passport::setConfigData(QString environment)
{
    return m_cloud->setConfigData(environment);
}

PassportCommunityError Passport::configData(QVariantMap &data)
{
    data = m_cloud->configData();
    return {};
}

} // namespace VelqorPassPort
