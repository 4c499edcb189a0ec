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
    m_retry = std::make_shared<QTimer>();
    m_retry->setSingleShot(true);
    m_retry->setInterval(*reloadTimeout);
    // A new request rather than a repetition, so that no form is sent twice.
    connect(m_retry.get(), &QTimer::timeout, this, [this] { load(requestedUrl()); });
    connect(this, &QWebEnginePage::loadStarted, m_retry.get(), &QTimer::stop);
    connect(this, &QWebEnginePage::loadFinished, this,
            [this](bool loaded) { loaded ? noteLoaded() : retryUnlessShown(); });
    connect(this, &QWebEnginePage::renderProcessTerminated, m_retry.get(),
            [retry = m_retry.get()] { retry->start(); });
}

void Page::begin(const QUrl &url)
{
    m_isFile = url.isLocalFile();
    load(url);
}

void Page::noteLoaded()
{
    runJavaScript(mark + QStringLiteral(" = true"), ownWorld);
}

// A load that was only broken off, as by a link to a mail address or to a file that is downloaded,
// counts as failed too, but leaves the document, and what the user typed into it, as it was.
void Page::retryUnlessShown()
{
    const std::weak_ptr<QTimer> retry = m_retry; // the answer may come while the page is destroyed
    runJavaScript(mark, ownWorld, [retry](const QVariant &isMarked) {
        const std::shared_ptr<QTimer> timer = retry.lock();
        if (timer && !isMarked.toBool())
            timer->start();
    });
}

bool Page::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    Q_UNUSED(type)
    const QString scheme = url.scheme();
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
