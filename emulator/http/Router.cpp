// SPDX-License-Identifier: MIT
#include "http/Router.h"

#include "http/Refusal.h"

namespace {

bool serves(const QString &routePath, const QString &path)
{
    return routePath.endsWith(QLatin1Char('/')) ? path.startsWith(routePath) : path == routePath;
}

} // namespace

void Router::add(const char *method, const char *path,
                 std::function<Answer(const Request &)> function, const char *name)
{
    m_routes.push_back({QLatin1String(name), QLatin1String(method), m_prefix + QLatin1String(path),
                        std::move(function)});
}

const Route &Router::find(const Request &request) const
{
    QStringList methods;
    QStringList known;
    for (const Route &route : m_routes) {
        known.append(route.method + QLatin1Char(' ') + route.path);
        if (!serves(route.path, request.path))
            continue;
        if (route.method == request.answeredMethod())
            return route;
        methods.append(route.method);
    }
    if (methods.isEmpty()) {
        throw Refusal(404, QStringLiteral("there is nothing at %1; known are %2")
                               .arg(request.path, known.join(QStringLiteral(", "))));
    }
    throw Refusal(405, QStringLiteral("%1 answers %2, not %3")
                           .arg(request.path, methods.join(QStringLiteral(", ")), request.method));
}

QStringList Router::names() const
{
    QStringList names;
    for (const Route &route : m_routes)
        names.append(route.name);
    return names;
}
