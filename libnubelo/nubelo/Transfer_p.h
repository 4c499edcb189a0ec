#pragma once

#include "nubelo/Answer_p.h"
#include "nubelo/Configuration_p.h"
#include "nubelo/HttpRequest_p.h"

#include <QtCore/QDeadlineTimer>

#include <curl/curl.h>

#include <array>
#include <memory>
#include <optional>

namespace Nubelo {

/// One request on its way: a libcurl easy handle with what it needs, over all its redirects.
///
/// The deadline and the limit of redirects hold for the whole way. A redirect never takes the
/// caller's headers or the body to another origin, and never leaves https.
class Transfer
{
public:
    Transfer(HttpRequest request, const TransferRules &rules);
    Transfer(const Transfer &) = delete;
    Transfer &operator=(const Transfer &) = delete;

    CURL *handle() const { return m_easy.get(); }

    /// The answer, once libcurl ended with `code`; nothing when a redirect is to be followed: the
    /// handle is then set up to be started again.
    std::optional<HttpAnswer> completed(CURLcode code);

private:
    void setUp();
    void setUpMethod();
    void setUpProxy();
    HttpAnswer failed(CURLcode code) const;
    Error::ErrorCode followTo(const QByteArray &target, int httpStatus);
    bool usesProxy() const;
    static std::size_t onBody(char *data, std::size_t size, std::size_t count, void *transfer);

    HttpRequest m_request;
    TransferRules m_rules;
    QDeadlineTimer m_deadline;
    std::unique_ptr<CURL, void (*)(CURL *)> m_easy;
    std::unique_ptr<curl_slist, void (*)(curl_slist *)> m_headers;
    std::array<char, CURL_ERROR_SIZE> m_reason{};
    QByteArray m_body;
    int m_redirects = 0;
};

} // namespace Nubelo
