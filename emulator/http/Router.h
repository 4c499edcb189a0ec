// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"

#include <QtCore/QStringList>

#include <functional>
#include <vector>

/// The function that answers a request.
struct Route
{
    QString name; ///< the client library's name of the request, empty for the developer's
    QString method;
    QString path; ///< ending in "/": everything below it
    std::function<Answer(const Request &)> function;
};

/// The routes below one path.
class Router
{
public:
    explicit Router(const QString &prefix) : m_prefix(prefix) {}

    /// `path` is added to the prefix.
    void add(const char *method, const char *path, std::function<Answer(const Request &)> function,
             const char *name = "");

    bool isFor(const Request &request) const { return request.path.startsWith(m_prefix); }
    /// Throws Refusal, 404 or 405, for a request that none of the routes is for, with a sentence
    /// that lists what there is.
    const Route &find(const Request &request) const;
    QStringList names() const;

private:
    QString m_prefix;
    std::vector<Route> m_routes;
};
