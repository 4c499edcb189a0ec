// SPDX-License-Identifier: MIT
#include "nubelo/IdleConnections_p.h"

#include <poll.h>

namespace Nubelo {

namespace {

// Below the shortest keep-alive that servers are set to, one second, by more than a round trip: a
// request that crosses the peer's close on the way could be neither answered nor safely repeated.
constexpr qint64 maximumIdleMs = 700;

} // namespace

void IdleConnections::remember(CURL *easy)
{
    for (auto idle = m_byLocalPort.begin(); idle != m_byLocalPort.end();)
        idle = idle->second.since.hasExpired(maximumIdleMs) ? m_byLocalPort.erase(idle) : ++idle;

    curl_socket_t socket = CURL_SOCKET_BAD;
    long localPort = 0;
    curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &socket);
    curl_easy_getinfo(easy, CURLINFO_LOCAL_PORT, &localPort);
    if (socket == CURL_SOCKET_BAD)
        return;
    Idle &idle = m_byLocalPort[static_cast<int>(localPort)];
    idle.socket = socket;
    idle.since.start();
}

bool IdleConnections::take(int localPort)
{
    const auto found = m_byLocalPort.find(localPort);
    if (found == m_byLocalPort.end())
        return false;
    const Idle idle = found->second;
    m_byLocalPort.erase(found);
    pollfd unread{idle.socket, POLLIN, 0};
    return !idle.since.hasExpired(maximumIdleMs) && ::poll(&unread, 1, 0) == 0;
}

} // namespace Nubelo
