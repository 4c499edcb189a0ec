#include "http/Loopback.h"

#include <QtCore/QUrl>

QHostAddress loopbackAddress(const QString &host)
{
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        return QHostAddress(QHostAddress::LocalHost);
    const QHostAddress address(host);
    return address.isLoopback() ? address : QHostAddress();
}

bool isLoopbackAuthority(const QString &authority)
{
    QUrl url;
    url.setAuthority(authority, QUrl::StrictMode);
    return url.isValid() && url.userInfo().isEmpty() && !loopbackAddress(url.host()).isNull();
}
