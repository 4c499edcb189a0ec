// SPDX-License-Identifier: MIT
#include "http/Loopback.h"

#include "http/Refusal.h"

#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <algorithm>

namespace {

// Whether "host", "host:port" or "[address]:port" names this machine's loopback.
bool isLoopbackAuthority(const QString &authority)
{
    QUrl url;
    url.setAuthority(authority, QUrl::StrictMode);
    return url.isValid() && url.userInfo().isEmpty() && !loopbackAddress(url.host()).isNull();
}

bool isNavigation(const Request &request)
{
    return request.method == QLatin1String("GET") &&
           request.headerValues(QStringLiteral("Sec-Fetch-Mode")) ==
               QStringList{QStringLiteral("navigate")};
}

} // namespace

QHostAddress loopbackAddress(const QString &host)
{
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        return QHostAddress(QHostAddress::LocalHost);
    const QHostAddress address(host);
    return address.isLoopback() ? address : QHostAddress();
}

// Any web page in the developer's browser can send requests here, and read the answers when its
// host name is made to resolve to the loopback address. These headers tell where a page is from.
// The server leaves out headers without a value, so that an empty Host is a missing one.
void requireLocalCaller(const Request &request, bool isForPage)
{
    const QStringList hosts = request.headerValues(QStringLiteral("Host"));
    if (hosts.isEmpty() || !std::all_of(hosts.begin(), hosts.end(), isLoopbackAuthority))
        throw Refusal(403, QStringLiteral("the Host header does not name a loopback address"));
    const QStringList origins = request.headerValues(QStringLiteral("Origin"));
    for (const QString &origin : origins) {
        if (!isLoopbackAuthority(QUrl(origin).authority()))
            throw Refusal(403, QStringLiteral("the Origin header names a foreign web page"));
    }
    const bool crossSite = request.headerValues(QStringLiteral("Sec-Fetch-Site"))
                               .contains(QLatin1String("cross-site"));
    if (crossSite && !(isForPage && isNavigation(request)))
        throw Refusal(403, QStringLiteral("the Sec-Fetch-Site header tells of a foreign web page"));
}
