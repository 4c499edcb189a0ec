// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

namespace httplib {
struct Request;
} // namespace httplib

/// The connection that a request came on, from the request's worker thread and while it is served.
///
/// cpp-httplib hides its sockets from handlers and has no way to close them early. So they are
/// looked up, at each call, among the descriptors of the process by the port they were accepted on.
class Connection
{
public:
    Connection(const httplib::Request &request, int serverPort);

    /// False once the client has closed its end, or as much of it as it sends by.
    bool isOpen() const;
    /// Sends these bytes as they are and closes.
    void closeAfter(const std::string &bytes) const;

    /// Ends the input of all connections, so that workers that wait for a request stop waiting.
    static void endInputs(int serverPort);

private:
    int m_serverPort;
    std::pair<std::string, int> m_client; ///< numeric address and port
};
