#include "PageChannel.h"

#include "Report.h"

#include <QtCore/QBuffer>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
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
{
}

void PageChannel::requestStarted(QWebEngineUrlRequestJob *job)
{
    if (!m_start.isOwnOrigin(job->initiator()) || job->requestMethod() != "GET") {
        job->fail(QWebEngineUrlRequestJob::RequestDenied);
        return;
    }
    const QUrl request = job->requestUrl();
    if (request.path() == QLatin1String("arguments")) {
        reply(job, arguments());
        return;
    }
    const QByteArray report = reportText(request);
    if (report.isEmpty() || !m_print(report)) {
        job->fail(QWebEngineUrlRequestJob::RequestFailed);
        return;
    }
    reply(job, QByteArrayLiteral("{}"));
    if (request.path() == QLatin1String("close"))
        Q_EMIT closeRequested();
}

QByteArray PageChannel::arguments() const
{
    const QJsonObject arguments{{QStringLiteral("token"), m_start.token},
                                {QStringLiteral("base"), m_start.base},
                                {QStringLiteral("text"), m_start.text}};
    return QJsonDocument(arguments).toJson(QJsonDocument::Compact);
}
