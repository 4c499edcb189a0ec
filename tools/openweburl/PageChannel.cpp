// SPDX-License-Identifier: MIT
#include "PageChannel.h"

#include "Report.h"

#include <QtCore/QBuffer>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrlQuery>
#include <QtCore/QUuid>
#include <QtWebEngineCore/QWebEngineUrlRequestJob>
#include <QtWebEngineCore/QWebEngineUrlScheme>

#include <utility>

namespace {

void reply(QWebEngineUrlRequestJob *job, const QByteArray &json)
{
    auto *body = new QBuffer(job);
    body->setData(json);
    job->reply(QByteArrayLiteral("application/json"), body);
}

} // namespace

QByteArray PageChannel::scheme()
{
    return QByteArrayLiteral("openweburl");
}

// Secure and free of the page's own policy, so that pages of https and strict pages can report;
// subject to the rules for foreign origins, so that a page may read the answer.
void PageChannel::registerScheme()
{
    QWebEngineUrlScheme scheme(PageChannel::scheme());
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Path);
    scheme.setFlags(QWebEngineUrlScheme::SecureScheme | QWebEngineUrlScheme::CorsEnabled |
                    QWebEngineUrlScheme::ContentSecurityPolicyIgnored);
    QWebEngineUrlScheme::registerScheme(scheme);
}

PageChannel::PageChannel(Start start, Printer print, QObject *parent)
    : QWebEngineUrlSchemeHandler(parent)
    , m_start(std::move(start))
    , m_print(std::move(print))
    , m_key(QUuid::createUuid().toString(QUuid::Id128))
{
}

void PageChannel::requestStarted(QWebEngineUrlRequestJob *job)
{
    const QUrl request = job->requestUrl();
    const bool asks = request.path() == QLatin1String("arguments");
    const bool isKnown = QUrlQuery(request).queryItemValue(QStringLiteral("key")) == m_key;
    if (!m_start.isOwnOrigin(job->initiator()) || job->requestMethod() != "GET" ||
        !(asks || isKnown)) {
        job->fail(QWebEngineUrlRequestJob::RequestDenied);
        return;
    }
    // A page that is done is closed even when nobody reads any more.
    if (request.path() == QLatin1String("close"))
        Q_EMIT closeRequested();
    if (asks)
        reply(job, arguments());
    else if (print(request))
        reply(job, QByteArrayLiteral("{}"));
    else
        job->fail(QWebEngineUrlRequestJob::RequestFailed);
}

bool PageChannel::print(const QUrl &request) const
{
    const QByteArray report = reportText(request);
    return !report.isEmpty() && m_print(report);
}

QByteArray PageChannel::arguments() const
{
    const QJsonObject arguments{{QStringLiteral("token"), m_start.token},
                                {QStringLiteral("base"), m_start.base},
                                {QStringLiteral("text"), m_start.text},
                                {QStringLiteral("key"), m_key}};
    return QJsonDocument(arguments).toJson(QJsonDocument::Compact);
}
