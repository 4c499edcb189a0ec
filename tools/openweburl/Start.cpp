// SPDX-License-Identifier: MIT
#include "Start.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QUrlQuery>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds usualReloadTimeout{5000};
// A timeout of 0 asks for a reload at once, which must not keep the machine busy.
constexpr milliseconds shortestReloadTimeout{100};

bool isWeb(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

// Page addresses come decoded, with spaces and letters of any script, as people read them.
bool readPage(const QString &argument, Start &start, QString &problem)
{
    start.page = QUrl(argument, QUrl::TolerantMode);
    const bool shown = isWeb(start.page) ? !start.page.host().isEmpty() : start.page.isLocalFile();
    if (!shown)
        problem = QStringLiteral("\"%1\" is not an http, https or file address").arg(argument);
    return shown;
}

bool readReloadTimeout(const QString &argument, Start &start, QString &problem)
{
    bool isNumber = false;
    const milliseconds timeout(argument.toInt(&isNumber));
    if (!isNumber)
        problem = QStringLiteral("\"%1\" is not a number of milliseconds").arg(argument);
    else if (timeout >= milliseconds::zero())
        start.reloadTimeout = std::max(timeout, shortestReloadTimeout);
    return isNumber;
}

} // namespace

std::optional<Start> Start::fromArguments(const QStringList &arguments, QString &problem)
{
    Start start;
    if (arguments.size() != 3 && arguments.size() != 4) {
        problem = QStringLiteral("there must be three or four arguments");
        return std::nullopt;
    }
    if (!readPage(arguments.at(0), start, problem))
        return std::nullopt;
    if (arguments.size() == 4) {
        start.token = arguments.at(1);
        start.base = arguments.at(2);
        start.text = arguments.at(3);
        start.reloadTimeout = usualReloadTimeout;
        return start;
    }
    start.text = arguments.at(1);
    if (!readReloadTimeout(arguments.at(2), start, problem))
        return std::nullopt;
    return start;
}

bool Start::isOwnOrigin(const QUrl &initiator) const
{
    return isWeb(page) && initiator.scheme() == page.scheme() && initiator.host() == page.host() &&
           portOf(initiator) == portOf(page);
}

QString Start::language() const
{
    static const QRegularExpression tag(QStringLiteral("^[A-Za-z]{2,3}(-[A-Za-z0-9]{2,8})*$"));
    return tag.match(text).hasMatch() ? text : QString();
}

QString Start::pageLanguage() const
{
    const QString named = QUrlQuery(page).queryItemValue(QStringLiteral("lang"));
    return named.isEmpty() ? language() : named;
}
