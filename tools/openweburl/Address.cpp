// SPDX-License-Identifier: MIT
#include "Address.h"

#include <QtCore/QVector>

namespace {

constexpr int longestHost = 50;
constexpr int longestPath = 60;
constexpr int longestTitle = 80;
const QChar ellipsis(0x2026);

QString beginningOf(const QString &text, int size)
{
    return text.size() <= size ? text : text.left(size - 1) + ellipsis;
}

QString endOf(const QString &text, int size)
{
    return text.size() <= size ? text : ellipsis + text.right(size - 1);
}

// Without characters that move other text, hide or look like nothing.
QString plain(const QString &text)
{
    QString result;
    const QVector<uint> characters = text.toUcs4();
    for (const uint character : characters) {
        const bool isShown = QChar::isPrint(character) || QChar::isSpace(character);
        result += isShown ? QString::fromUcs4(&character, 1) : QString();
    }
    return result.simplified();
}

// What the browser engine takes for the title of a page that has none: its address, unescaped for
// reading, or of a file the name, each with the query. A title that only begins like that goes too:
// the origin stands before it.
bool isAddress(const QUrl &url, const QString &title)
{
    if (url.isLocalFile())
        return title.startsWith(url.fileName());
    const QString scheme = url.scheme() + QStringLiteral("://");
    return QUrl(title.startsWith(scheme) ? title : scheme + title).host() == url.host();
}

} // namespace

QString shownOrigin(const QUrl &url)
{
    if (url.host().isEmpty())
        return url.scheme() + QLatin1Char(':');
    const bool isSecure = url.scheme() == QLatin1String("https");
    const bool hasUsualPort = url.port(isSecure ? 443 : 80) == (isSecure ? 443 : 80);
    const QUrl bare = url.adjusted(QUrl::RemoveUserInfo | QUrl::RemovePort);
    QString host = endOf(bare.authority(QUrl::FullyEncoded), longestHost);
    if (isSecure && hasUsualPort)
        return host;
    const QString port = hasUsualPort ? QString() : QStringLiteral(":%1").arg(url.port());
    return url.scheme() + QStringLiteral("://") + host + port;
}

QString shownAddress(const QUrl &url)
{
    return shownOrigin(url) + beginningOf(url.path(QUrl::FullyEncoded), longestPath);
}

QString titleWithOrigin(const QUrl &url, const QString &pageTitle)
{
    const QString title = beginningOf(plain(pageTitle), longestTitle);
    if (title.isEmpty() || isAddress(url, pageTitle))
        return shownOrigin(url);
    return shownOrigin(url) + QStringLiteral(" — ") + title;
}
