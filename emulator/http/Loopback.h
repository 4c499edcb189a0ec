#pragma once

#include <QtCore/QString>
#include <QtNetwork/QHostAddress>

/// The loopback address that a text names: "localhost" (127.0.0.1), an address in 127.0.0.0/8 or
/// "::1". Null for anything else; names are not looked up, since a name server could lie.
QHostAddress loopbackAddress(const QString &host);

/// Whether "host", "host:port" or "[address]:port" names this machine's loopback.
bool isLoopbackAuthority(const QString &authority);
