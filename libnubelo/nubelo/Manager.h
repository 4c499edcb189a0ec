// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Reply.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

#include <memory>

namespace Nubelo {

/// Sends named requests to the cloud and hands out a Reply for each.
///
/// request() is called on the Manager's own thread, whose event loop drives all transfers: nothing
/// blocks and no other thread is used. The three configuration calls may come from any thread as
/// long as the Manager lives. Destroying the Manager settles every open reply as aborted first.
///
/// An envelope holds "source" (which address of the environment), "body" (a map, sent as JSON),
/// "params" (a map, sent as the query) and "headers" (a map, sent as HTTP headers). The name is one
/// of the known requests, or an http or https address, whose body then becomes the "result" as
/// text. No call returns null; what is wrong with a request is reported by its reply, and nothing
/// but std::bad_alloc leaves a call.
class NUBELO_EXPORT Manager : public QObject
{
    Q_OBJECT

public:
    /// The HTTP method.
    enum HttpRequestType : int { Post = 0, Get = 1, Put = 2, Delete = 3, Patch = 4, Head = 5 };
    Q_ENUM(HttpRequestType)

    /// Of the body, beside what TLS does; there is none as yet.
    enum HttpEncryptType : int { NoEncrypt = 0 };
    Q_ENUM(HttpEncryptType)

    /// By the library itself; a host sends its token among the headers.
    enum CloudAuthentication : int { NoAuthentication = 0 };
    Q_ENUM(CloudAuthentication)

    /// Opens nothing yet: connections begin with the first request.
    explicit Manager(QObject *parent = nullptr);
    ~Manager() override;

    /// Sends `name` with the given method. `extra` is reserved and ignored.
    Nubelo::Reply *request(const QString &name, HttpRequestType type, HttpEncryptType encryption,
                           const QVariantMap &envelope, CloudAuthentication authentication,
                           const QVariantMap &extra);

    /// The same with `appendToUrl` behind the request's path, percent-encoded only where an address
    /// needs it.
    Nubelo::Reply *request(const QString &name, HttpRequestType type, HttpEncryptType encryption,
                           const QString &appendToUrl, const QVariantMap &envelope,
                           CloudAuthentication authentication, const QVariantMap &extra);

    /// The same with the method that the configuration gives for `name`; for an address GET, or
    /// POST when the envelope has a body.
    Nubelo::Reply *request(const QString &name, const QVariantMap &envelope,
                           const QVariantMap &extra);

    /// Replaces the configuration by that of a JSON file. A file that is missing, cannot be read or
    /// is not a configuration is reported by the reply's status() and leaves the configuration as
    /// it was.
    Nubelo::Reply *setConfigPath(const QString &path, const QVariantMap &extra);

    /// Merges `data` into the configuration, objects member by member; refused as a whole, with
    /// ConfigDataError, when a known member has the wrong form.
    Nubelo::Reply *setConfigData(const QVariantMap &data, const QVariantMap &extra);

    /// What was configured so far, without the built-in defaults; empty before the first setter.
    QVariantMap configData() const;

private:
    struct Q_DECL_HIDDEN Private;
    std::unique_ptr<Private> d;
};

} // namespace Nubelo
