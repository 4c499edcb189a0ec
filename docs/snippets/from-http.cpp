// SPDX-License-Identifier: MIT
#include <passport/Passport.h>
#include <passport/PassportNubelo.h>

using namespace VelqorPassPort;

//! [own]
// `cloud` is a client beside the facade's own, with a configuration of its own.
PassportCommunityError fetchOrders(PassportNubelo &cloud, const Passport &passport,
                                   QVariantList &orders)
{
    const QVariantMap headers{{QStringLiteral("X-Auth-Token"), passport.token()}};
    const QVariantMap query{{QStringLiteral("open"), true}};
    QVariant result;
    PassportCommunityError outcome = cloud.requestNubelo(
        result, QStringLiteral("orders"), QVariantMap(), query, headers, QStringLiteral("cloud"));
    if (!outcome.isError())
        orders = result.toList();
    return outcome;
}

PassportCommunityError addOrders(PassportNubelo &cloud)
{
    const QVariantMap orders{{QStringLiteral("path"), QStringLiteral("/orders")},
                             {QStringLiteral("method"), QStringLiteral("GET")}};
    return cloud.setConfigData(
        QVariantMap{{QStringLiteral("requests"), QVariantMap{{QStringLiteral("orders"), orders}}}});
}
//! [own]
