// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QUrl>

/// An address as people may trust it: in ASCII alone, so that no letter looks like another or turns
/// the direction of text, with the end of a long host, which says whose it is.

/// The host where that is enough (https on its usual port), else scheme, host and port; of a file
/// "file:".
QString shownOrigin(const QUrl &url);

/// The origin and the path, shortened; without user, query and fragment, which may hold secrets.
QString shownAddress(const QUrl &url);

/// The origin, which a page cannot move, and after it the page's title on one line.
QString titleWithOrigin(const QUrl &url, const QString &pageTitle);
