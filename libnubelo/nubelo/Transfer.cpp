// SPDX-License-Identifier: MIT
#include "nubelo/Transfer_p.h"

#include "nubelo/CurlError_p.h"
#include "nubelo/IdleConnections_p.h"
#include "nubelo/Log_p.h"
#include "nubelo/Proxy_p.h"

#include <QtCore/QUrl>

#include <algorithm>
#include <new>

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

template <typename Value>
void set(CURL *easy, CURLoption option, Value value)
{
    // Anything else would send the request without what was asked for, such as its proxy.
    if (curl_easy_setopt(easy, option, value) == CURLE_OUT_OF_MEMORY)
        throw std::bad_alloc();
}

} // namespace

Transfer::Transfer(HttpRequest request, const TransferRules &rules, IdleConnections &connections)
    : m_request(std::move(request))
    , m_rules(rules)
    , m_connections(connections)
    , m_deadline(rules.totalDeadline)
    , m_easy(curl_easy_init(), &curl_easy_cleanup)
    , m_headers(nullptr, &curl_slist_free_all)
    , m_reader(rules.answerLimit)
{
    if (!m_easy)
        throw std::bad_alloc();
    setUp();
}

void Transfer::setUp()
{
    CURL *easy = m_easy.get();
    m_reader = AnswerReader(m_rules.answerLimit);
    m_isAsked = false;
    m_reason.front() = '\0';
    curl_easy_reset(easy);
    set(easy, CURLOPT_URL, m_request.url.constData());
    set(easy, CURLOPT_NOSIGNAL, 1L);
    set(easy, CURLOPT_ERRORBUFFER, m_reason.data());
    set(easy, CURLOPT_USERAGENT, "libnubelo/" NUBELO_VERSION);
    // HTTP/2 would gain nothing for single small requests, and libcurl reports a connection that
    // closes under one of them as a framing error.
    set(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    setUpCallbacks();
    set(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_rules.connectDeadline.count()));
    // At least 1 ms: libcurl takes 0 for "no limit".
    const qint64 remaining = std::max<qint64>(m_deadline.remainingTime(), 1);
    set(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(remaining));
#if LIBCURL_VERSION_NUM >= 0x075700
    // Without it the end of a transfer would wait for a name look-up that is under way.
    set(easy, CURLOPT_QUICK_EXIT, 1L);
#endif
    if (!m_rules.caFile.isEmpty()) {
        set(easy, CURLOPT_CAINFO, m_rules.caFile.constData());
        // Else libcurl would accept the authorities of the system's directory as well.
        set(easy, CURLOPT_CAPATH, nullptr);
    }
    set(easy, CURLOPT_SSLVERSION,
        m_rules.minimumTls == "1.3" ? long{CURL_SSLVERSION_TLSv1_3}
                                    : long{CURL_SSLVERSION_TLSv1_2});
    // Both always, so that libcurl consults no variable of its own: a failure is then known to be
    // the proxy's or not.
    m_proxy = proxyFor(m_rules.proxy, QUrl::fromEncoded(m_request.url));
    set(easy, CURLOPT_PROXY, m_proxy.constData());
    set(easy, CURLOPT_NOPROXY, "");
    setUpMethod();
}

void Transfer::setUpCallbacks()
{
    CURL *easy = m_easy.get();
    set(easy, CURLOPT_PREREQFUNCTION, &Transfer::onReady);
    set(easy, CURLOPT_PREREQDATA, this);
    set(easy, CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
    set(easy, CURLOPT_HEADERDATA, this);
    set(easy, CURLOPT_WRITEFUNCTION, &Transfer::onBody);
    set(easy, CURLOPT_WRITEDATA, this);
    // A connection of its own for the second attempt, whatever else is kept.
    set(easy, CURLOPT_FRESH_CONNECT, m_isConnectionUnfit ? 1L : 0L);
    m_isConnectionUnfit = false;
}

void Transfer::setUpMethod()
{
    CURL *easy = m_easy.get();
    m_headers.reset();
    if (!m_request.isAddress)
        addHeader("Accept: application/json");

    if (m_request.hasBody) {
        addHeader("Content-Type: application/json");
        addHeader("Expect:"); // no round trip before the body
        set(easy, CURLOPT_POSTFIELDS, m_request.body.constData());
        set(easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{m_request.body.size()});
    }
    if (m_request.method == "HEAD")
        set(easy, CURLOPT_NOBODY, 1L);
    else if (m_request.method != (m_request.hasBody ? "POST" : "GET"))
        set(easy, CURLOPT_CUSTOMREQUEST, m_request.method.constData());

    for (QByteArray line : qAsConst(m_request.headers)) {
        // libcurl's way to send a header without a value.
        if (line.endsWith(": "))
            line.replace(line.size() - 2, 2, ";");
        addHeader(line.constData());
    }
    set(easy, CURLOPT_HTTPHEADER, m_headers.get());
}

void Transfer::addHeader(const char *line)
{
    curl_slist *lines = curl_slist_append(m_headers.get(), line);
    if (!lines)
        throw std::bad_alloc();
    if (!m_headers)
        m_headers.reset(lines);
}

int Transfer::onReady(void *transfer, char *peer, char *local, int peerPort, int localPort)
{
    Q_UNUSED(peer)
    Q_UNUSED(local)
    Q_UNUSED(peerPort)
    auto *self = static_cast<Transfer *>(transfer);
    // libcurl comes here again when a kept connection ended without an answer and it is about to
    // repeat the request. What was sent may have been read, and a POST must not be done twice.
    long sent = 0;
    curl_easy_getinfo(self->m_easy.get(), CURLINFO_REQUEST_SIZE, &sent);
    const bool isRepetition = self->m_isAsked && sent > self->m_sentBytes;
    self->m_isAsked = true;
    self->m_sentBytes = sent;
    if (isRepetition && (self->m_request.method == "POST" || self->m_request.method == "PATCH"))
        return CURL_PREREQFUNC_ABORT;

    long connects = 0;
    curl_easy_getinfo(self->m_easy.get(), CURLINFO_NUM_CONNECTS, &connects);
    self->m_isConnectionUnfit = connects == 0 && !self->m_connections.take(localPort);
    if (self->m_isConnectionUnfit)
        return CURL_PREREQFUNC_ABORT;
    self->m_reader.expectAnswer();
    return CURL_PREREQFUNC_OK;
}

// No exception may pass through libcurl: less taken than was offered ends the transfer.
std::size_t Transfer::onHeader(char *line, std::size_t size, std::size_t count, void *transfer)
{
    try {
        const auto text =
            QByteArray::fromRawData(line, static_cast<int>(size) * static_cast<int>(count));
        return static_cast<Transfer *>(transfer)->m_reader.takeLine(text) ? size * count : 0;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

std::size_t Transfer::onBody(char *data, std::size_t size, std::size_t count, void *transfer)
{
    try {
        const std::size_t bytes = size * count;
        AnswerReader &reader = static_cast<Transfer *>(transfer)->m_reader;
        return reader.takeBody(data, static_cast<qint64>(bytes)) ? bytes : 0;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

std::optional<HttpAnswer> Transfer::completed(CURLcode code)
{
    if (m_isConnectionUnfit) {
        setUp();
        return std::nullopt;
    }
    if (code != CURLE_OK)
        return failed(code);
    // For libcurl an answer that ends in its headers is a whole one.
    if (!m_reader.isHeaderComplete())
        return failed(CURLE_PARTIAL_FILE);

    HttpAnswer answer;
    long status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_RESPONSE_CODE, &status);
    answer.httpStatus = static_cast<int>(status);
    answer.body = m_reader.body();

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
    if (!to.isValid() || to.scheme().isEmpty())
        return Error::ProtocolFailure;
    if (to.scheme() != QLatin1String("http") && to.scheme() != QLatin1String("https"))
        return Error::ProtocolUnknownError;
    if (to.host().isEmpty())
        return Error::ProtocolFailure;
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

HttpAnswer Transfer::failed(CURLcode code) const
{
    HttpAnswer answer;
    answer.error = m_reader.fault();
    if (answer.error == Error::NoError) {
        const CurlSituation situation{!m_proxy.isEmpty(), m_redirects > 0, m_isAsked,
                                      m_reader.hasBegun(), m_reader.isHeaderComplete()};
        answer.error = codeOfCurlError(m_easy.get(), code, situation);
    }
    if (answer.error == Error::SslHandshakeFailedError)
        answer.sslErrors = sslErrorsOf(m_easy.get(), code);
    const char *reason = m_reason.front() != '\0' ? m_reason.data() : curl_easy_strerror(code);
    qCWarning(logNubelo) << "transfer failed:" << reason;
    return answer;
}

} // namespace Nubelo
