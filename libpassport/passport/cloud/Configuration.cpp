// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

// The setters and the getter are called on the caller's thread, as the request library allows for
// these calls alone; only the reply is handled on the cloud thread.

PassportCommunityError PassportNubelo::setConfigPath(QString path)
{
    QVariant ignored;
    return replyConnect(m_manager->setConfigPath(path, QVariantMap()), QStringLiteral("setConfig"),
                        ignored);
}

PassportCommunityError PassportNubelo::setConfigData(QVariantMap data)
{
    QVariant ignored;
    return replyConnect(m_manager->setConfigData(data, QVariantMap()), QStringLiteral("setConfig"),
                        ignored);
}

PassportCommunityError PassportNubelo::setConfigData(QString environment)
{
    return setConfigData(QVariantMap{{QStringLiteral("cloudEnvironment"), environment}});
}

QVariantMap PassportNubelo::configData()
{
    return m_manager->configData();
}

} // namespace VelqorPassPort
