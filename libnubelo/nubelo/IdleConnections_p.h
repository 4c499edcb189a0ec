// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QElapsedTimer>

#include <curl/curl.h>

#include <unordered_map>

namespace Nubelo {

/// The connections that libcurl keeps between two requests, and whether one is fit for another:
/// not when it was idle for longer than 700 ms, and not when anything lies on it unread. That is
/// the peer's close, or an answer that nobody asked for and that libcurl would take for the answer
/// to the next request.
class IdleConnections
{
public:
    /// Keeps in mind the connection of a transfer that just ended, while its handle still belongs
    /// to the multi handle.
    void remember(CURL *easy);

    /// Whether the connection with this local port may carry a request. Forgets it: whoever asks
    /// uses or closes it.
    bool take(int localPort);

private:
    struct Idle
    {
        curl_socket_t socket;
        QElapsedTimer since;
    };
    std::unordered_map<int, Idle> m_byLocalPort;
};

} // namespace Nubelo
