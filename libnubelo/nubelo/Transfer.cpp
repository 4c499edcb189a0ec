#include "nubelo/Transfer_p.h"

#include "nubelo/CurlError_p.h"
#include "nubelo/Log_p.h"

#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>

#include <algorithm>

namespace Nubelo {

namespace {

constexpr int maximumRedirects = 10;

int effectivePort(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

bool sameOrigin(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && effectivePort(a) == effectivePort(b);
}

bool isLoopback(const QString &host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

} // namespace

Transfer::Transfer(HttpRequest request, const TransferRules &rules)
    : m_request(std::move(request))
    , m_rules(rules)
    , m_deadline(rules.totalDeadline)
    , m_easy(curl_easy_init(), &curl_easy_cleanup)
    , m_headers(nullptr, &curl_slist_free_all)
{
    setUp();
}

void Transfer::setUp()
{
    CURL *easy = m_easy.get();
    m_body.clear();
    m_reason.front() = '\0';
    curl_easy_reset(easy);
    curl_easy_setopt(easy, CURLOPT_URL, m_request.url.constData());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_reason.data());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "libnubelo/" NUBELO_VERSION);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(m_rules.connectDeadline.count()));
    // At least 1 ms: libcurl takes 0 for "no limit".
    const qint64 remaining = std::max<qint64>(m_deadline.remainingTime(), 1);
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(remaining));
#if LIBCURL_VERSION_NUM >= 0x075700
    // Without it the end of a transfer would wait for a name look-up that is under way.
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
#endif
    if (!m_rules.caFile.isEmpty())
        curl_easy_setopt(easy, CURLOPT_CAINFO, m_rules.caFile.constData());
    curl_easy_setopt(easy, CURLOPT_SSLVERSION,
                     m_rules.minimumTls == "1.3" ? long{CURL_SSLVERSION_TLSv1_3}
                                                 : long{CURL_SSLVERSION_TLSv1_2});
    setUpProxy();
    setUpMethod();
}

void Transfer::setUpMethod()
{
    CURL *easy = m_easy.get();
    curl_slist *lines = nullptr;
    const auto add = [&](const char *line) { lines = curl_slist_append(lines, line); };
    if (!m_request.isAddress)
        add("Accept: application/json");

    if (m_request.hasBody) {
        add("Content-Type: application/json");
        add("Expect:"); // no round trip before the body
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, m_request.body.constData());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{m_request.body.size()});
    }
    if (m_request.method == "HEAD")
        curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
    else if (m_request.method != (m_request.hasBody ? "POST" : "GET"))
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, m_request.method.constData());

    for (QByteArray line : m_request.headers) {
        // libcurl's way to send a header without a value.
        if (line.endsWith(": "))
            line.replace(line.size() - 2, 2, ";");
        add(line.constData());
    }
    m_headers.reset(lines);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, lines);
}

void Transfer::setUpProxy()
{
    const QString host = QUrl::fromEncoded(m_request.url).host();
    if (m_rules.proxy == "none" || (m_rules.proxy == "system" && isLoopback(host)))
        curl_easy_setopt(m_easy.get(), CURLOPT_PROXY, "");
    else if (m_rules.proxy != "system")
        curl_easy_setopt(m_easy.get(), CURLOPT_PROXY, m_rules.proxy.constData());
}

std::size_t Transfer::onBody(char *data, std::size_t size, std::size_t count, void *transfer)
{
    auto *self = static_cast<Transfer *>(transfer);
    const auto bytes = static_cast<qint64>(size * count);
    if (self->m_body.size() + bytes > self->m_rules.answerLimit) {
        qCWarning(logNubelo) << "answer larger than" << self->m_rules.answerLimit << "bytes";
        return 0; // less than was offered: libcurl ends the transfer
    }
    self->m_body.append(data, static_cast<int>(bytes));
    return size * count;
}

std::optional<HttpAnswer> Transfer::completed(CURLcode code)
{
    if (code != CURLE_OK)
        return failed(code);

    HttpAnswer answer;
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    answer.httpStatus = static_cast<int>(status);
    answer.body = m_body;

    const char *target = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_REDIRECT_URL, &target);
    if (!target)
        return answer;
    answer.error = followTo(target, answer.httpStatus);
    if (answer.error != Error::NoError)
        return answer;
    setUp();
    return std::nullopt;
}

Error::ErrorCode Transfer::followTo(const QByteArray &target, int httpStatus)
{
    const QUrl from = QUrl::fromEncoded(m_request.url);
    const QUrl to = QUrl::fromEncoded(target);
    if (++m_redirects > maximumRedirects)
        return Error::TooManyRedirectsError;
    if (to.scheme() != QLatin1String("http") && to.scheme() != QLatin1String("https"))
        return Error::ProtocolUnknownError;
    if (from.scheme() == QLatin1String("https") && to.scheme() != QLatin1String("https"))
        return Error::InsecureRedirectError;

    // As everybody does: 303 asks for a GET, and 301 and 302 turn a POST into one.
    const bool becomesGet = httpStatus == 303 ? m_request.method != "HEAD"
                                              : httpStatus < 303 && m_request.method == "POST";
    const bool carriesBody = m_request.hasBody && !becomesGet;
    if (!sameOrigin(from, to) && (carriesBody || !m_request.headers.isEmpty()))
        return Error::InsecureRedirectError;

    m_request.url = target;
    if (becomesGet) {
        m_request.method = "GET";
        m_request.hasBody = false;
        m_request.body.clear();
    }
    return Error::NoError;
}

bool Transfer::usesProxy() const
{
    return m_rules.proxy != "none" && m_rules.proxy != "system";
}

HttpAnswer Transfer::failed(CURLcode code) const
{
    HttpAnswer answer;
    answer.error = codeOfCurlError(m_easy.get(), code, usesProxy());
    if (answer.error == Error::SslHandshakeFailedError)
        answer.sslErrors = sslErrorsOf(m_easy.get(), code);
    const char *reason = m_reason.front() != '\0' ? m_reason.data() : curl_easy_strerror(code);
    qCWarning(logNubelo) << "transfer failed:" << reason;
    return answer;
}

} // namespace Nubelo
