// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Answer_p.h"
#include "nubelo/Configuration_p.h"
#include "nubelo/HttpRequest_p.h"
#include "nubelo/IdleConnections_p.h"
#include "nubelo/Transfer_p.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <curl/curl.h>

#include <functional>
#include <memory>
#include <unordered_map>

namespace Nubelo {

/// Carries HTTP requests out with libcurl's multi interface, driven by the event loop of its
/// thread: socket notifiers and one timer, no thread of its own, no blocking call. Keeps
/// connections for reuse.
///
/// Lives, is called and calls back on one thread. Destroying it drops what is under way, without a
/// call back.
class Transport : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const HttpAnswer &)>;

    /// Initialises libcurl once for the process. To be called on a thread that lives on: what the
    /// TLS library keeps for the calling thread would otherwise be torn down with a short-lived
    /// one, in a race with the end of the process.
    static void prepareLibrary();

    explicit Transport(QObject *parent);
    ~Transport() override;

    /// Calls `done` once, possibly before it returns, unless `receiver` dies first: that drops the
    /// request. Throws std::bad_alloc, and then does nothing.
    void start(HttpRequest request, const TransferRules &rules, QObject *receiver, Done done);

private:
    static int onSocket(CURL *easy, curl_socket_t socket, int what, void *transport, void *watch);
    static int onTimerWanted(CURLM *multi, long milliseconds, void *transport);
    void act(curl_socket_t socket, int events);
    void finishCompleted();
    void finish(CURL *easy, CURLcode code);

    struct Exchange
    {
        std::unique_ptr<Transfer> transfer;
        Done done;
        QMetaObject::Connection receiverGone;
    };

    QTimer m_timer;
    IdleConnections m_connections;
    std::unique_ptr<CURLM, CURLMcode (*)(CURLM *)> m_multi;
    std::unordered_map<CURL *, Exchange> m_exchanges;
};

} // namespace Nubelo
