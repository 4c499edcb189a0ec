// SPDX-License-Identifier: MIT
#include "nubelo/Proxy_p.h"

#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <algorithm>

namespace Nubelo {

namespace {

/// The variable that is set: `name`, or the same in capital letters; empty when neither is.
QByteArray variable(const QByteArray &name)
{
    // HTTP_PROXY is left out, as by everybody: a web server sets it to a request's header "Proxy".
    for (const QByteArray &candidate : {name, name == "http_proxy" ? name : name.toUpper()}) {
        if (!qEnvironmentVariableIsEmpty(candidate.constData()))
            return candidate;
    }
    return {};
}

bool isLoopback(const QString &host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

bool isAddressIn(const QHostAddress &host, QString subnet)
{
    subnet.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    // parseSubnet() takes "10", too, where a name was meant.
    if (subnet.count(QLatin1Char('.')) != 3 && !subnet.contains(QLatin1Char(':')))
        return false;
    const auto parsed = QHostAddress::parseSubnet(subnet);
    return parsed.second >= 0 && host.isInSubnet(parsed);
}

bool isNameIn(const QString &host, QString domain)
{
    while (domain.startsWith(QLatin1Char('.')))
        domain.remove(0, 1);
    return host.compare(domain, Qt::CaseInsensitive) == 0 ||
           host.endsWith(QLatin1Char('.') + domain, Qt::CaseInsensitive);
}

bool isExempt(const QString &host)
{
    QString list = QString::fromLocal8Bit(qgetenv(variable("no_proxy").constData()));
    if (list == QLatin1String("*"))
        return true;
    const QStringList entries = list.replace(QLatin1Char(' '), QLatin1Char(','))
                                    .split(QLatin1Char(','), Qt::SkipEmptyParts);
    const QHostAddress address(host);
    return std::any_of(entries.begin(), entries.end(), [&](const QString &entry) {
        return address.isNull() ? isNameIn(host, entry) : isAddressIn(address, entry);
    });
}

} // namespace

QByteArray proxyFor(const QByteArray &rule, const QUrl &url, QByteArray *origin)
{
    if (rule == "none")
        return {};
    if (rule != "system")
        return rule;
    const QString host = url.host(QUrl::FullyEncoded);
    if (isLoopback(host) || isExempt(host))
        return {};
    const QByteArray own = variable(url.scheme().toLatin1() + "_proxy");
    const QByteArray name = own.isEmpty() ? variable("all_proxy") : own;
    if (origin)
        *origin = name;
    return qgetenv(name.constData());
}

} // namespace Nubelo
