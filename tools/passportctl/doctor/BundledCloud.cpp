// SPDX-License-Identifier: MIT
#include "BundledChecks.h"

#include <curl/curl.h>

using namespace VelqorPassPort;

namespace {

std::optional<Nubelo::Configuration> configure(Host &host, Findings &findings)
{
    auto configuration = checkMembers(host.options(), host.overrides(), findings);
    if (!configuration)
        return std::nullopt;
    const PassportCommunityError record = host.applyOptions();
    if (!record.isError())
        return configuration;
    addFailure(QStringLiteral("configuration"), record, findings);
    return std::nullopt;
}

bool isProxyError(int code)
{
    return code >= CommunityErrorCode::EC_ProxyConnectionRefusedError &&
           code <= CommunityErrorCode::EC_UnknownProxyError;
}

} // namespace

void addRequestLibrary(Findings &findings)
{
    const curl_version_info_data *info = curl_version_info(CURLVERSION_NOW);
    findings.addFact("requestLibrary", QStringLiteral("request library"),
                     QStringLiteral("bundled, libcurl %1").arg(QLatin1String(info->version)));
    findings.addFact("tls", QStringLiteral("TLS"), QString::fromLatin1(info->ssl_version));
}

bool checkConfiguration(Host &host, Findings &findings)
{
    return configure(host, findings).has_value();
}

void checkCloud(Host &host, Findings &findings)
{
    const auto configuration = configure(host, findings);
    if (!configuration)
        return;
    const QString address = withoutUser(host.address());
    findings.addFact("address", QStringLiteral("address"), address);
    const QString proxy = checkRoute(*configuration, findings);
    const PassportCommunityError record = checkService(host, findings);
    // After a time-out another wait would tell nothing new.
    const bool isExplained = record.errorCode != CommunityErrorCode::EC_TimeoutError &&
                             checkPeer(*configuration, !record.isError(), findings);
    if (record.isError() && !isExplained)
        addFailure(isProxyError(record.errorCode) ? QStringLiteral("proxy ") + proxy : address,
                   record, findings);
}
