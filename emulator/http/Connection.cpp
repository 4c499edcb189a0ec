// SPDX-License-Identifier: MIT
#include "http/Connection.h"

#include <httplib.h>

#include <cerrno>
#include <filesystem>
#include <mutex>

namespace {

using End = std::pair<std::string, int>;

// The numeric address and the port of one end of a socket; port -1 if it has no such end.
End endOf(int descriptor, decltype(&::getsockname) whichEnd)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (whichEnd(descriptor, generic, &length) != 0)
        return {{}, -1};
    if (address.ss_family != AF_INET && address.ss_family != AF_INET6)
        return {{}, -1};
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "";
    if (::getnameinfo(generic, length, host, sizeof host, port, sizeof port,
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {{}, -1};
    }
    return {host, std::atoi(port)};
}

// One look at a time: each has a descriptor of its own meanwhile, among those that others look at.
template <typename Visitor>
void forEachConnection(int serverPort, Visitor &&visit)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/dev/fd", ignored)) {
        const int descriptor = std::atoi(entry.path().filename().c_str());
        if (endOf(descriptor, ::getsockname).second != serverPort)
            continue;
        const End client = endOf(descriptor, ::getpeername);
        if (client.second != -1)
            visit(descriptor, client);
    }
}

} // namespace

Connection::Connection(const httplib::Request &request, int serverPort)
    : m_serverPort(serverPort)
    , m_client(request.remote_addr, request.remote_port)
{
}

bool Connection::isOpen() const
{
    bool open = false; // a socket that was reset has no client any more and is not found
    forEachConnection(m_serverPort, [&](int descriptor, const End &client) {
        if (client != m_client)
            return;
        char byte = 0;
        const auto count = ::recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        open = count > 0 || (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK));
    });
    return open;
}

void Connection::closeAfter(const std::string &bytes) const
{
    forEachConnection(m_serverPort, [&](int descriptor, const End &client) {
        if (client != m_client)
            return;
        [[maybe_unused]] const auto sent = ::send(descriptor, bytes.data(), bytes.size(), 0);
        ::shutdown(descriptor, SHUT_RDWR);
    });
}

void Connection::endInputs(int serverPort)
{
    forEachConnection(serverPort,
                      [](int descriptor, const End &) { ::shutdown(descriptor, SHUT_RD); });
}
