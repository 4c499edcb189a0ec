// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError PassportNubelo::reqGetPrivacy(QString &privacy, QString language,
                                                     QString oemurl, QString source, QString target)
{
    Q_UNUSED(source)
    // Three values for four places: the service's path ends in a literal "%4".
    const QString path = QStringLiteral("/%1/%2/%3/%4").arg(oemurl, language, target);
    QVariant result;
    PassportCommunityError record =
        requestNubelo(result, QStringLiteral("getOEMPrivacyColorInfoByType"), path,
                      Nubelo::Manager::Get, Nubelo::Manager::NoEncrypt, QVariantMap(),
                      QVariantMap(), QVariantMap(), QStringLiteral("cloud"));
    if (!record.isError())
        privacy = result.toString();
    return record;
}

PassportCommunityError PassportNubelo::getNetByStatus()
{
    QVariant ignored;
    return get(ignored, QStringLiteral("status"));
}

} // namespace VelqorPassPort
