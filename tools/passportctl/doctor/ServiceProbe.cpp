// SPDX-License-Identifier: MIT
#include "ServiceProbe.h"

#include <nubelo/Proxy_p.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <curl/curl.h>

#include <array>
#include <cstring>
#include <memory>

namespace {

using Handle = std::unique_ptr<CURL, void (*)(CURL *)>;

std::size_t keep(char *data, std::size_t size, std::size_t count, void *body)
{
    constexpr int limit = 64 * 1024; // of what an answer to "status" may have
    auto &bytes = *static_cast<QByteArray *>(body);
    if (bytes.size() + static_cast<int>(size * count) > limit)
        return 0;
    bytes.append(data, static_cast<int>(size * count));
    return size * count;
}

void setRules(CURL *easy, const QUrl &url, const Nubelo::TransferRules &rules)
{
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(rules.connectDeadline.count()));
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(rules.totalDeadline.count()));
    curl_easy_setopt(easy, CURLOPT_PROXY, Nubelo::proxyFor(rules.proxy, url).constData());
    curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
    if (!rules.caFile.isEmpty()) {
        curl_easy_setopt(easy, CURLOPT_CAINFO, rules.caFile.constData());
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    }
    curl_easy_setopt(easy, CURLOPT_SSLVERSION,
                     rules.minimumTls == "1.3" ? long{CURL_SSLVERSION_TLSv1_3}
                                               : long{CURL_SSLVERSION_TLSv1_2});
}

QSslCertificate certificateOf(CURL *easy)
{
    curl_certinfo *chain = nullptr;
    if (curl_easy_getinfo(easy, CURLINFO_CERTINFO, &chain) != CURLE_OK || !chain ||
        chain->num_of_certs == 0)
        return QSslCertificate();
    for (const curl_slist *line = chain->certinfo[0]; line; line = line->next) {
        constexpr char label[] = "Cert:";
        if (std::strncmp(line->data, label, sizeof label - 1) == 0)
            return QSslCertificate(QByteArray(line->data + sizeof label - 1));
    }
    return QSslCertificate();
}

QDateTime timeOf(CURL *easy, const QJsonObject &answer)
{
    curl_header *header = nullptr;
    if (curl_easy_header(easy, "Date", 0, CURLH_HEADER, -1, &header) == CURLHE_OK) {
        const qint64 seconds = curl_getdate(header->value, nullptr);
        return seconds < 0 ? QDateTime() : QDateTime::fromSecsSinceEpoch(seconds);
    }
    const QString time = answer[QLatin1String("result")][QLatin1String("time")].toString();
    return QDateTime::fromString(time, Qt::ISODateWithMs);
}

} // namespace

ServiceProbe ServiceProbe::ask(const QString &address, const Nubelo::TransferRules &rules)
{
    const Handle handle(curl_easy_init(), &curl_easy_cleanup);
    CURL *easy = handle.get();
    if (!easy)
        throw std::bad_alloc();
    const QUrl url(address + QStringLiteral("/status"));
    QByteArray body;
    std::array<char, CURL_ERROR_SIZE> reason{};
    setRules(easy, url, rules);
    curl_easy_setopt(easy, CURLOPT_URL, url.toEncoded().constData());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, reason.data());
    curl_easy_setopt(easy, CURLOPT_CERTINFO, 1L);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &keep);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);

    ServiceProbe probe;
    const CURLcode code = curl_easy_perform(easy);
    if (code != CURLE_OK)
        probe.problem = QString::fromLocal8Bit(reason.front() != '\0' ? reason.data()
                                                                      : curl_easy_strerror(code));
    probe.certificate = certificateOf(easy);
    if (code == CURLE_PEER_FAILED_VERIFICATION && probe.certificate.isNull()) {
        // Only to see it: nothing is sent but the question for a sign of life.
        curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 0L);
        if (curl_easy_perform(easy) == CURLE_OK)
            probe.certificate = certificateOf(easy);
        return probe;
    }
    const QJsonObject answer = QJsonDocument::fromJson(body).object();
    probe.isAccountService = answer.value(QLatin1String("status")) == QLatin1String("ok");
    if (code == CURLE_OK)
        probe.time = timeOf(easy, answer);
    return probe;
}
