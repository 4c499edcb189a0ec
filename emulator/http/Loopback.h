// SPDX-License-Identifier: MIT
#pragma once

#include "http/Request.h"

#include <QtCore/QString>
#include <QtNetwork/QHostAddress>

/// The loopback address that a text names: "localhost" (127.0.0.1), an address in 127.0.0.0/8 or
/// "::1". Null for anything else; names are not looked up, since a name server could lie.
QHostAddress loopbackAddress(const QString &host);

/// Throws Refusal(403) for a request that may come from a web page elsewhere: one whose Host or
/// Origin header names another machine or nothing, and one that a browser calls cross-site, unless
/// that leads a person to a page of ours.
void requireLocalCaller(const Request &request, bool isForPage);
