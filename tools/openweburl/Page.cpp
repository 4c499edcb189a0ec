#include "Page.h"

Page::Page(QWebEngineProfile *profile, std::optional<std::chrono::milliseconds> reloadTimeout,
           QObject *parent)
    : QWebEnginePage(profile, parent)
    , m_reloadTimeout(reloadTimeout)
{
    m_retry.setSingleShot(true);
    // A new request rather than a repetition, so that no form is sent twice.
    connect(&m_retry, &QTimer::timeout, this, [this] { load(requestedUrl()); });
    connect(this, &QWebEnginePage::loadStarted, &m_retry, &QTimer::stop);
    connect(this, &QWebEnginePage::loadFinished, this, [this](bool loaded) {
        if (!loaded)
            retryLater();
    });
    connect(this, &QWebEnginePage::renderProcessTerminated, this, &Page::retryLater);
}

void Page::begin(const QUrl &url)
{
    m_isFile = url.isLocalFile();
    load(url);
}

void Page::retryLater()
{
    if (m_reloadTimeout)
        m_retry.start(*m_reloadTimeout);
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
