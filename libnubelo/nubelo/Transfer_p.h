// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/AnswerReader_p.h"
#include "nubelo/Answer_p.h"
#include "nubelo/Configuration_p.h"
#include "nubelo/HttpRequest_p.h"

#include <QtCore/QDeadlineTimer>

#include <curl/curl.h>

#include <array>
#include <memory>
#include <optional>

namespace Nubelo {

class IdleConnections;

/// One request on its way: a libcurl easy handle with what it needs, over all its redirects.
///
/// The deadline and the limit of redirects hold for the whole way. A redirect never takes the
/// caller's headers or the body to another origin, and never leaves https. A POST or PATCH that the
/// peer may have read is not sent again. Throws std::bad_alloc, and nothing else.
class Transfer
{
public:
    Transfer(HttpRequest request, const TransferRules &rules, IdleConnections &connections);
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    CURL *handle() const { return m_easy.get(); }

    /// The answer, once libcurl ended with `code`; nothing when it is to be started again, for
    /// which the handle is then set up: for a redirect, or on a connection of its own.
    std::optional<HttpAnswer> completed(CURLcode code);

private:
    void setUp();
    void setUpCallbacks();
    void setUpMethod();
    void addHeader(const char *line);
    HttpAnswer failed(CURLcode code) const;
    Error::ErrorCode followTo(const QByteArray &target, int httpStatus);
    static int onReady(void *transfer, char *peer, char *local, int peerPort, int localPort);
    static std::size_t onHeader(char *line, std::size_t size, std::size_t count, void *transfer);
    static std::size_t onBody(char *data, std::size_t size, std::size_t count, void *transfer);

    HttpRequest m_request;
    TransferRules m_rules;
    IdleConnections &m_connections;
    QDeadlineTimer m_deadline;
    std::unique_ptr<CURL, void (*)(CURL *)> m_easy;
    std::unique_ptr<curl_slist, void (*)(curl_slist *)> m_headers;
    std::array<char, CURL_ERROR_SIZE> m_reason{};
    AnswerReader m_reader;
    QByteArray m_proxy;               ///< empty: none
    bool m_isAsked = false;           ///< the request was about to leave, or left
    long m_sentBytes = 0;             ///< before it did
    bool m_isConnectionUnfit = false; ///< the one that libcurl wanted to reuse
    int m_redirects = 0;
};

} // namespace Nubelo
