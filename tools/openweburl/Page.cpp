// SPDX-License-Identifier: MIT
#include "Page.h"

#include <QtWebEngineWidgets/QWebEngineScript>

namespace {

// Stands in each document that was loaded, where the page's own scripts do not see it.
const QString mark = QStringLiteral("window.openweburlLoaded");
constexpr quint32 ownWorld = QWebEngineScript::ApplicationWorld;

} // namespace

Page::Page(QWebEngineProfile *profile, std::optional<std::chrono::milliseconds> reloadTimeout,
           QObject *parent)
    : QWebEnginePage(profile, parent)
{
    if (!reloadTimeout)
        return;
    m_retry = std::make_shared<Retry>();
    QTimer *timer = &m_retry->timer;
    timer->setSingleShot(true);
    timer->setInterval(*reloadTimeout);
    // A new request rather than a repetition, so that no form is sent twice.
    connect(timer, &QTimer::timeout, this, [this] { load(requestedUrl()); });
    connect(this, &QWebEnginePage::loadStarted, timer, [retry = m_retry.get()] {
        ++retry->loads;
        retry->timer.stop();
    });
    connect(this, &QWebEnginePage::loadFinished, this,
            [this](bool loaded) { loaded ? noteLoaded() : retryUnlessShown(); });
    connect(this, &QWebEnginePage::renderProcessTerminated, timer, [timer] { timer->start(); });
}

void Page::begin(const QUrl &url)
{
    m_isFile = url.isLocalFile();
    load(url);
}

void Page::noteLoaded()
{
    m_retry->wasShown = true;
    runJavaScript(mark + QStringLiteral(" = true"), ownWorld);
}

// A load that was only broken off, as by a link to a mail address or to a file that is downloaded,
// counts as failed too, but leaves the document, and what the user typed into it, as it was.
void Page::retryUnlessShown()
{
    const QString state = mark + QStringLiteral(" ? 'shown' : location.protocol");
    // Weak, since the answer may come while the page is destroyed.
    const auto decide = [retried = std::weak_ptr<Retry>(m_retry),
                         load = m_retry->loads](const QVariant &answer) {
        const std::shared_ptr<Retry> retry = retried.lock();
        if (!retry || retry->loads != load)
            return;
        const bool gaveNoAnswer = answer.toString() == QLatin1String("chrome-error:");
        const bool isNew = !retry->wasShown && answer.toString() != QLatin1String("shown");
        if (gaveNoAnswer || isNew)
            retry->timer.start();
    };
    runJavaScript(state, ownWorld, decide);
}

bool Page::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    Q_UNUSED(type)
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("openweburl"))
        return false; // not a page
    return !isMainFrame || scheme == QLatin1String("http") || scheme == QLatin1String("https") ||
           (m_isFile && url.isLocalFile());
}

void Page::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                    int line, const QString &source)
{
    Q_UNUSED(level)
    Q_UNUSED(message)
    Q_UNUSED(line)
    Q_UNUSED(source)
}
