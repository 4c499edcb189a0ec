#include "nubelo/Proxy_p.h"

#include <QtCore/QStringList>
#include <QtNetwork/QHostAddress>

#include <algorithm>

namespace Nubelo {

namespace {

QByteArray variable(const QByteArray &name)
{
    const QByteArray value = qgetenv(name.constData());
    // HTTP_PROXY is left out, as by everybody: a web server sets it to a request's header "Proxy".
    return value.isEmpty() && name != "http_proxy" ? qgetenv(name.toUpper().constData()) : value;
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
    QString list = QString::fromLocal8Bit(variable("no_proxy"));
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

QByteArray proxyFor(const QByteArray &rule, const QUrl &url)
{
    if (rule == "none")
        return {};
    if (rule != "system")
        return rule;
    const QString host = url.host(QUrl::FullyEncoded);
    if (isLoopback(host) || isExempt(host))
        return {};
    const QByteArray proxy = variable(url.scheme().toLatin1() + "_proxy");
    return proxy.isEmpty() ? variable("all_proxy") : proxy;
}

} // namespace Nubelo
